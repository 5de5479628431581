#pragma once

#include <cstdint>

#include "isobmff/track_record.h"

namespace quorlin {

// Where a track's samples lie in its file and in time, for places and facts. Times are decoding times on the media's
// timeline (see SampleClock). Composition offsets and edit lists are left out.

// Makes the track's next sample, at `offset` of the file, the current place. To be called before anything is found in
// the sample, or when it cannot be read.
void place_next_sample(const TrackRecord& track, uint64_t offset);

// The same, and counts the sample, of `size` bytes, as read.
void enter_sample(TrackRecord& track, uint64_t offset, uint32_t size);

}  // namespace quorlin
