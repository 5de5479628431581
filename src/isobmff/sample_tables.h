#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace quorlin {

// Consecutive samples of one size: stsz entries, a constant sample_size, or the samples of a trun.
struct SizeRun {
    uint32_t count = 0;
    uint32_t size = 0;
};

struct SampleToChunk {
    uint32_t first_chunk = 0;  // from 1
    uint32_t samples_per_chunk = 0;
    uint32_t sample_description_index = 0;
};

struct TimeToSample {
    uint32_t sample_count = 0;
    uint32_t sample_delta = 0;
};

// The decoding time of a track's sample, in the media timescale, by a tfdt box; unknown where a fragment has none.
struct DecodeTime {
    uint64_t sample = 0;  // from 0
    std::optional<uint64_t> time;
};

struct CompositionOffset {
    uint32_t sample_count = 0;
    uint32_t sample_offset = 0;  // signed in version 1
};

// ISO/IEC 14496-12, 8.6 and 8.7: the samples of a track in one segment. Movie fragments are folded into the same
// tables. Values are in host order.
struct SampleTables {
    std::vector<SizeRun> sizes;
    uint64_t sample_count = 0;
    std::vector<uint64_t> chunk_offsets;  // absolute in the file
    std::vector<SampleToChunk> sample_to_chunk;
    std::vector<TimeToSample> time_to_sample;
    std::vector<DecodeTime> decode_times;
    std::vector<CompositionOffset> composition_offsets;
    std::vector<uint32_t> sync_samples;  // numbers from 1
    uint32_t media_duration = 0;
};

// Empties all tables, keeping their memory for the next segment.
void clear_sample_tables(SampleTables& tables);

// Appends `count` samples of `size` bytes.
void append_samples(SampleTables& tables, uint32_t count, uint32_t size);

}  // namespace quorlin
