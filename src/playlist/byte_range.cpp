#include "playlist/byte_range.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace quorlin {

namespace {

// Longer than any file: keeps every place that is seeked to inside what a file system takes.
constexpr uint64_t MAX_RANGE_LENGTH = uint64_t{1} << 42;

// Saturates; returns false when there is no digit or the number is negative.
bool parse_leading_integer(const std::string& text, uint64_t& value) {
    char* end = nullptr;
    const long long number = std::strtoll(text.c_str(), &end, 10);
    if (end == text.c_str() || number < 0) return false;
    value = static_cast<uint64_t>(number);
    return true;
}

// Where a range without an offset begins.
uint64_t implied_offset(const SegmentEntry& entry, const std::string& path, const ByteRangeEnds& ends) {
    if (entry.kind == SegmentKind::INIT) return 0;
    const auto media = ends.media.find(path);
    if (media != ends.media.end()) return media->second;
    const auto init = ends.init.find(path);
    return init != ends.init.end() ? init->second : 0;
}

}  // namespace

int resolve_byte_range(const SegmentEntry& entry, ByteRangeEnds& ends, ByteSpan& span) {
    span = {};
    if (!entry.byte_range) return 0;
    const std::string path = entry.path.value_or("");
    uint64_t length = 0;
    uint64_t offset = 0;
    if (!parse_leading_integer(entry.byte_range->length, length)) return -1;
    if (!entry.byte_range->offset)
        offset = implied_offset(entry, path, ends);
    else if (!parse_leading_integer(*entry.byte_range->offset, offset))
        return -1;
    if (length == 0) return 0;
    span = {offset, length};
    constexpr uint64_t LAST = std::numeric_limits<uint64_t>::max();
    (entry.kind == SegmentKind::INIT ? ends.init : ends.media)[path] = length > LAST - offset ? LAST : offset + length;
    return 0;
}

void start_on_range(FileReader& reader, const ByteSpan& range) {
    reader.start_offset = std::min(range.offset, reader_file_size(reader));
    reader.limited = range.length != 0;
    reader_restart(reader, static_cast<int64_t>(std::min(range.length, MAX_RANGE_LENGTH)));
}

}  // namespace quorlin
