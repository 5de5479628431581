#pragma once

#include "ztpinfo/bsi.h"

namespace quorlin {

// Default lines: fields that the frame does not carry, though its acmod has a use for them, with the value that then
// holds.
void print_ac3_defaults(const Ac3Bsi& bsi);
void print_eac3_defaults(const Eac3Bsi& bsi);

}  // namespace quorlin
