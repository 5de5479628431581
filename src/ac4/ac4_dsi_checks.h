#pragma once

#include <cstdint>
#include <span>

#include "ac4/ac4_dsi.h"

namespace quorlin {

// What a track says of itself outside its dac4 box.
struct Ac4TrackClaims {
    uint32_t media_timescale = 0;  // of the media header box
    uint32_t sample_size = 0;      // of the sample entry, bits
    uint32_t sample_rate = 0;      // of the sample entry, the integer part
    uint32_t channel_count = 0;    // of the sample entry
};

// Parses a dac4 payload and prints what is wrong with it and where the track contradicts it; none of it fails the
// verdict. Always 0.
int parse_dac4(std::span<const uint8_t> payload, const Ac4TrackClaims& claims, Ac4Dsi& dsi);

}  // namespace quorlin
