#pragma once

#include "ts/ts_demux.h"

namespace quorlin {

// Registers the audio streams and the one video stream of `program` that are not registered yet, and opens their files.
// Audio streams after the tenth are not followed, which is said. Returns 0, or ORed: 5 a second video PID, 3 an output
// file that cannot be opened.
[[nodiscard]] int register_streams(TsDemuxContext& context, const ProgramRecord& program);

}  // namespace quorlin
