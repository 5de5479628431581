#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorlin {

// A file is read whole: one of this size or more is refused rather than left to exhaust the memory.
inline constexpr uint64_t FILE_SIZE_LIMIT = uint64_t{1} << 32;

// Reads the file, or standard input for "-", whole into `bytes`. Returns 0, or -1 after a message on standard error
// when it cannot be opened or read (a directory cannot) or holds FILE_SIZE_LIMIT bytes or more.
[[nodiscard]] int read_whole_file(const std::string& path, std::vector<uint8_t>& bytes);

}  // namespace quorlin
