#pragma once

#include <cstdint>
#include <span>

#include "bits/bit_reader.h"

// Bytes with a read position, for the AC-4 syntax elements. Bits behind the end are zero.
struct Ac4Reader {
    std::span<const uint8_t> bytes;
    uint32_t position = 0;
};

inline uint32_t read_u32(Ac4Reader& reader, uint32_t n) {
    return read_bits(reader.position, reader.bytes, n);
}

// `n` up to 8.
inline uint8_t read_u8(Ac4Reader& reader, uint32_t n) {
    return static_cast<uint8_t>(read_u32(reader, n));
}

inline uint16_t read_u16(Ac4Reader& reader) {
    return static_cast<uint16_t>(read_u32(reader, 16));
}

inline bool read_flag(Ac4Reader& reader) {
    return read_u32(reader, 1) != 0;
}

inline uint32_t read_variable_bits(Ac4Reader& reader, uint32_t n) {
    return static_cast<uint32_t>(variable_bits(n, reader.position, reader.bytes));
}

// A field of `width` bits that is extended by an escape code in groups of `n` bits when all of its bits are 1.
inline uint32_t read_escaped(Ac4Reader& reader, uint32_t width, uint32_t n) {
    const uint32_t value = read_u32(reader, width);
    return value == (1u << width) - 1 ? value + read_variable_bits(reader, n) : value;
}

// Saturates, so that a long skip cannot lead back into the data.
inline void skip_bits(Ac4Reader& reader, uint64_t n) {
    const uint32_t room = UINT32_MAX - reader.position;
    reader.position += n < room ? static_cast<uint32_t>(n) : room;
}

// Skips to the next byte boundary counted from bit `start`.
inline void align(Ac4Reader& reader, uint32_t start) {
    skip_bits(reader, (8 - (reader.position - start) % 8) % 8);
}

inline bool overrun(const Ac4Reader& reader) {
    return bits_overrun(reader.position, reader.bytes);
}
