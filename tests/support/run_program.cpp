#include "support/run_program.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

std::string take_file(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    unlink(path.c_str());
    return text.str();
}

}  // namespace

ProgramResult run_program(const std::string& command) {
    const std::string base = testing::TempDir() + "run_program_" + std::to_string(getpid());
    const int status = std::system(("{ " + command + "\n} >'" + base + ".out' 2>'" + base + ".err'").c_str());
    ProgramResult result;
    if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
    result.out = take_file(base + ".out");
    result.err = take_file(base + ".err");
    return result;
}
