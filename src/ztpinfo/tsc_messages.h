#pragma once

#include "ztpinfo/rule_log.h"

namespace quorlin {

// Prints the list of the findings that are failures, and of the warnings too when they are wanted, by number and text.
// Each has its place in `log`.
void print_compliance_list(const ComplianceFlags& compliance, bool with_warnings, RuleLog& log);

}  // namespace quorlin
