#pragma once

namespace quorlin {

// The banner. Always 0.
int print_version();

// The banner and the help text. Always 0.
int print_help();

}  // namespace quorlin
