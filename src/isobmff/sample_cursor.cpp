#include "isobmff/sample_cursor.h"

#include <vector>

namespace quorlin {

uint32_t samples_in_chunk(const SampleTables& tables, SampleCursor& cursor) {
    const std::vector<SampleToChunk>& rows = tables.sample_to_chunk;
    const size_t number = cursor.chunk + 1;
    while (cursor.row + 1 < rows.size() && rows[cursor.row + 1].first_chunk <= number) ++cursor.row;
    if (cursor.row >= rows.size() || rows[cursor.row].first_chunk > number) return 0;
    return rows[cursor.row].samples_per_chunk;
}

bool sample_size(const SampleTables& tables, const SampleCursor& cursor, uint32_t& size) {
    if (cursor.run >= tables.sizes.size()) return false;
    size = tables.sizes[cursor.run].size;
    return true;
}

void next_sample(const SampleTables& tables, SampleCursor& cursor) {
    if (++cursor.used < tables.sizes[cursor.run].count) return;
    ++cursor.run;
    cursor.used = 0;
}

}  // namespace quorlin
