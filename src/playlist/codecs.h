#pragma once

#include <string>
#include <string_view>

namespace quorlin {

// Whether a CODECS value contains `name`. Entries are not told apart, deliberately: "avc" stands for "avc1" and "avc3".
bool codecs_contain(std::string_view codecs, std::string_view name);

enum class CodecsFilter { AUDIO, VIDEO };

// Keeps the entries of a CODECS value that name audio or video, in their order; the whole value when none does.
std::string filter_codecs(const std::string& codecs, CodecsFilter filter);

// The Lumora entry of a CODECS value: every entry that contains "lma" or "lmh", joined with commas, goes to `out`.
// Returns 1 when that text is exactly 10 characters long (one entry such as "lmhe.08.06"), else 0.
int lumora_codecs_entry(const std::string& codecs, std::string& out);

}  // namespace quorlin
