#pragma once

#include "isobmff/media_context.h"

// Writes samples as a byte stream: start codes in place of the length fields (ISO/IEC 14496-15 to ISO/IEC 14496-10 and
// 23008-2, annex B), the parameter sets of the configuration before the first unit and before IDR units. The bytes are
// overwritten where that saves a copy. Returns 0, or 11 with findings. Stops when the limit of work is reached.
[[nodiscard]] int write_video_samples(MediaContext& context, TrackRecord& track, const AdjacentSamples& samples);
