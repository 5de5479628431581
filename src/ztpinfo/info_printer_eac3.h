#pragma once

#include "ztpinfo/bsi.h"

namespace quorlin {

// The listing of an E-AC-3 BSI without its heading; `end` ends the line of a field.
void print_eac3_fields(const Eac3Bsi& bsi, const char* end);

}  // namespace quorlin
