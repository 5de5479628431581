#pragma once

#include <cstdint>
#include <span>

#include "isobmff/media_context.h"

// Writes samples that lie one behind the other in `bytes` (sizes in `sample_sizes`) as a byte stream: start codes in
// place of the length fields (ISO/IEC 14496-15 to ISO/IEC 14496-10 and 23008-2, annex B), the parameter sets of the
// configuration before the first unit and before IDR units. `bytes` is overwritten where that saves a copy. Returns 0,
// or 11 with findings. Stops when the context's work limit is reached.
[[nodiscard]] int write_video_samples(MediaContext& context, TrackRecord& track, std::span<uint8_t> bytes,
                                      std::span<const uint32_t> sample_sizes);
