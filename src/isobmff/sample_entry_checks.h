#pragma once

#include "isobmff/media_context.h"

// Compares the sample description of a track with the CODECS and CHANNELS of the playlist; nothing is compared without
// CODECS. `path` is the segment, for standard error. Returns 0, or 11 with findings.
[[nodiscard]] int check_sample_entry(const MediaContext& context, const TrackRecord& track, const std::string& path);
