#pragma once

#include "driver/command_line.h"

namespace quorlin {

// The whole program but for what belongs to the process: reads the command line, validates the input and prints the
// verdict. Returns the exit code: 0 when a verdict was reached, -1 otherwise.
int run(int argc, const char* const* argv);

}  // namespace quorlin
