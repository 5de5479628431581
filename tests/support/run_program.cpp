#include "support/run_program.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "support/files.h"

namespace quorlin {

ProgramResult run_program(const std::string& command) {
    const std::string base = scratch_path("run");
    const int status = std::system(("{ " + command + "\n} >'" + base + ".out' 2>'" + base + ".err'").c_str());
    ProgramResult result;
    if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
    result.out = file_text(base + ".out");
    result.err = file_text(base + ".err");
    for (const char* file : {".out", ".err"}) unlink((base + file).c_str());
    return result;
}

}  // namespace quorlin
