#pragma once

#include <cstdint>
#include <span>

#include "ztpinfo/bsi.h"

// The E-AC-3 side of the unpackers, and what a frame of either format begins with.

// Codes of the fatal errors in a frame.
enum FrameError : int {
    FRAME_SHORT = 1,
    FRAME_BAD_SYNC = 1537,
    FRAME_BAD_SAMPLE_RATE = 1538,
    FRAME_BAD_SIZE = 1539,
    FRAME_BAD_BSID = 1540,
    FRAME_HALF_RATE = 1541,
};

constexpr uint16_t FRAME_SYNCWORD = 0x0B77;

// Words of a frame that unpack_frame_words looks at.
constexpr uint32_t FRAME_HEADER_WORDS = 3;

// Longest frame: frmsiz is an 11-bit field.
constexpr uint32_t MAX_FRAME_WORDS = 2048;

// Learns the frame length in words from the first FRAME_HEADER_WORDS words of an AC-3 or E-AC-3 frame. Returns 0, or
// the code of the fatal error that was reported. The length can be anything from 1 to MAX_FRAME_WORDS.
[[nodiscard]] int unpack_frame_words(std::span<const uint16_t> words, uint32_t& frame_words);

// Unpacks the BSI of an E-AC-3 frame (bsid 11 to 16). Returns 0, or the code of the fatal error that was reported.
[[nodiscard]] int unpack_eac3_bsi(std::span<const uint16_t> words, Eac3Bsi& bsi);

// Audio blocks of a frame by its numblkscod (ETSI TS 102 366, E.1.3.1).
uint16_t eac3_blocks(uint32_t numblkscod);
