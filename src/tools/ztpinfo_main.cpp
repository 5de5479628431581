// ztpinfo: the command of the E-AC-3 / AC-3 analyzer. Each file is one analyzer call, since the rules at the end of a
// call would otherwise see ends of the stream that are none.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "bits/process.h"
#include "tools/whole_file.h"
#include "tools/ztpinfo_command_line.h"
#include "ztpinfo/ztpinfo.h"

namespace {

constexpr int EXIT_UNREADABLE = 2;  // the status of an analysis that could not be made
constexpr int EXIT_USAGE = 64;

// Returns the analyzer's 0, 1 or 2; 2 as well for a file that cannot be read.
int analyze_file(const std::string& path, const ZtpInfoCommand& command, std::vector<uint8_t>& bytes) {
    if (read_whole_file(path, bytes) != 0) return EXIT_UNREADABLE;
    const ZtpInfoPtr handle(ztpinfo_open());
    if (!handle) return EXIT_UNREADABLE;
    ztpinfo_configure(handle.get(), command.settings);
    ZtpStreamSummary summary;
    return ztpinfo_process(bytes, summary, handle.get());
}

int run(int argc, char** argv) {
    ZtpInfoCommand command;
    if (parse_ztpinfo_command_line(argc, argv, command) != 0) return EXIT_USAGE;
    if (command.help) {
        print_ztpinfo_help();
        return 0;
    }
    if (command.version) {
        std::printf("ztpinfo (quorlin) %s\n", QUORLIN_VERSION);
        return 0;
    }
    int worst = 0;
    std::vector<uint8_t> bytes;  // keeps its room from file to file
    for (const std::string& path : command.files) {
        worst = std::max(worst, analyze_file(path, command, bytes));
        if (std::ferror(stdout) != 0) break;
    }
    return worst;
}

}  // namespace

int main(int argc, char** argv) {
    return run_process("ztpinfo", run, argc, argv);
}
