#include "bits/bit_reader.h"

#include <cstddef>
#include <limits>

namespace quorlin {

namespace {

void advance(uint32_t& position, uint64_t n) {
    const uint32_t room = std::numeric_limits<uint32_t>::max() - position;
    position += n < room ? static_cast<uint32_t>(n) : room;
}

}  // namespace

uint32_t read_bits(uint32_t& position, std::span<const uint8_t> bytes, uint32_t n) {
    if (n > 32) {
        advance(position, n - 32);
        n = 32;
    }
    if (n == 0) return 0;
    // At most five bytes hold 32 bits that start anywhere in a byte.
    const size_t first = position / 8;
    uint64_t window = 0;
    for (size_t i = 0; i < 5; ++i) {
        window <<= 8;
        if (first + i < bytes.size()) window |= bytes[first + i];
    }
    const uint32_t shift = 40 - position % 8 - n;
    advance(position, n);
    return static_cast<uint32_t>(window >> shift & ((uint64_t{1} << n) - 1));
}

int32_t variable_bits(uint32_t n, uint32_t& position, std::span<const uint8_t> bytes) {
    // Unsigned arithmetic: a hostile run of escapes may wrap, never overflow.
    uint32_t value = 0;
    uint32_t result = 0;
    bool more = true;
    while (more) {
        result = value + read_bits(position, bytes, n);
        more = read_bits(position, bytes, 1) != 0 && !bits_overrun(position, bytes);
        value = (result + 1) << n;
    }
    return static_cast<int32_t>(result);
}

void skip_bits(BitReader& reader, uint64_t n) {
    advance(reader.position, n);
}

bool bits_overrun(uint32_t position, std::span<const uint8_t> bytes) {
    return position > uint64_t{bytes.size()} * 8;
}

}  // namespace quorlin
