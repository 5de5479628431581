#pragma once

#include <span>
#include <string_view>

#include "playlist/playlist.h"

namespace quorlin {

// How an attribute's value is stored.
enum class AttributeForm {
    RAW,     // as it stands, quotes included
    QUOTED,  // without its first and last character, whatever they are
    CODECS,  // a quoted list: it goes on after its commas up to the piece that ends with a double quote
};

struct AttributeSlot {
    std::string_view name;
    AttributeForm form;
    Text* value;
};

// Cuts leading blanks and tabs / trailing blanks, tabs, carriage returns and line feeds.
std::string_view trim_left(std::string_view text);
std::string_view trim_right(std::string_view text);

// RFC 8216, 4.2: stores the values of the attributes that have a slot. The list is split at every comma, deliberately
// also inside quotes (CODECS excepted); pieces without "=" and unknown names are ignored, a repeated name replaces the
// earlier value.
void parse_attribute_list(std::string_view list, std::span<const AttributeSlot> slots);

}  // namespace quorlin
