#pragma once

#include <string>
#include <vector>

#include "ztpinfo/ztpinfo.h"

namespace quorlin {

// What the arguments of `ztpinfo` ask for.
struct ZtpInfoCommand {
    ZtpSettings settings;
    bool help = false;
    bool version = false;
    std::vector<std::string> files;  // "-" is standard input
};

// Reads the argument vector in the GNU way: abbreviated long options, `--name VALUE` and `--name=VALUE`, options after
// operands, `--` as the end of the options. Returns 0, or -1 on a usage error after a message on standard error.
[[nodiscard]] int parse_ztpinfo_command_line(int argc, char** argv, ZtpInfoCommand& command);

// Writes the help text to standard output.
void print_ztpinfo_help();

}  // namespace quorlin
