#pragma once

#include "ts/ts_demux.h"

// Registers the audio streams and the one video stream of `program` that are not registered yet, and opens their files.
// Returns 0, or ORed: 5 a second video PID, 3 an output file that cannot be opened, 11 too many audio streams.
[[nodiscard]] int register_streams(TsDemuxContext& context, const ProgramRecord& program);
