#pragma once

#include <cstddef>
#include <cstdint>

#include "isobmff/sample_tables.h"

namespace quorlin {

// Steps through the chunks of a track and through the sizes of its samples.
struct SampleCursor {
    size_t chunk = 0;   // index of the current chunk
    size_t row = 0;     // sample-to-chunk entry that may hold for it
    size_t run = 0;     // size run of the next sample
    uint32_t used = 0;  // samples of that run that are done
};

// Samples of the cursor's chunk by the sample-to-chunk table; 0 when no entry holds for it.
uint32_t samples_in_chunk(const SampleTables& tables, SampleCursor& cursor);

// The size of the cursor's sample; false when the track has no more.
[[nodiscard]] bool sample_size(const SampleTables& tables, const SampleCursor& cursor, uint32_t& size);

// Moves to the next sample.
void next_sample(const SampleTables& tables, SampleCursor& cursor);

}  // namespace quorlin
