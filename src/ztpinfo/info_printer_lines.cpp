#include "ztpinfo/info_printer_lines.h"

#include <cstdio>

namespace quorlin {

namespace {

void print_field_start(const char* name, uint16_t value) {
    std::printf("            %s: 0x%04hX", name, value);
}

}  // namespace

void print_locations(uint32_t locations, ValueNames names) {
    const char* separator = "";
    for (uint32_t bit = 0; bit < names.size(); ++bit) {
        if ((locations & (0x8000U >> bit)) == 0) continue;
        std::printf("%s%s", separator, names[bit]);
        separator = ", ";
    }
}

void print_field(const char* name, uint16_t value, const char* end) {
    print_field_start(name, value);
    std::fputs(end, stdout);
}

void print_explained(const char* name, uint16_t value, const char* words, const char* text, const char* end) {
    print_field_start(name, value);
    std::printf(" (%s%s)%s", words, text, end);
}

void print_named(const char* name, uint16_t value, const char* words, ValueNames names, const char* end) {
    print_explained(name, value, words, value_name(names, value), end);
}

void print_number(const char* name, uint16_t value, const char* words, int number, const char* unit, const char* end) {
    print_field_start(name, value);
    std::printf(" (%s%d%s)%s", words, number, unit, end);
}

}  // namespace quorlin
