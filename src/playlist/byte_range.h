#pragma once

#include <cstdint>

#include "playlist/playlist.h"

// Where a byte range lies in its file. A length of 0 stands for the whole file.
struct ByteSpan {
    uint64_t offset = 0;
    uint64_t length = 0;
};

// Reads the texts of a byte range: the leading integer of each (RFC 8216, 4.3.2.2). A range without an offset begins at
// `previous_end`. Returns 0, or -1 when a text does not begin with an integer or is negative.
[[nodiscard]] int resolve_byte_range(const ByteRange& range, uint64_t previous_end, ByteSpan& span);
