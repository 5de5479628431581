#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

#include "driver/run.h"

namespace {

constexpr int EXIT_FAILED_RUN = 255;

// A file opened later must not land on a standard descriptor that was closed at the start.
void open_standard_descriptors() {
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = open("/dev/null", O_RDWR);
    if (descriptor >= 0) close(descriptor);
}

int report_out_of_memory() {
    std::fflush(stdout);
    std::fprintf(stderr, "quorlin: out of memory\n");
    return EXIT_FAILED_RUN;
}

// Where memory is so short that not even the exception that says so can be made, the library ends the program.
[[noreturn]] void end_without_memory() {
    _exit(report_out_of_memory());
}

}  // namespace

int main(int argc, char** argv) {
    open_standard_descriptors();
    // A reader that is gone and a file that may not grow are failed writes, not the end of the program.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::set_terminate(end_without_memory);
    // Findings appear when they are found, into a file or a pipe too.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);

    int exit_code = EXIT_FAILED_RUN;
    try {
        exit_code = run(argc, argv);
    } catch (const std::bad_alloc&) {
        // The one exception that the library throws at us; nothing in the program throws.
        return report_out_of_memory();
    }

    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "quorlin: standard output: cannot be written\n");
        return EXIT_FAILED_RUN;
    }
    return exit_code;
}
