#pragma once

#include "bits/report.h"

namespace quorlin {

// The analyzer's messages on standard error, after everything that standard output holds so far. A recorder gets them
// under `id` at the current place.

// Fatal-error block; `source` is the base name of the reporting source. After the usual one the call ends with
// ZTP_FATAL, which fails the verdict.
void report_fatal(const char* id, const char* message, const char* source, int line,
                  ReasonEffect effect = ReasonEffect::FAILS_UNVALIDATED);

// Warning line.
void report_warning(const char* id, const char* message);

}  // namespace quorlin
