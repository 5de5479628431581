#pragma once

#include "ts/ts_demux.h"

namespace quorlin {

// Says on standard error, at the end of a segment, what of it nobody has looked at. `status` is that of the segment:
// what did not come at all is said only of a segment without a finding.
void report_unread_content(TsDemuxContext& context, int status);

}  // namespace quorlin
