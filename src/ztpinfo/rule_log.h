#pragma once

#include <optional>
#include <vector>

#include "bits/place.h"
#include "ztpinfo/compliance_flags.h"

namespace quorlin {

// Where rules were broken. The flags tell only that they were: they last for the life of a handle and are listed again
// at every call.

struct RulePlace {
    Place place;
    uint64_t timeslice = 0;  // its number, from 1
};

struct BrokenRule {
    uint32_t number = 0;
    bool unlisted = false;  // broken since it was last listed
    RulePlace first;        // where it was first broken
    RulePlace unlisted_at;  // where it was first broken since it was last listed
};

struct RuleLog {
    bool kept = false;               // somebody wants to know; nothing is stored otherwise
    bool timeslices_listed = false;  // the lists tell the timeslice and its time
    uint64_t timeslice = 0;          // the one that is being checked
    std::vector<BrokenRule> rules;
    std::optional<Place> first_failure;
    std::optional<Place> failure_in_call;  // the first one of the current call
};

// Remembers what `flags` holds as broken at `place`.
void log_broken_rules(RuleLog& log, const ComplianceFlags& flags, const Place& place);

// The place of a rule that is being listed, marked as repeated when it was not broken since it was last listed.
RulePlace place_of_listed_rule(RuleLog& log, uint32_t number);

// The place of the first failure of the current call or, marked as repeated, of an earlier one.
Place place_of_failure(const RuleLog& log);

}  // namespace quorlin
