#pragma once

#include <cstdint>
#include <string>

namespace quorlin {

// ZTP_PROGRAMn packs three fields of a program as the third byte of an E-AC-3 descriptor does.
constexpr uint32_t ZTP_PROGRAM_SERVICE_TYPE_SHIFT = 3;  // and 7
constexpr uint32_t ZTP_PROGRAM_FULL_SERVICE_SHIFT = 6;
constexpr uint32_t ZTP_PROGRAM_MARK = 0x80;  // always set, where the value is made from the bitstream

// The hexadecimal number of a ZTP_PROGRAMn attribute. Blanks, tabs, a plus sign and "0x" may precede the digits, what
// follows them is ignored, a value above 32 bits saturates. Returns 0, or -1 with value 0 when no number begins so.
[[nodiscard]] int parse_ztp_program(const std::string& text, uint32_t& value);

}  // namespace quorlin
