#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorlin {

// One JSON object (RFC 8259) on one line, written member by member into `line`.
struct JsonWriter {
    std::string line;
    bool first = true;  // no member yet where the next one goes
};

// Appends `text` as a JSON string. Bytes that are not UTF-8 become lone surrogates U+DC80 to U+DCFF, one each, from
// which a reader can restore them.
void append_json_text(std::string& line, std::string_view text);

// "{" and "}" of an object that is a member, an array element, or the line itself.
void begin_object(JsonWriter& json);
void end_object(JsonWriter& json);

// "[" and "]" of an array member; its elements are objects.
void begin_array(JsonWriter& json, std::string_view name);
void end_array(JsonWriter& json);

void put_text(JsonWriter& json, std::string_view name, std::string_view value);
void put_number(JsonWriter& json, std::string_view name, int64_t value);
void put_unsigned(JsonWriter& json, std::string_view name, uint64_t value);
void put_flag(JsonWriter& json, std::string_view name, bool value);
void put_null(JsonWriter& json, std::string_view name);

// A null pointer is written as null.
void put_optional_text(JsonWriter& json, std::string_view name, const char* value);

// A text from the input that should be a decimal number, such as 4.004: the number where it is one by the syntax of
// JSON, else null.
void put_decimal(JsonWriter& json, std::string_view name, const char* value);

}  // namespace quorlin
