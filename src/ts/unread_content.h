#pragma once

#include "ts/ts_demux.h"

namespace quorlin {

// Reports the parts of a segment, at its end, that were not read. `status` is that of the segment:
// what did not come at all is said only of a segment without a finding.
void report_unread_content(TsDemuxContext& context, int status);

}  // namespace quorlin
