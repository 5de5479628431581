#pragma once

#include <string>

namespace quorlin {

struct ProgramResult {
    int exit_code = -1;  // -1 when the program did not end by itself
    std::string out;
    std::string err;
};

// Runs a shell command line and collects what it writes. Redirections inside the command hold.
ProgramResult run_program(const std::string& command);

}  // namespace quorlin
