#pragma once

#include "ztpinfo/tsi.h"

// Prints the list of the findings that are failures, and of the warnings too when they are wanted, by number and text.
void print_compliance_list(const ComplianceFlags& compliance, bool with_warnings);
