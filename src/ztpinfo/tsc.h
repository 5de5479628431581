#pragma once

#include "ztpinfo/rule_log.h"
#include "ztpinfo/timeslice.h"

namespace quorlin {

// Compliance rules over a completed timeslice. Findings are flags by message number (tsc_messages);
// `log` keeps their places.

// Code of the fatal error of a rule set that does not exist.
constexpr int COMPLIANCE_UNKNOWN_MODE = 7169;

// Clears the flags of `timeslice` and applies the rules that look at one substream alone to every substream that
// `rule_set` covers. Returns 0, or COMPLIANCE_UNKNOWN_MODE after a fatal block.
[[nodiscard]] int check_substreams(TimesliceRecord& timeslice, ZtpRuleSet rule_set, RuleLog& log);

// Applies the rules that look at programs and at the different timeslice before; `previous` may be `timeslice` itself.
void check_programs(TimesliceRecord& timeslice, const TimesliceRecord& previous, ZtpRuleSet rule_set, RuleLog& log);

// Applies the rule for the last timeslice of a buffer.
void check_end_of_data(TimesliceRecord& timeslice, ZtpRuleSet rule_set, RuleLog& log);

}  // namespace quorlin
