#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorlin {

// Input of the analyzer: a byte buffer taken as 16-bit words, in the order that the sync word of each frame tells.

enum ZtpByteOrder : int16_t {
    BYTE_ORDER_UNKNOWN = -1,
    BYTE_ORDER_LOW_FIRST = 0,   // words stand low byte first
    BYTE_ORDER_HIGH_FIRST = 1,  // the normal order of a stream
};

struct WordInput {
    std::span<const uint8_t> bytes;
    size_t position = 0;  // of the next unread byte
    ZtpByteOrder byte_order = BYTE_ORDER_UNKNOWN;
    bool end_of_input = false;  // a read found no bytes left
};

enum InputStatus : int {
    INPUT_SHORT = 3,
    INPUT_NO_SYNC = 5,
};

// Looks at the next word, without consuming it, and sets the byte order from it; warns when it differs from the frame
// before. Returns 0 (with end_of_input set when no bytes are left), or INPUT_SHORT or INPUT_NO_SYNC after a fatal
// block.
[[nodiscard]] int detect_byte_order(WordInput& input);

// Reads words.size() words in stream order. Returns 0 (with end_of_input set and nothing read when no bytes are left),
// or INPUT_SHORT after a fatal block when some are left, but too few.
[[nodiscard]] int read_words(WordInput& input, std::span<uint16_t> words);

inline size_t bytes_left(const WordInput& input) {
    return input.bytes.size() - input.position;
}

}  // namespace quorlin
