#pragma once

#include <cstdint>
#include <span>

#include "isobmff/media_context.h"

// Whether the samples of the track are analysed.
bool is_analyzed_audio(const TrackRecord& track);

// Hands a sample to the analyzer of its format; `first` marks the track's first sample of the segment, which is
// compared with the sample description. Returns 0, or 11 with findings.
[[nodiscard]] int check_audio_sample(TrackRecord& track, std::span<const uint8_t> sample, bool first);
