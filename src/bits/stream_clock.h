#pragma once

#include <cstdint>

namespace quorlin {

// The clock of time stamps, and of the times of places and facts whatever the container: 90 kHz.
constexpr int64_t TICKS_PER_SECOND = 90000;

// ISO/IEC 13818-1, 2.4.3.6: a time stamp has 33 bits, so it starts again at 0 after 26.5 hours. This clock adds the
// wraps: the times of one playlist or series go on without a jump. They serve places and facts only; the checks compare
// the time stamps that the stream carries.

constexpr int64_t CLOCK_WRAP = int64_t{1} << 33;

// Moves the clock to this time stamp, of 33 bits, and returns it with the wraps added that bring it nearest to the last
// one.
int64_t advance_stream_clock(int64_t timestamp);

// Forgets what came before: at the start of a playlist or series, and at a discontinuity.
void reset_stream_clock();

}  // namespace quorlin
