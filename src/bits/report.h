#pragma once

#include <string>

namespace quorlin {

// What a reason on standard error means for the run.
enum class ReasonEffect {
    REMARK,             // nothing: it helps to understand the rest
    UNVALIDATED,        // something was left out, the verdict is that of the rest
    FAILS,              // it fails the verdict
    FAILS_UNVALIDATED,  // both
};

// Writes "quorlin: <path>: <reason>" and a line end to standard error, after everything that standard output holds so
// far: the visible reason of a failure or an omission for which standard output has no text. The id is kept as those of
// findings are, and begins with "reason-".
__attribute__((format(printf, 4, 5))) void report_reason(ReasonEffect effect, const char* id, const std::string& path,
                                                         const char* format, ...);

// Records a message that the analyzer has written to standard error itself.
void record_analyzer_message(ReasonEffect effect, const char* id, const char* message);

}  // namespace quorlin
