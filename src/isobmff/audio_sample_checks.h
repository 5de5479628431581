#pragma once

#include <cstdint>
#include <span>

#include "isobmff/track_record.h"

namespace quorlin {

// Whether the samples of the track are analysed.
bool is_analysed_audio(const TrackRecord& track);

// Hands a sample to the analyzer of its format; `first` marks the track's first sample of the segment, which is
// compared with the sample description. Returns 0, or MP4_FINDING.
[[nodiscard]] int check_audio_sample(TrackRecord& track, std::span<const uint8_t> sample, bool first);

}  // namespace quorlin
