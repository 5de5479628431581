#pragma once

namespace quorlin {

// Exit code of a program that comes to no result: memory has run out, or standard output cannot be written.
constexpr int EXIT_NO_RESULT = 255;

// The body of a main function: runs `run` where nothing of its surroundings can kill it. Standard descriptors that are
// closed are opened on /dev/null, a pipe without a reader and a file that may not grow are failed writes, and standard
// output is line buffered. Returns what `run` returns, or EXIT_NO_RESULT after "<name>: ..." on standard error.
int run_process(const char* name, int (*run)(int argc, char** argv), int argc, char** argv);

}  // namespace quorlin
