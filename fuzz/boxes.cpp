// A file as init section, as media segment and as a byte range of itself, in one context, through buffers of two sizes,
// which must not make a difference.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "isobmff/segment_validation.h"
#include "playlist/byte_range.h"

namespace quorlin {

namespace {

const bool QUIET = std::freopen("/dev/null", "w", stdout) != nullptr;

int validate(const uint8_t* data, size_t size, uint32_t chunk_size) {
    PlaylistAttributes attrs;
    attrs.codecs = "ec-3";
    attrs.channels = "16/JOC";
    MediaContextPtr context = create_init_context({.attrs = &attrs}, "i");
    const std::optional<ByteRange> ranges[] = {std::nullopt, ByteRange{std::to_string(size - size / 4), "0"},
                                               ByteRange{std::to_string(size), std::nullopt}};
    ByteRangeEnds ends;
    int statuses = 0;
    for (const std::optional<ByteRange>& range : ranges) {
        FileReader reader;
        // The stream only reads.
        reader.file.reset(fmemopen(const_cast<uint8_t*>(data), size, "rb"));
        reader.chunk_size = chunk_size;
        reader_start(reader);
        SegmentEntry entry;
        entry.byte_range = range;
        ByteSpan span;
        (void)resolve_byte_range(entry, ends, span);
        start_on_range(reader, span);
        statuses = statuses * 16 + validate_mp4_segment(reader, entry, context.get());
    }
    return statuses * 16 + release_init_context(context);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || !QUIET) return 0;
    if (validate(data, size, 61) != validate(data, size, 4096)) std::abort();
    return 0;
}

}  // namespace quorlin
