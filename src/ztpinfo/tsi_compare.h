#pragma once

#include "ztpinfo/tsi.h"

namespace quorlin {

// True when nothing but the flags tells the timeslices apart: such a timeslice need not be checked again.
bool same_timeslice(const TimesliceRecord& a, const TimesliceRecord& b);

// True when both would be reported alike: same programs and substreams, frame lengths within one word, and the same BSI
// but for what changes from frame to frame in ordinary streams (check words, frame size codes, converter sync, heavy
// compression).
bool same_layout(const TimesliceRecord& a, const TimesliceRecord& b);

}  // namespace quorlin
