// ztpinfo: the command of the E-AC-3 / AC-3 analyzer. Each file is one analyzer call, since the rules at the end of a
// call would otherwise see ends of the stream that are none.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "tools/whole_file.h"
#include "tools/ztpinfo_command_line.h"
#include "ztpinfo/ztpinfo.h"

namespace {

constexpr int EXIT_UNREADABLE = 2;  // the status of an analysis that could not be made
constexpr int EXIT_USAGE = 64;
constexpr int EXIT_NO_OUTPUT = 255;  // standard output cannot be written, or memory has run out

// Files that are opened later must not take the place of a standard stream that the caller closed.
void open_missing_descriptors() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) != -1) continue;
        if (open("/dev/null", O_RDWR) < 0) std::_Exit(EXIT_NO_OUTPUT);
    }
}

bool output_is_written() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
    std::perror("ztpinfo: standard output cannot be written");
    return false;
}

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

int report_out_of_memory() {
    std::fflush(stdout);
    std::fputs("ztpinfo: out of memory\n", stderr);
    return EXIT_NO_OUTPUT;
}

// Where memory is so short that not even the exception that says so can be made, the library ends the program.
[[noreturn]] void end_without_memory() {
    _exit(report_out_of_memory());
}

}  // namespace

int main(int argc, char** argv) {
    open_missing_descriptors();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::set_terminate(end_without_memory);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    int status = EXIT_NO_OUTPUT;
    try {
        status = run(argc, argv);
    } catch (const std::bad_alloc&) {
        // The one exception that the library throws at us. A new-handler would also end the allocations that may fail
        // and have a message of their own.
        return report_out_of_memory();
    }
    return output_is_written() ? status : EXIT_NO_OUTPUT;
}
