#pragma once

#include <string>

#include "isobmff/track_record.h"

namespace quorlin {

// Both do nothing for tracks that are not H.264 or H.265 with a Lumora configuration, and return 0, or
// MP4_FINDING.

// The configuration against the playlist's CODECS, unless they are empty, and in itself. `path` is the segment, for
// standard error.
[[nodiscard]] int check_lumora_configuration(const TrackRecord& track, const std::string& codecs,
                                             const std::string& path);

// Which layers are present, after the segment's samples.
[[nodiscard]] int check_lumora_layers(const TrackRecord& track);

}  // namespace quorlin
