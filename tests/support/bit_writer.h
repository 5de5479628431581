#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace quorlin {

// Writes bit fields most significant bit first: the mirror of read_bits.
struct BitWriter {
    std::vector<uint8_t> bytes;
    size_t bit_count = 0;

    // Appends the low `n` bits of `value` (n up to 64).
    void put(uint32_t n, uint64_t value);
    void put_bytes(std::span<const uint8_t> data);
    void put_text(std::string_view text);
    void align();
};

}  // namespace quorlin
