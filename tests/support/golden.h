#pragma once

#include <functional>
#include <string>

namespace quorlin {

// What `run` prints on standard output, findings by way of a recorder.
std::string printed_by(const std::function<void()>& run);

// An entry of a transcript: the name of a case, the status that `run` returns and what it prints.
std::string transcript_entry(const std::string& name, const std::function<int()>& run);

// Compares `text` with the file at `path` (relative to the folder of the tests). With QUORLIN_UPDATE_GOLDEN=1 the file
// is rewritten; its difference is then part of the change and to be read as such.
void expect_golden(const std::string& path, const std::string& text);

}  // namespace quorlin
