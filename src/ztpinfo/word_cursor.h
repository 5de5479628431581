#pragma once

#include <cstdint>
#include <span>

namespace quorlin {

// Reads a frame's words most significant bit first. Bits after the last word read as zero.
struct WordCursor {
    std::span<const uint16_t> words;
    uint32_t position = 0;  // bits from the start of the frame

    // The next `n` bits, 1 to 16.
    uint16_t read(uint32_t n) {
        const uint32_t index = position >> 4;
        const uint32_t pair = word(index) << 16 | word(index + 1);
        const uint32_t value = pair << (position & 15) >> (32 - n);
        position += n;
        return static_cast<uint16_t>(value);
    }

    void skip(uint32_t n) { position += n; }

 private:
    uint32_t word(uint32_t index) const { return index < words.size() ? words[index] : 0; }
};

}  // namespace quorlin
