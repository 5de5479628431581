#include "bits/report.h"

#include <cstdarg>
#include <cstdio>

void report_reason(const std::string& path, const char* format, ...) {
    std::fflush(stdout);
    std::fprintf(stderr, "quorlin: %s: ", path.c_str());
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fputc('\n', stderr);
}
