#include "playlist/attribute_list.h"

#include <algorithm>
#include <string>

namespace quorlin {

namespace {

// The value of a CODECS attribute is complete when something that ends with a double quote follows its opening one.
bool is_closed(std::string_view value) {
    return value.size() >= 2 && value.back() == '"';
}

size_t end_of_piece(std::string_view list, size_t start) {
    return std::min(list.find(',', start), list.size());
}

std::string_view trimmed_piece(std::string_view list, size_t start, size_t end) {
    return trim_right(list.substr(start, end - start));
}

// Appends the pieces after `end` up to the one that closes the value, each without its trailing blanks; `end` becomes
// the end of the last one.
std::string join_quoted_pieces(std::string_view list, size_t start, size_t& end) {
    std::string value(trimmed_piece(list, start, end));
    while (end < list.size() && !is_closed(value)) {
        const size_t piece = end + 1;
        end = end_of_piece(list, piece);
        value += ',';
        value += trimmed_piece(list, piece, end);
    }
    return value;
}

std::string_view strip_quotes(std::string_view value, AttributeForm form) {
    if (form == AttributeForm::RAW) return value;
    const bool cut_last = form == AttributeForm::QUOTED || is_closed(value);
    if (!value.empty()) value.remove_prefix(1);
    if (cut_last && !value.empty()) value.remove_suffix(1);
    return value;
}

}  // namespace

std::string_view trim_left(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return text;
}

std::string_view trim_right(std::string_view text) {
    return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

void parse_attribute_list(std::string_view list, std::span<const AttributeSlot> slots) {
    for (size_t start = 0, end = 0; start < list.size(); start = end + 1) {
        end = end_of_piece(list, start);
        const std::string_view piece = list.substr(start, end - start);
        const size_t equals = piece.find('=');
        if (equals == std::string_view::npos) continue;
        std::string_view name = trim_right(piece.substr(0, equals));
        name.remove_prefix(std::min(name.find_first_not_of(" \t\r\n"), name.size()));
        const auto slot = std::find_if(slots.begin(), slots.end(), [&](const auto& s) { return s.name == name; });
        if (slot == slots.end()) continue;
        const size_t value = start + equals + 1;
        if (slot->form == AttributeForm::CODECS)
            *slot->value = strip_quotes(join_quoted_pieces(list, value, end), slot->form);
        else
            *slot->value = strip_quotes(trimmed_piece(list, value, end), slot->form);
    }
}

}  // namespace quorlin
