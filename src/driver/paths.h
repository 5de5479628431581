#pragma once

#include <string>

namespace quorlin {

// File name of `path` without directory and extension, for naming output files. Returns 0, or -1 when it has no '.'.
[[nodiscard]] int file_stem(const std::string& path, std::string& out);

// Creates the directory, level by level at each backslash. Returns 0, or -1 when the last creation attempted failed.
[[nodiscard]] int create_output_dir(const std::string& path);

// Whether the address is refused without an attempt to open it: "https://..." deliberately is not.
bool is_http_address(const std::string& address);

}  // namespace quorlin
