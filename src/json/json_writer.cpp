#include "json/json_writer.h"

#include <charconv>
#include <cstddef>

namespace quorlin {

namespace {

constexpr char HEX_DIGITS[] = "0123456789abcdef";

void append_escape(std::string& line, unsigned code) {
    line += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) line += HEX_DIGITS[code >> shift & 0xF];
}

bool is_continuation(std::string_view text, size_t at) {
    return at < text.size() && (static_cast<uint8_t>(text[at]) & 0xC0) == 0x80;
}

// Length of the UTF-8 sequence that `text` begins with (RFC 3629, 4), 0 when it begins with none.
size_t utf8_length(std::string_view text) {
    const auto byte = [&](size_t i) { return i < text.size() ? static_cast<uint8_t>(text[i]) : uint8_t{0}; };
    const uint8_t lead = byte(0);
    if (lead < 0x80) return 1;
    size_t length = 0;
    // The second byte keeps overlong forms, surrogates and what lies beyond U+10FFFF out.
    if (lead >= 0xC2 && lead <= 0xDF) length = 2;
    if (lead >= 0xE0 && lead <= 0xEF && byte(1) >= (lead == 0xE0 ? 0xA0 : 0x80) &&
        byte(1) <= (lead == 0xED ? 0x9F : 0xBF))
        length = 3;
    if (lead >= 0xF0 && lead <= 0xF4 && byte(1) >= (lead == 0xF0 ? 0x90 : 0x80) &&
        byte(1) <= (lead == 0xF4 ? 0x8F : 0xBF))
        length = 4;
    for (size_t i = 1; i < length; ++i)
        if (!is_continuation(text, i)) return 0;
    return length;
}

void append_ascii(std::string& line, char c) {
    switch (c) {
        case '"':
            line += "\\\"";
            break;
        case '\\':
            line += "\\\\";
            break;
        case '\n':
            line += "\\n";
            break;
        case '\t':
            line += "\\t";
            break;
        default:
            if (static_cast<uint8_t>(c) < 0x20 || c == 0x7F)
                append_escape(line, static_cast<uint8_t>(c));
            else
                line += c;
    }
}

void begin_element(JsonWriter& json) {
    if (!json.first) json.line += ',';
    json.first = false;
}

void put_name(JsonWriter& json, std::string_view name) {
    begin_element(json);
    json.line += '"';
    json.line += name;
    json.line += "\":";
}

template <typename Integer>
void append_integer(std::string& line, Integer value) {
    char digits[24];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    line.append(digits, end.ptr);
}

size_t count_digits(std::string_view text) {
    size_t count = 0;
    while (count < text.size() && text[count] >= '0' && text[count] <= '9') ++count;
    return count;
}

// RFC 8216, 4.2: a decimal-integer is at most 2^64 - 1. What is far longer is no number that a reader could hold.
constexpr size_t LONGEST_DECIMAL = 20;

// RFC 8259, 6, without sign and exponent: what RFC 8216 calls a decimal-integer or decimal-floating-point.
bool is_decimal(std::string_view text) {
    if (text.size() > LONGEST_DECIMAL) return false;
    const size_t whole = count_digits(text);
    if (whole == 0 || (whole > 1 && text[0] == '0')) return false;
    text.remove_prefix(whole);
    if (text.empty()) return true;
    if (text[0] != '.') return false;
    text.remove_prefix(1);
    return !text.empty() && count_digits(text) == text.size();
}

}  // namespace

void append_json_text(std::string& line, std::string_view text) {
    line += '"';
    while (!text.empty()) {
        const size_t length = utf8_length(text);
        if (length == 1)
            append_ascii(line, text[0]);
        else if (length == 0)
            append_escape(line, 0xDC00u + static_cast<uint8_t>(text[0]));
        else
            line += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    line += '"';
}

void begin_object(JsonWriter& json) {
    begin_element(json);
    json.line += '{';
    json.first = true;
}

void end_object(JsonWriter& json) {
    json.line += '}';
    json.first = false;
}

void begin_array(JsonWriter& json, std::string_view name) {
    put_name(json, name);
    json.line += '[';
    json.first = true;
}

void end_array(JsonWriter& json) {
    json.line += ']';
    json.first = false;
}

void put_text(JsonWriter& json, std::string_view name, std::string_view value) {
    put_name(json, name);
    append_json_text(json.line, value);
}

void put_number(JsonWriter& json, std::string_view name, int64_t value) {
    put_name(json, name);
    append_integer(json.line, value);
}

void put_unsigned(JsonWriter& json, std::string_view name, uint64_t value) {
    put_name(json, name);
    append_integer(json.line, value);
}

void put_flag(JsonWriter& json, std::string_view name, bool value) {
    put_name(json, name);
    json.line += value ? "true" : "false";
}

void put_null(JsonWriter& json, std::string_view name) {
    put_name(json, name);
    json.line += "null";
}

void put_optional_text(JsonWriter& json, std::string_view name, const char* value) {
    if (value == nullptr)
        put_null(json, name);
    else
        put_text(json, name, value);
}

void put_decimal(JsonWriter& json, std::string_view name, const char* value) {
    if (value == nullptr || !is_decimal(value)) {
        put_null(json, name);
        return;
    }
    put_name(json, name);
    json.line += value;
}

}  // namespace quorlin
