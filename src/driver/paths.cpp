#include "driver/paths.h"

#include <sys/stat.h>

#include <string_view>

namespace {

bool exists(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0;
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
    const auto create_level = [&status](const std::string& level) {
        if (!exists(level)) status = mkdir(level.c_str(), 0777);
    };
    // Only backslashes separate levels that are created; a missing parent before a '/' is an error.
    for (size_t at = path.find('\\'); at != std::string::npos; at = path.find('\\', at + 1))
        create_level(path.substr(0, at));
    create_level(path);
    return status;
}

bool is_http_address(const std::string& address) {
    return std::string_view(address).starts_with("http://");
}
