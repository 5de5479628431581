#pragma once

#include <cstdint>

#include "bits/bit_reader.h"

namespace quorlin {

// What the AC-4 syntax reads beside plain fields.

inline uint32_t read_variable_bits(BitReader& reader, uint32_t n) {
    return static_cast<uint32_t>(variable_bits(n, reader.position, reader.bytes));
}

// A field of `width` bits that is extended by an escape code in groups of `n` bits when all of its bits are 1.
inline uint32_t read_escaped(BitReader& reader, uint32_t width, uint32_t n) {
    const uint32_t value = read_u32(reader, width);
    return value == (1u << width) - 1 ? value + read_variable_bits(reader, n) : value;
}

// Skips to the next byte boundary counted from bit `start`.
inline void align(BitReader& reader, uint32_t start) {
    skip_bits(reader, (8 - (reader.position - start) % 8) % 8);
}

}  // namespace quorlin
