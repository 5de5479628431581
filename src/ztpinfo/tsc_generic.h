#pragma once

#include "ztpinfo/timeslice.h"

namespace quorlin {

// Rule set 1: generic Zentra Plus programs.

// The rules for one substream.
void check_generic_substream(ComplianceFlags& compliance, const ZtpFrameInfo& frame);

// The rules for the programs of a timeslice, beside the one before.
void check_generic_programs(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                            const TimesliceRecord& previous);

// The part of them that other rule sets share. Returns false when the bsid of I0 ends the program rules.
bool check_generic_program_form(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                                const TimesliceRecord& previous);

// The rule for the last timeslice of a buffer.
void check_generic_end_of_data(ComplianceFlags& compliance, const TimesliceRecord& timeslice);

}  // namespace quorlin
