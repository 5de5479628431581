// Syncframes in several buffers of one analyzer handle, under any settings. The first three bytes give rule set and
// options; then each buffer comes after its length of two bytes. The same frames with the bytes of every word
// exchanged must give the same results and findings, and all forms of the CRC the same value.
#include "ztpinfo/ztpinfo.h"

#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "ztpinfo/crc16.h"

namespace quorlin {

namespace {

using Buffers = std::vector<std::vector<uint8_t>>;

const bool QUIET = std::freopen("/dev/null", "w", stdout) != nullptr;

// Each buffer is a block of its own of exactly its size.
Buffers split(const uint8_t* data, size_t size) {
    Buffers buffers;
    while (size >= 2) {
        size_t length = static_cast<size_t>(data[0] << 8 | data[1]);
        data += 2;
        size -= 2;
        if (length > size) length = size;
        buffers.emplace_back(data, data + length);
        data += length;
        size -= length;
    }
    return buffers;
}

void swap_words(Buffers& buffers) {
    for (std::vector<uint8_t>& buffer : buffers)
        for (size_t i = 0; i + 1 < buffer.size(); i += 2) std::swap(buffer[i], buffer[i + 1]);
}

std::vector<uint32_t> analyse(const Buffers& buffers, const ZtpSettings& settings) {
    const ZtpInfoPtr handle(ztpinfo_open());
    ztpinfo_configure(handle.get(), settings);
    std::vector<uint32_t> results;
    bool failed = false;
    for (const std::vector<uint8_t>& buffer : buffers) {
        ZtpStreamSummary summary;
        const int result = ztpinfo_process(buffer, summary, handle.get());
        if (result < 0 || result > 2 || (result == 0 && failed)) std::abort();
        if (result == 2 && summary.num_programs != 0) std::abort();
        failed = failed || result == 1;
        results.push_back(static_cast<uint32_t>(result));
        results.push_back(summary.data_rate_kbps);
        results.push_back(summary.frameset_count);
        results.push_back(summary.num_programs);
    }
    return results;
}

void check_crc(const std::vector<uint8_t>& buffer) {
    std::vector<uint16_t> words;
    for (size_t i = 0; i + 1 < buffer.size(); i += 2)
        words.push_back(static_cast<uint16_t>(buffer[i] << 8 | buffer[i + 1]));
    const uint16_t expected = crc16_table(0x1234, words);
    if (crc16_slicing(0x1234, words) != expected || crc16_clmul(0x1234, words) != expected) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3 || !QUIET) return 0;
    ZtpSettings settings;
    settings.rule_set = ZtpRuleSet{static_cast<uint16_t>(data[0] & 7)};
    settings.stop_on_failure = (data[0] & 8) != 0;
    settings.options = static_cast<uint16_t>(data[1] << 8 | data[2]);
    Buffers buffers = split(data + 3, size - 3);
    const std::vector<uint32_t> results = analyse(buffers, settings);
    for (const std::vector<uint8_t>& buffer : buffers) check_crc(buffer);
    swap_words(buffers);
    if (analyse(buffers, settings) != results) std::abort();
    return 0;
}

}  // namespace quorlin
