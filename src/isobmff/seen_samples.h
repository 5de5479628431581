#pragma once

#include <cstdint>

#include "bits/place.h"
#include "isobmff/sample_clock.h"

namespace quorlin {

// What was met in a track's samples of one segment. What comes after `clock` is for the facts of the segment, and is
// kept only while a recorder is set.
struct SeenSamples {
    bool el = false;
    bool rpu = false;
    uint32_t cut = 0;  // with a rest too short for a NAL unit's length field
    int64_t first_offset = NO_OFFSET;
    SampleClock clock;
    uint64_t count = 0;
    uint64_t bytes = 0;
    int64_t first_time = NO_TIME;  // 90 kHz
    int64_t last_time = NO_TIME;
    int64_t end_time = NO_TIME;
    uint32_t channels = 0;  // of analysed audio
    uint32_t data_rate_kbps = 0;
};

}  // namespace quorlin
