#pragma once

#include "ztpinfo/bsi.h"

namespace quorlin {

// The listing of an AC-3 BSI without its heading; `end` ends the line of a field.
void print_ac3_fields(const Ac3Bsi& bsi, const char* end);

}  // namespace quorlin
