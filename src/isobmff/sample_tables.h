#pragma once

#include <cstddef>
#include <cstdint>

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

// Handlers (see BoxHandler) of the sample tables of a track, ISO/IEC 14496-12, 8.6 and 8.7. A table replaces the one
// that the track had.

int read_stsz(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_stts(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_stss(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_ctts(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_stsc(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_stco(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_co64(MediaContext& context, FileReader& reader, int64_t payload_size);

// Empties all tables, keeping their memory for the next segment.
void clear_sample_tables(SampleTables& tables);

// Appends `count` samples of `size` bytes.
void append_samples(SampleTables& tables, uint32_t count, uint32_t size);

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
