#pragma once

#include "ts/ts_segment.h"

namespace quorlin {

// The two callers word the findings slightly differently.
enum class TimingCaller { TEMPLATE, PLAYLIST };

// Compares the audio and video times of consecutive transport stream segments, for E-AC-3 streams (stream type 0x87).
// Returns 0, or -1 when a finding was printed. Moves the stream clock, for the places of its findings.
[[nodiscard]] int check_segment_timing(const TsSegmentTiming& current, const TsSegmentTiming& previous,
                                       TimingCaller caller);

}  // namespace quorlin
