// A transport stream segment through a buffer too small to hide seams, with and without a playlist entry to compare
// with.
#include <cstdio>

#include "ts/ts_segment.h"

namespace quorlin {

namespace {

const bool QUIET = std::freopen("/dev/null", "w", stdout) != nullptr;

void demultiplex(const uint8_t* data, size_t size, const PlaylistAttributes* stream_info) {
    FileReader reader;
    reader.file = File(fmemopen(const_cast<uint8_t*>(data), size, "rb"));
    reader.chunk_size = 100;
    reader_start(reader);
    TsSegmentTiming timing;
    (void)ts_process_segment(reader, {.attrs = stream_info}, &timing);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (!QUIET || size == 0) return 0;
    PlaylistAttributes attrs;
    attrs.codecs = "ec-3,ac-4.02.01.00,avc1.64001f,lmhe.08.06";
    attrs.programs.emplace();
    demultiplex(data, size, nullptr);
    demultiplex(data, size, &attrs);
    return 0;
}

}  // namespace quorlin
