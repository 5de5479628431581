#include "isobmff/sample_times.h"

#include <limits>

#include "bits/place.h"
#include "bits/recorder.h"
#include "bits/stream_clock.h"
#include "isobmff/sample_clock.h"

namespace quorlin {

namespace {

// Of no use beyond 64 bits, or without a timescale.
int64_t to_90khz(const std::optional<uint64_t>& time, uint32_t timescale) {
    if (!time || timescale == 0) return NO_TIME;
    const uint64_t seconds = *time / timescale;
    if (seconds >= static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) / TICKS_PER_SECOND) return NO_TIME;
    return static_cast<int64_t>(seconds * TICKS_PER_SECOND + *time % timescale * TICKS_PER_SECOND / timescale);
}

}  // namespace

void place_next_sample(const TrackRecord& track, uint64_t offset) {
    current_place.offset = static_cast<int64_t>(offset);
    if (current_recorder() == nullptr) return;
    SampleClock clock = track.seen.clock;
    settle_clock(track.samples, clock);
    current_place.time = to_90khz(clock.time, track.media_timescale);
}

void enter_sample(TrackRecord& track, uint64_t offset, uint32_t size) {
    SeenSamples& seen = track.seen;
    current_place.offset = static_cast<int64_t>(offset);
    if (seen.first_offset == NO_OFFSET) seen.first_offset = current_place.offset;
    if (current_recorder() == nullptr) return;
    settle_clock(track.samples, seen.clock);
    seen.last_time = to_90khz(seen.clock.time, track.media_timescale);
    current_place.time = seen.last_time;
    if (seen.count++ == 0) seen.first_time = seen.last_time;
    seen.bytes += size;
    seen.end_time =
        advance_clock(track.samples, seen.clock) ? to_90khz(seen.clock.time, track.media_timescale) : NO_TIME;
}

}  // namespace quorlin
