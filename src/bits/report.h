#pragma once

#include <string>

// Writes "quorlin: <path>: <reason>" and a line end to standard error, behind everything that standard output holds so
// far: the visible reason of a failure for which standard output has no text.
__attribute__((format(printf, 2, 3))) void report_reason(const std::string& path, const char* format, ...);
