#include "ztpinfo/messages.h"

#include <cstdio>

namespace quorlin {

void report_fatal(const char* id, const char* message, const char* source, int line, ReasonEffect effect) {
    std::fflush(stdout);
    std::fprintf(stderr, "\n\nFATAL ERROR:  %s\n\nError occurred in:\n%s (line %d)\n\n", message, source, line);
    record_analyzer_message(effect, id, message);
}

void report_warning(const char* id, const char* message) {
    std::fflush(stdout);
    std::fprintf(stderr, "\nWARNING:  %s\n", message);
    record_analyzer_message(ReasonEffect::REMARK, id, message);
}

}  // namespace quorlin
