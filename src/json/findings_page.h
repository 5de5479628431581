#pragma once

#include <string_view>

namespace quorlin {

// The text of docs/findings.md, made a source when the program is built.
extern const std::string_view FINDINGS_PAGE;

}  // namespace quorlin
