#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "bits/file_reader.h"
#include "playlist/playlist.h"

namespace quorlin {

// Where a byte range lies in its file. A length of 0 stands for the whole file.
struct ByteSpan {
    uint64_t offset = 0;
    uint64_t length = 0;
};

// Where the last byte range of each file ended, by path: one memory for a whole media playlist.
struct ByteRangeEnds {
    std::map<std::string, uint64_t> media;
    std::map<std::string, uint64_t> init;  // of EXT-X-MAP
};

// Reads the texts of the entry's byte range: the leading integer of each (RFC 8216, 4.3.2.2). A range without an offset
// goes on after the last range of a media segment of the same file; when there is none, after that of an EXT-X-MAP;
// else, and in an EXT-X-MAP, it begins at 0. `ends` is kept up to date, whatever comes of the segment. An entry without
// a range is its whole file. Returns 0, or -1 when a text does not begin with an integer or is negative.
[[nodiscard]] int resolve_byte_range(const SegmentEntry& entry, ByteRangeEnds& ends, ByteSpan& span);

// Starts the reader, confined to `range` of its file; the buffer is kept when it holds the start of the range.
void start_on_range(FileReader& reader, const ByteSpan& range);

}  // namespace quorlin
