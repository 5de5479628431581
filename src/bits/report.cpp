#include "bits/report.h"

#include <cstdarg>
#include <cstdio>

#include "bits/recorder.h"

namespace quorlin {

namespace {

void record_reason(ReasonEffect effect, const char* id, std::string_view file, std::string_view reason) {
    const Recorder* recorder = current_recorder();
    if (recorder == nullptr) return;
    const bool fails = effect == ReasonEffect::FAILS || effect == ReasonEffect::FAILS_UNVALIDATED;
    const bool unvalidated = effect == ReasonEffect::UNVALIDATED || effect == ReasonEffect::FAILS_UNVALIDATED;
    recorder->reason({id, reason, file, fails, unvalidated, current_place});
}

__attribute__((format(printf, 4, 0))) void print_reason(ReasonEffect effect, const char* id, const std::string& path,
                                                        const char* format, va_list args) {
    const std::string_view reason = format_text(format, args);
    std::fflush(stdout);
    std::fprintf(stderr, "quorlin: %s: %.*s\n", path.c_str(), static_cast<int>(reason.size()), reason.data());
    record_reason(effect, id, path, reason);
}

}  // namespace

void report_reason(ReasonEffect effect, const char* id, const std::string& path, const char* format, ...) {
    va_list args;
    va_start(args, format);
    print_reason(effect, id, path, format, args);
    va_end(args);
}

void record_analyzer_message(ReasonEffect effect, const char* id, const char* message) {
    record_reason(effect, id, current_place.segment != nullptr ? current_place.segment : "", message);
}

}  // namespace quorlin
