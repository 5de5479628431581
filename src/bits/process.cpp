#include "bits/process.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

namespace quorlin {

namespace {

// A terminate handler takes no arguments, so the name is kept here.
const char* process_name = "";

// A file opened later must not land on a standard descriptor that was closed at the start.
void open_standard_descriptors() {
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = open("/dev/null", O_RDWR);
    if (descriptor >= 0) close(descriptor);
}

int report_out_of_memory() {
    std::fflush(stdout);
    std::fprintf(stderr, "%s: out of memory\n", process_name);
    return EXIT_NO_RESULT;
}

// Where memory is so short that not even the exception that says so can be made, the library ends the program.
[[noreturn]] void end_without_memory() {
    _exit(report_out_of_memory());
}

}  // namespace

int run_process(const char* name, int (*run)(int argc, char** argv), int argc, char** argv) {
    process_name = name;
    open_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::set_terminate(end_without_memory);
    // Findings appear when they are found, into a file or a pipe too.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);

    int exit_code = EXIT_NO_RESULT;
    try {
        exit_code = run(argc, argv);
    } catch (const std::bad_alloc&) {
        // The one exception that the library throws at us; nothing in the program throws. A new-handler would also end
        // the allocations that may fail and have a message of their own.
        return report_out_of_memory();
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "%s: standard output: cannot be written\n", name);
        return EXIT_NO_RESULT;
    }
    return exit_code;
}

}  // namespace quorlin
