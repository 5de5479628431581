#pragma once

#include <string>

#include "isobmff/track_record.h"
#include "playlist/playlist_attributes.h"

namespace quorlin {

// Compares the sample description of a track with the CODECS and CHANNELS of the playlist; nothing is compared without
// CODECS. `path` is the segment, for standard error. Returns 0, or MP4_FINDING.
[[nodiscard]] int check_sample_entry(const TrackRecord& track, const PlaylistAttributes& attrs,
                                     const std::string& path);

}  // namespace quorlin
