#pragma once

#include <string>

namespace quorlin {

// Says why what a playlist or the command line names cannot be opened: `cause`, the system's reason, or what is wrong
// with the address if it is a usual mistake. Addresses are file names as they stand.
void report_unreadable(const std::string& path, const char* cause);

}  // namespace quorlin
