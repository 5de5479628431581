// quorlin-json: the same run as quorlin's, its events as JSON Lines on standard output.

#include <cstdio>
#include <cstring>
#include <new>

#include "bits/process.h"
#include "driver/run.h"
#include "json/events.h"
#include "json/explanations.h"

using namespace quorlin;

namespace {

constexpr int EXIT_USAGE = 64;

constexpr char HELP[] =
    "Usage: quorlin-json -i INPUT [-o DIRECTORY] [-s INDEX]\n"
    "       quorlin-json --explain ID... | --ids | --help | --version\n"
    "\n"
    "Validates INPUT as quorlin does, with the same options and exit codes, and writes what it finds to standard\n"
    "output as JSON Lines, one event a line: findings and reasons with their place in the content (playlist, line,\n"
    "segment, byte offset, stream, time), facts of playlists and segments, and the verdict.\n"
    "\n"
    "  --explain ID...  what a finding or reason means, its rule, how to fix it\n"
    "  --ids            every id, one a line\n";

// The value of -i, as the command line will be read: in pairs.
const char* input_of(int argc, const char* const* argv) {
    const char* input = nullptr;
    for (int i = 1; i + 1 < argc; i += 2)
        if (std::strcmp(argv[i], "-i") == 0) input = argv[i + 1];
    return input;
}

int run_with_events(int argc, char** argv) {
    write_start(QUORLIN_VERSION, input_of(argc, argv));
    set_recorder(&event_recorder());
    int status = EXIT_NO_RESULT;
    try {
        status = run(argc, argv);
    } catch (const std::bad_alloc&) {
        // There is a last event without memory, too; how the program ends is its process's affair.
        write_end(EXIT_NO_RESULT);
        throw;
    }
    set_recorder(nullptr);
    write_end(status == 0 ? 0 : EXIT_NO_RESULT);
    return status;
}

// The options that are this program's own hold as first argument only: quorlin has none that begin with "--".
int run_quorlin_json(int argc, char** argv) {
    const char* first = argc > 1 ? argv[1] : "";
    if (std::strcmp(first, "--help") == 0) {
        std::fputs(HELP, stdout);
        return 0;
    }
    if (std::strcmp(first, "--version") == 0) {
        std::printf("quorlin-json (quorlin) %s\n", QUORLIN_VERSION);
        return 0;
    }
    if (std::strcmp(first, "--ids") == 0) {
        print_ids();
        return 0;
    }
    if (std::strcmp(first, "--explain") == 0) {
        if (argc > 2) return explain(argc - 2, argv + 2) == 0 ? 0 : EXIT_USAGE;
        std::fputs("quorlin-json: --explain needs an id; --ids lists them\n", stderr);
        return EXIT_USAGE;
    }
    return run_with_events(argc, argv);
}

}  // namespace

// Standard error is quorlin's, its name included.
int main(int argc, char** argv) {
    return run_process("quorlin", run_quorlin_json, argc, argv);
}
