#pragma once

#include "ts/ts_demux.h"

namespace quorlin {

// Registers the audio streams and the one video stream of `program` that are not registered yet, and opens their files.
// Audio streams after the tenth are not followed, which is said. Returns 0, or ORed: TS_LOST_SYNC_OR_SECOND_VIDEO for a
// second video PID, TS_OUTPUT_FAILED for a file that cannot be opened.
[[nodiscard]] int register_streams(TsDemuxContext& context, const ProgramRecord& program);

}  // namespace quorlin
