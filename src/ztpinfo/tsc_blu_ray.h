#pragma once

#include "ztpinfo/timeslice.h"

namespace quorlin {

// Rule sets 2 and 4: Blu-ray primary and secondary audio; each has rules for one substream and for the programs of a
// timeslice beside the one before.
void check_blu_ray_primary_substream(ComplianceFlags& compliance, const ZtpFrameInfo& frame);
void check_blu_ray_primary_programs(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                                    const TimesliceRecord& previous);
void check_blu_ray_secondary_substream(ComplianceFlags& compliance, const ZtpFrameInfo& frame);
void check_blu_ray_secondary_programs(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                                      const TimesliceRecord& previous);

}  // namespace quorlin
