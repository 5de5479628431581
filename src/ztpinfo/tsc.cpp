#include "ztpinfo/tsc.h"

#include "ztpinfo/messages.h"
#include "ztpinfo/tsc_blu_ray.h"
#include "ztpinfo/tsc_generic.h"
#include "ztpinfo/tsc_hd_dvd.h"

namespace quorlin {

namespace {

constexpr const char* SOURCE = "tsc";

using SubstreamRules = void(ComplianceFlags& compliance, const ZtpFrameInfo& frame);

// Adds what was found in the frame at `place` to the flags of its timeslice.
void add_flags(TimesliceRecord& timeslice, const ComplianceFlags& found, const Place& place, RuleLog& log) {
    timeslice.compliance.failures |= found.failures;
    timeslice.compliance.warnings |= found.warnings;
    if (log.kept) log_broken_rules(log, found, place);
}

void check_substream(TimesliceRecord& timeslice, const ZtpSubstreamRecord& substream, SubstreamRules& rules,
                     RuleLog& log) {
    ComplianceFlags found;
    rules(found, substream.frame);
    add_flags(timeslice, found, substream.place, log);
}

// The rule sets for secondary audio cover independent substreams only.
enum class Covered { ALL, INDEPENDENT };

void check_each_substream(TimesliceRecord& timeslice, SubstreamRules& rules, Covered covered, RuleLog& log) {
    for (const ZtpProgramRecord& program : used_programs(timeslice)) {
        if (!program.independent.present) continue;
        check_substream(timeslice, program.independent, rules, log);
        if (covered == Covered::INDEPENDENT || program.num_dep_substreams == 0) continue;
        for (const ZtpSubstreamRecord& dependent : program.dependent)
            if (dependent.present) check_substream(timeslice, dependent, rules, log);
    }
}

}  // namespace

int check_substreams(TimesliceRecord& timeslice, ZtpRuleSet rule_set, RuleLog& log) {
    timeslice.compliance = {};
    switch (rule_set) {
        case ZtpRuleSet::NONE:
            return 0;
        case ZtpRuleSet::GENERIC:
            check_each_substream(timeslice, check_generic_substream, Covered::ALL, log);
            return 0;
        case ZtpRuleSet::BLU_RAY_PRIMARY:
            check_each_substream(timeslice, check_blu_ray_primary_substream, Covered::ALL, log);
            return 0;
        case ZtpRuleSet::HD_DVD_SECONDARY:
            check_each_substream(timeslice, check_hd_dvd_secondary_substream, Covered::INDEPENDENT, log);
            return 0;
        case ZtpRuleSet::BLU_RAY_SECONDARY:
            check_each_substream(timeslice, check_blu_ray_secondary_substream, Covered::INDEPENDENT, log);
            return 0;
        default:
            report_fatal("ztp-fatal-rule-set", "Unknown compliance mode requested", SOURCE, __LINE__);
            return COMPLIANCE_UNKNOWN_MODE;
    }
}

// What is wrong with a program has the place of its first frame.
void check_programs(TimesliceRecord& timeslice, const TimesliceRecord& previous, ZtpRuleSet rule_set, RuleLog& log) {
    ComplianceFlags found;
    switch (rule_set) {
        case ZtpRuleSet::GENERIC:
            check_generic_programs(found, timeslice, previous);
            break;
        case ZtpRuleSet::BLU_RAY_PRIMARY:
            check_blu_ray_primary_programs(found, timeslice, previous);
            break;
        case ZtpRuleSet::HD_DVD_SECONDARY:
            check_hd_dvd_secondary_programs(found, timeslice, previous);
            break;
        case ZtpRuleSet::BLU_RAY_SECONDARY:
            check_blu_ray_secondary_programs(found, timeslice, previous);
            break;
        default:
            break;
    }
    add_flags(timeslice, found, timeslice.programs[0].independent.place, log);
}

void check_end_of_data(TimesliceRecord& timeslice, ZtpRuleSet rule_set, RuleLog& log) {
    if (rule_set != ZtpRuleSet::GENERIC) return;
    ComplianceFlags found;
    check_generic_end_of_data(found, timeslice);
    add_flags(timeslice, found, timeslice.programs[0].independent.place, log);
}

}  // namespace quorlin
