#include "ztpinfo/rule_log.h"

namespace quorlin {

namespace {

BrokenRule* find_rule(RuleLog& log, uint32_t number) {
    for (BrokenRule& rule : log.rules)
        if (rule.number == number) return &rule;
    return nullptr;
}

void log_broken_rule(RuleLog& log, uint32_t number, const RulePlace& place) {
    BrokenRule* rule = find_rule(log, number);
    if (rule == nullptr) rule = &log.rules.emplace_back(BrokenRule{number, false, place, place});
    if (rule->unlisted) return;
    rule->unlisted = true;
    rule->unlisted_at = place;
}

Place repeated(Place place) {
    place.repeated = true;
    return place;
}

}  // namespace

void log_broken_rules(RuleLog& log, const ComplianceFlags& flags, const Place& place) {
    const std::bitset<COMPLIANCE_NUMBERS> broken = flags.failures | flags.warnings;
    if (broken.none()) return;
    for (uint32_t number = 0; number < COMPLIANCE_NUMBERS; ++number)
        if (broken[number]) log_broken_rule(log, number, {place, log.timeslice});
    if (flags.failures.none()) return;
    if (!log.first_failure) log.first_failure = place;
    if (!log.failure_in_call) log.failure_in_call = place;
}

RulePlace place_of_listed_rule(RuleLog& log, uint32_t number) {
    BrokenRule* rule = find_rule(log, number);
    if (rule == nullptr) return {repeated(current_place)};  // broken before the log was kept
    if (!rule->unlisted) return {repeated(rule->first.place), rule->first.timeslice};
    rule->unlisted = false;
    return rule->unlisted_at;
}

Place place_of_failure(const RuleLog& log) {
    if (log.failure_in_call) return *log.failure_in_call;
    return repeated(log.first_failure ? *log.first_failure : current_place);
}

}  // namespace quorlin
