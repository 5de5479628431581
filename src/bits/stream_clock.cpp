#include "bits/stream_clock.h"

#include "bits/place.h"

namespace quorlin {

namespace {

int64_t last_unrolled = NO_TIME;

}  // namespace

int64_t advance_stream_clock(int64_t timestamp) {
    if (last_unrolled == NO_TIME) return last_unrolled = timestamp;
    // The difference modulo the wrap, as a signed number of 33 bits.
    const uint64_t distance = (static_cast<uint64_t>(timestamp) - static_cast<uint64_t>(last_unrolled)) << 31;
    last_unrolled += static_cast<int64_t>(distance) >> 31;
    return last_unrolled;
}

void reset_stream_clock() {
    last_unrolled = NO_TIME;
}

}  // namespace quorlin
