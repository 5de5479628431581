#include "bits/finding.h"

#include <cstdarg>
#include <cstdio>

#include "bits/recorder.h"

namespace quorlin {

namespace {

bool verdict_untouched = false;

__attribute__((format(printf, 3, 0))) void print_finding(const char* id, bool fails, const char* format, va_list args) {
    if (const Recorder* recorder = current_recorder())
        recorder->finding({id, format_text(format, args), fails && !verdict_untouched, current_place});
    else
        std::vprintf(format, args);
}

}  // namespace

int fail(int status, const char* id, const char* format, ...) {
    va_list args;
    va_start(args, format);
    print_finding(id, true, format, args);
    va_end(args);
    return status;
}

void note(const char* id, const char* format, ...) {
    va_list args;
    va_start(args, format);
    print_finding(id, false, format, args);
    va_end(args);
}

void announce(const char* format, ...) {
    va_list args;
    va_start(args, format);
    if (const Recorder* recorder = current_recorder())
        recorder->text(format_text(format, args));
    else
        std::vprintf(format, args);
    va_end(args);
}

void announce_verdict(bool passed) {
    const char* text = passed ? "\nvalidation result: PASSED\n" : "\nvalidation result: FAILED\n";
    if (const Recorder* recorder = current_recorder())
        recorder->verdict(text, passed);
    else
        std::fputs(text, stdout);
}

VerdictUntouched::VerdictUntouched() : saved(verdict_untouched) {
    verdict_untouched = true;
}

VerdictUntouched::~VerdictUntouched() {
    verdict_untouched = saved;
}

}  // namespace quorlin
