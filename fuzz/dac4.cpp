// The payload of a dac4 box (its length stands in the first two bytes) against the table of contents after it.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "ac4/ac4_dsi_checks.h"
#include "ac4/ac4_dsi_compare.h"
#include "ac4/ac4_toc.h"

namespace quorlin {

namespace {

const bool QUIET = std::freopen("/dev/null", "w", stdout) != nullptr;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2 || !QUIET) return 0;
    const size_t payload_size = std::min<size_t>(data[0] * 256u + data[1], size - 2);
    // Blocks of their own, so that a read past the payload is seen.
    const std::vector<uint8_t> payload(data + 2, data + 2 + payload_size);
    const std::vector<uint8_t> frame(data + 2 + payload_size, data + size);
    Ac4Dsi dsi;
    if (parse_dac4(payload, {48000, 16, 48000, 2}, dsi) != 0) std::abort();
    if (dsi.stop == Ac4DsiStop::COMPLETE && dsi.position_bits != 8 * payload_size) std::abort();
    if (dsi.presentations.size() > dsi.n_presentations || ac4_dsi_codec_string(dsi).empty()) std::abort();
    ac4_toc toc;
    uint32_t position = 0;
    if (ac4_toc_parse(frame, position, toc) != 0) return 0;
    const int status = compare_dsi_with_toc(dsi, toc);
    if (status != 0 && status != 1) std::abort();
    return 0;
}

}  // namespace quorlin
