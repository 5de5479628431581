#include "isobmff/sample_tables.h"

#include <limits>

namespace quorlin {

void clear_sample_tables(SampleTables& tables) {
    tables.sizes.clear();
    tables.sample_count = 0;
    tables.chunk_offsets.clear();
    tables.sample_to_chunk.clear();
    tables.time_to_sample.clear();
    tables.decode_times.clear();
    tables.composition_offsets.clear();
    tables.sync_samples.clear();
    tables.media_duration = 0;
}

void append_samples(SampleTables& tables, uint32_t count, uint32_t size) {
    if (count == 0) return;
    tables.sample_count += count;
    if (!tables.sizes.empty()) {
        SizeRun& last = tables.sizes.back();
        if (last.size == size && count <= std::numeric_limits<uint32_t>::max() - last.count) {
            last.count += count;
            return;
        }
    }
    tables.sizes.push_back({count, size});
}

}  // namespace quorlin
