#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorlin {

// A four-character code as the number that its bytes make, first character most significant.
constexpr uint32_t fourcc(const char (&text)[5]) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(text[i]);
    return value;
}

// A four-character code as text, "?" for what cannot be printed.
std::array<char, 5> printable_fourcc(uint32_t code);

}  // namespace quorlin
