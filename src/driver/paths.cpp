#include "driver/paths.h"

#include <sys/stat.h>

#include <cerrno>
#include <string_view>

namespace quorlin {

namespace {

bool exists(const char* path) {
    struct stat status = {};
    return stat(path, &status) == 0;
}

// Creates a directory that is not there; `status` becomes the outcome of the attempt.
void create_level(const char* path, int& status) {
    if (exists(path)) return;
    status = mkdir(path, 0777);
    // Another run may have been faster.
    if (status != 0 && errno == EEXIST && exists(path)) status = 0;
}

}  // namespace

int file_stem(const std::string& path, std::string& out) {
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos) return -1;
    const size_t separator = path.find_last_of("\\/");
    // A separator at position 0 counts as none, deliberately: "/a.ts" gives "/a".
    if (separator == std::string::npos || separator == 0 || dot < separator)
        out = path.substr(0, dot);
    else
        out = path.substr(separator + 1, dot - separator - 1);
    return 0;
}

int create_output_dir(const std::string& path) {
    if (path.empty()) return -1;
    int status = 0;
    // Only backslashes separate levels that are created; a missing parent before a '/' is an error. Each level is the
    // text up to its backslash, which a zero takes the place of for that time.
    std::string level = path;
    for (size_t at = 0; at < level.size(); ++at) {
        if (level[at] != '\\') continue;
        level[at] = '\0';
        create_level(level.c_str(), status);
        level[at] = '\\';
    }
    create_level(level.c_str(), status);
    return status;
}

bool is_http_address(const std::string& address) {
    return std::string_view(address).starts_with("http://");
}

}  // namespace quorlin
