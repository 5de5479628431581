#pragma once

#include <cstdint>
#include <string>

namespace quorlin {

// The hexadecimal number of a ZTP_PROGRAMn attribute. Blanks, tabs, a plus sign and "0x" may precede the digits, what
// follows them is ignored, a value above 32 bits saturates. Returns 0, or -1 with value 0 when no number begins so.
[[nodiscard]] int parse_ztp_program(const std::string& text, uint32_t& value);

}  // namespace quorlin
