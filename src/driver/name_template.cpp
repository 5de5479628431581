#include "driver/name_template.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace quorlin {

namespace {

constexpr uint32_t MAX_FIELD_WIDTH = 4096;

// ISO/IEC 9899, 7.21.6.1: one conversion specification, as far as an int needs it.
struct Conversion {
    bool left = false;    // '-'
    bool plus = false;    // '+'
    bool blank = false;   // ' '
    bool zeros = false;   // '0'
    bool prefix = false;  // '#'
    uint32_t width = 0;
    std::optional<uint32_t> precision;
    char specifier = 'd';
};

// Saturates above the limit, so that any number of digits is safe.
uint32_t parse_number(const char*& cursor) {
    uint32_t value = 0;
    for (; *cursor >= '0' && *cursor <= '9'; ++cursor)
        value = std::min(value * 10 + static_cast<uint32_t>(*cursor - '0'), MAX_FIELD_WIDTH + 1);
    return value;
}

bool parse_flag(char c, Conversion& conversion) {
    switch (c) {
        case '-':
            conversion.left = true;
            return true;
        case '+':
            conversion.plus = true;
            return true;
        case ' ':
            conversion.blank = true;
            return true;
        case '0':
            conversion.zeros = true;
            return true;
        case '#':
            conversion.prefix = true;
            return true;
        default:
            return false;
    }
}

// Parses what follows a '%'. Returns false, with the cursor untouched, when it is no integer conversion.
bool parse_conversion(const char*& cursor, Conversion& conversion) {
    const char* walk = cursor;
    while (parse_flag(*walk, conversion)) ++walk;
    conversion.width = parse_number(walk);
    if (*walk == '.') conversion.precision = parse_number(++walk);
    if (*walk == '\0' || std::strchr("diuoxX", *walk) == nullptr) return false;
    conversion.specifier = *walk;
    cursor = walk + 1;
    return true;
}

std::string digits_of(uint32_t value, char specifier) {
    const uint32_t base = specifier == 'o' ? 8 : specifier == 'x' || specifier == 'X' ? 16 : 10;
    const char* alphabet = specifier == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string digits;
    for (; value != 0; value /= base) digits.insert(digits.begin(), alphabet[value % base]);
    return digits;
}

std::string format_index(const Conversion& conversion, int32_t index) {
    const char specifier = conversion.specifier;
    std::string digits = digits_of(static_cast<uint32_t>(index), specifier);
    const uint32_t precision = conversion.precision.value_or(1);
    if (digits.size() < precision) digits.insert(0, precision - digits.size(), '0');
    if (conversion.prefix && specifier == 'o' && (digits.empty() || digits[0] != '0')) digits.insert(0, 1, '0');

    std::string sign;
    if (specifier == 'd' || specifier == 'i') sign = conversion.plus ? "+" : conversion.blank ? " " : "";
    if (conversion.prefix && index != 0 && (specifier == 'x' || specifier == 'X'))
        sign = specifier == 'x' ? "0x" : "0X";

    const size_t used = sign.size() + digits.size();
    const size_t padding = conversion.width > used ? conversion.width - used : 0;
    if (conversion.left) return sign + digits + std::string(padding, ' ');
    if (conversion.zeros && !conversion.precision) return sign + std::string(padding, '0') + digits;
    return std::string(padding, ' ') + sign + digits;
}

}  // namespace

TemplateKind expand_template(const char* text, int32_t index, std::string& name) {
    name.clear();
    bool numbered = false;
    for (const char* cursor = text; *cursor != '\0';) {
        const char c = *cursor++;
        Conversion conversion;
        if (c == '%' && *cursor == '%') {
            ++cursor;
            name += '%';
        } else if (c == '%' && parse_conversion(cursor, conversion)) {
            if (numbered || conversion.width > MAX_FIELD_WIDTH || conversion.precision.value_or(0) > MAX_FIELD_WIDTH)
                return TemplateKind::NO_MATCH;
            numbered = true;
            name += format_index(conversion, index);
        } else {
            name += c;
        }
    }
    return numbered ? TemplateKind::NUMBERED : TemplateKind::FIXED;
}

}  // namespace quorlin
