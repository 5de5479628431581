#include "playlist/ztp_program.h"

#include <limits>
#include <string_view>

namespace quorlin {

namespace {

// -1 when `character` is no hexadecimal digit.
int hex_digit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

}  // namespace

int parse_ztp_program(const std::string& text, uint32_t& value) {
    value = 0;
    std::string_view rest = text;
    while (rest.starts_with(' ') || rest.starts_with('\t')) rest.remove_prefix(1);
    if (rest.starts_with('+')) rest.remove_prefix(1);
    // Without a digit after it the "0" of "0x" is the number.
    if ((rest.starts_with("0x") || rest.starts_with("0X")) && rest.size() > 2 && hex_digit(rest[2]) >= 0)
        rest.remove_prefix(2);
    if (rest.empty() || hex_digit(rest.front()) < 0) return -1;
    uint64_t number = 0;
    for (; !rest.empty() && hex_digit(rest.front()) >= 0; rest.remove_prefix(1)) {
        number = number << 4 | static_cast<uint64_t>(hex_digit(rest.front()));
        if (number > std::numeric_limits<uint32_t>::max()) number = std::numeric_limits<uint32_t>::max();
    }
    value = static_cast<uint32_t>(number);
    return 0;
}

}  // namespace quorlin
