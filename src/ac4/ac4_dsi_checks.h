#pragma once

#include <cstdint>
#include <span>

#include "ac4/ac4_dsi.h"

namespace quorlin {

// Parses a dac4 payload and prints what is wrong with it, with the media timescale of the track and with the sample
// entry's samplesize, samplerate (integer part) and channelcount; none of it fails the verdict. Always 0.
int parse_dac4(std::span<const uint8_t> payload, uint32_t media_timescale, uint32_t sample_size, uint32_t sample_rate,
               uint32_t channel_count, Ac4Dsi& dsi);

}  // namespace quorlin
