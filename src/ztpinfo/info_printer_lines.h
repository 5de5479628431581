#pragma once

#include <cstdint>
#include <span>

#include "ztpinfo/info_printer_names.h"

namespace quorlin {

// The lines that a report is made of. Those of a frame with a CRC error are marked, since their values may be corrupt;
// texts that do not come from the frame (headings, defaults) end with a plain line end.

inline const char* line_end(CrcStatus crc_status) {
    return crc_status != CrcStatus::NO_ERROR ? " (?)\n" : "\n";
}

// Names of the locations that are set in `locations` (chanmap form), joined with ", ".
void print_locations(uint32_t locations, ValueNames names);

// One field of a BSI listing: its name and raw value.
void print_field(const char* name, uint16_t value, const char* end);

// The same with an explanation after it: words and a text, words and the name of the value, words and a number.
void print_explained(const char* name, uint16_t value, const char* words, const char* text, const char* end);
void print_named(const char* name, uint16_t value, const char* words, ValueNames names, const char* end);
void print_number(const char* name, uint16_t value, const char* words, int number, const char* unit, const char* end);

}  // namespace quorlin
