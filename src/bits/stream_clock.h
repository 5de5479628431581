#pragma once

#include <cstdint>

namespace quorlin {

// ISO/IEC 13818-1, 2.4.3.6: time stamps have 33 bits and wrap after 26.5 hours. Counted on over the wraps here, for the
// places and facts of one playlist or series; the checks compare what the stream carries.

constexpr int64_t CLOCK_WRAP = int64_t{1} << 33;

// Moves the clock to this time stamp, of 33 bits, and returns it with the wraps added that bring it nearest to the last
// one.
int64_t advance_stream_clock(int64_t timestamp);

// Forgets what came before: at the start of a playlist or series, and at a discontinuity.
void reset_stream_clock();

}  // namespace quorlin
