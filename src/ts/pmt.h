#pragma once

#include <cstdint>
#include <span>

#include "ts/psi.h"

namespace quorlin {

// Parses a program map section (ISO/IEC 13818-1, 2.4.4.8) that came on `pid` into a new program record. Returns 0; or
// TS_CHECK_FAILED after a finding in a descriptor, which leaves the program unrecorded.
[[nodiscard]] int parse_pmt(PsiTables& tables, uint16_t pid, std::span<const uint8_t> section);

}  // namespace quorlin
