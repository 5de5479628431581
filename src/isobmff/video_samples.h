#pragma once

#include "isobmff/adjacent_samples.h"
#include "isobmff/read_limits.h"
#include "isobmff/track_record.h"

namespace quorlin {

// Writes samples as a byte stream: start codes in place of the length fields (ISO/IEC 14496-15 to ISO/IEC 14496-10 and
// 23008-2, annex B), the parameter sets of the configuration before the first unit and before IDR units. The bytes are
// overwritten where that saves a copy. Remembers which of Lumora's layers are met. Returns 0, or MP4_FINDING. Stops
// when the limit of work is reached.
[[nodiscard]] int write_video_samples(ReadLimits& limits, TrackRecord& track, const AdjacentSamples& samples);

}  // namespace quorlin
