#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "isobmff/sample_tables.h"

namespace quorlin {

// Steps through the decoding times of a track's samples: that of the tfdt box before the sample and the durations since
// (ISO/IEC 14496-12, 8.8.12 and 8.6.1.2).
struct SampleClock {
    uint64_t sample = 0;     // the next one
    size_t decode_time = 0;  // the entry that may hold for it
    size_t row = 0;          // time-to-sample entry of it
    uint32_t used = 0;       // samples of that entry that are done
    std::optional<uint64_t> time = 0;
};

// Brings the clock to its next sample: `time` is that of the sample then.
void settle_clock(const SampleTables& tables, SampleClock& clock);

// Moves the settled clock past its sample. False when the sample has no duration.
[[nodiscard]] bool advance_clock(const SampleTables& tables, SampleClock& clock);

}  // namespace quorlin
