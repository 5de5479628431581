#pragma once

#include <cstdio>
#include <memory>

namespace quorlin {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Owner of a file stream: an early return closes it. Output goes through OutputFile, which looks at the close.
using File = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace quorlin
