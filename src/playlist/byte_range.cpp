#include "playlist/byte_range.h"

#include <cstdlib>
#include <string>

#include "bits/report.h"

namespace {

// Saturates; returns false when there is no digit or the number is negative.
bool parse_leading_integer(const std::string& text, uint64_t& value) {
    char* end = nullptr;
    const long long number = std::strtoll(text.c_str(), &end, 10);
    if (end == text.c_str() || number < 0) return false;
    value = static_cast<uint64_t>(number);
    return true;
}

}  // namespace

int resolve_byte_range(const ByteRange& range, const std::string& path, ByteRangeEnds& ends, ByteSpan& span) {
    uint64_t& previous_end = ends[path];
    span = {previous_end, 0};
    if (!parse_leading_integer(range.length, span.length) ||
        (range.offset && !parse_leading_integer(*range.offset, span.offset))) {
        report_reason(path, "the byte range \"%s%s%s\" is not a length and an offset; the segment is not read",
                      range.length.c_str(), range.offset ? "@" : "", range.offset.value_or("").c_str());
        return -1;
    }
    if (span.length == 0)
        span.offset = 0;
    else
        previous_end = span.offset + span.length;
    return 0;
}
