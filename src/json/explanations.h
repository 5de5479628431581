#pragma once

namespace quorlin {

// Explanations of findings and reasons, from the text of docs/findings.md that is built into the program.

// Prints the explanation of each id. Returns 0, or -1 after naming on standard error what is no id.
[[nodiscard]] int explain(int count, const char* const* ids);

// Prints every id, one a line, in the order of the page.
void print_ids();

}  // namespace quorlin
