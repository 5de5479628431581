#pragma once

#include <cstdint>
#include <span>

#include "ztpinfo/bsi.h"

namespace quorlin {

// The E-AC-3 side of the unpackers, and what a frame of either format begins with.

// Learns the frame length in words from the first FRAME_HEADER_WORDS words of an AC-3 or E-AC-3 frame. Returns 0, or
// the code of the fatal error that was reported. The length can be anything from 1 to MAX_FRAME_WORDS.
[[nodiscard]] int unpack_frame_words(std::span<const uint16_t> words, uint32_t& frame_words);

// Unpacks the BSI of an E-AC-3 frame (bsid 11 to 16). Returns 0, or the code of the fatal error that was reported.
[[nodiscard]] int unpack_eac3_bsi(std::span<const uint16_t> words, Eac3Bsi& bsi);

// Audio blocks of a frame by its numblkscod (ETSI TS 102 366, E.1.3.1).
uint16_t eac3_blocks(uint32_t numblkscod);

}  // namespace quorlin
