#include "isobmff/sample_clock.h"

#include <limits>

namespace quorlin {

void settle_clock(const SampleTables& tables, SampleClock& clock) {
    const auto& times = tables.decode_times;
    while (clock.decode_time < times.size() && times[clock.decode_time].sample <= clock.sample)
        clock.time = times[clock.decode_time++].time;
    const auto& rows = tables.time_to_sample;
    while (clock.row < rows.size() && clock.used >= rows[clock.row].sample_count) {
        ++clock.row;
        clock.used = 0;
    }
}

bool advance_clock(const SampleTables& tables, SampleClock& clock) {
    ++clock.sample;
    if (clock.row >= tables.time_to_sample.size()) return false;
    ++clock.used;
    const uint64_t delta = tables.time_to_sample[clock.row].sample_delta;
    if (clock.time && *clock.time > std::numeric_limits<uint64_t>::max() - delta) clock.time.reset();
    if (clock.time) *clock.time += delta;
    return true;
}

}  // namespace quorlin
