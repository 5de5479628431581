#pragma once

#include "ztpinfo/timeslice.h"

namespace quorlin {

// Rule set 3: HD-DVD secondary audio; rules for one substream and for the programs of a timeslice beside the one
// before.
void check_hd_dvd_secondary_substream(ComplianceFlags& compliance, const ZtpFrameInfo& frame);
void check_hd_dvd_secondary_programs(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                                     const TimesliceRecord& previous);

}  // namespace quorlin
