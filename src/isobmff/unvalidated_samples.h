#pragma once

#include <string>

#include "isobmff/track_record.h"

namespace quorlin {

// Reports, once for a track, the samples that no check looks at: those that are encrypted, of an entry that no check
// knows, or without the box that describes them. `path` is the segment.
void report_unvalidated_samples(TrackRecord& track, const std::string& path);

}  // namespace quorlin
