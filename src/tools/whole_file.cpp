#include "tools/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quorlin {

namespace {

constexpr size_t FIRST_READ = size_t{1} << 20;

// Closes what it opened; standard input stays open.
struct InputFile {
    int descriptor = -1;
    bool owned = false;
    ~InputFile() {
        if (owned) close(descriptor);
    }
};

int report_failure(const std::string& path, const char* reason) {
    std::fflush(stdout);
    std::fprintf(stderr, "ztpinfo: %s: %s\n", path.c_str(), reason);
    return -1;
}

int refuse_size(const std::string& path) {
    return report_failure(path, "4 GiB or larger, which is more than one analysis can take");
}

}  // namespace

int read_whole_file(const std::string& path, std::vector<uint8_t>& bytes) {
    bytes.clear();
    InputFile file;
    file.owned = path != "-";
    file.descriptor = file.owned ? open(path.c_str(), O_RDONLY | O_CLOEXEC) : STDIN_FILENO;
    if (file.descriptor < 0) {
        file.owned = false;
        return report_failure(path, std::strerror(errno));
    }

    struct stat status = {};
    const bool regular = fstat(file.descriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (regular && static_cast<uint64_t>(status.st_size) >= FILE_SIZE_LIMIT) return refuse_size(path);

    // A file is read in one piece, with one byte to spare to see its end; a pipe is read as long as it gives bytes.
    bytes.resize(std::max(FIRST_READ, regular ? static_cast<size_t>(status.st_size) + 1 : 0));
    size_t filled = 0;
    for (;;) {
        if (filled == bytes.size()) bytes.resize(std::min<uint64_t>(2 * filled, FILE_SIZE_LIMIT));
        const ssize_t got = read(file.descriptor, bytes.data() + filled, bytes.size() - filled);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return report_failure(path, std::strerror(errno));
        if (got == 0) break;
        filled += static_cast<size_t>(got);
        if (filled >= FILE_SIZE_LIMIT) return refuse_size(path);
    }
    bytes.resize(filled);
    return 0;
}

}  // namespace quorlin
