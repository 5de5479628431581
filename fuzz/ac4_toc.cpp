// An AC-4 raw frame: its table of contents at a byte boundary and inside a byte, into one record; and its head.
#include <cstdint>
#include <cstdlib>

#include "ac4/ac4_toc.h"

namespace quorlin {

namespace {

// Touches everything that a successful parse promises; aborts when it lies.
void read_all(const ac4_toc& toc) {
    uint64_t sum = 0;
    for (const ac4_presentation_v1_info& presentation : toc.presentations_v1) {
        for (const uint16_t index : ac4_group_indices(toc, presentation))
            sum += toc.substream_groups.at(index).b_hsf_ext;
        for (const ac4_emdf_info& info : ac4_emdf_substreams(toc, presentation)) sum += info.key_id;
        const int mode = channel_mode_number(presentation.presentation_ch_mode);
        if (mode < -1 || mode > 32) std::abort();
    }
    for (const ac4_presentation_info& presentation : toc.presentations_v0)
        for (const ac4_emdf_info& info : ac4_emdf_substreams(toc, presentation)) sum += info.key_id;
    for (const ac4_substream_group_info& group : toc.substream_groups)
        for (const ac4_group_substream& substream : ac4_group_substreams(toc, group))
            sum += static_cast<uint64_t>(channel_mode_number(substream.channel_mode));
    if (sum == UINT64_MAX || ac4_toc_codec_string(toc).size() != 13) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ac4_toc toc;
    bool whole = false;
    for (const uint32_t start : {0u, 0u, 3u}) {
        uint32_t position = start;
        if (ac4_toc_parse({data, size}, position, toc) != 0) continue;
        if (position > 8 * size || (position - start) % 8 != 0) std::abort();
        if (toc.presentations_v0.size() + toc.presentations_v1.size() != toc.n_presentations) std::abort();
        read_all(toc);
        whole = whole || start == 0;
    }
    const bool head = ac4_toc_parse_head({data, size}, toc) == 0;
    if ((whole && !head) || (head && ac4_toc_codec_string(toc).size() != 13)) std::abort();
    return 0;
}

}  // namespace quorlin
