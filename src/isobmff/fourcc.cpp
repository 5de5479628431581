#include "isobmff/fourcc.h"

#include <cctype>

namespace quorlin {

std::array<char, 5> printable_fourcc(uint32_t code) {
    std::array<char, 5> text{};
    for (uint32_t i = 0; i < 4; ++i) {
        const auto c = static_cast<unsigned char>(code >> (24 - 8 * i) & 0xFF);
        text[i] = std::isprint(c) != 0 ? static_cast<char>(c) : '?';
    }
    return text;
}

}  // namespace quorlin
