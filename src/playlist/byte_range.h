#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "playlist/playlist.h"

// Where a byte range lies in its file. A length of 0 stands for the whole file.
struct ByteSpan {
    uint64_t offset = 0;
    uint64_t length = 0;
};

// Where the last byte range of each file ended, by path.
using ByteRangeEnds = std::map<std::string, uint64_t>;

// Reads the texts of a byte range of the file `path`: the leading integer of each (RFC 8216, 4.3.2.2). A range without
// an offset goes on behind the last one of the same file, at 0 when there is none; `ends` is kept up to date. Returns
// 0, or -1 when a text does not begin with an integer or is negative (the reason goes to standard error).
[[nodiscard]] int resolve_byte_range(const ByteRange& range, const std::string& path, ByteRangeEnds& ends,
                                     ByteSpan& span);
