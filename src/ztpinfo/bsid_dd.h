#pragma once

#include <cstdint>
#include <span>

#include "ztpinfo/bsi.h"

namespace quorlin {

// The AC-3 side of the unpackers.

// Frame length in 16-bit words (ETSI TS 102 366, table 4.13); 0 when `fscod` is 3 or `frmsizecod` is above 37.
uint32_t ac3_frame_words(uint32_t fscod, uint32_t frmsizecod);

// Unpacks the BSI of an AC-3 frame (bsid 0 to 8). Returns 0, or the code of the fatal error that was reported.
[[nodiscard]] int unpack_ac3_bsi(std::span<const uint16_t> words, Ac3Bsi& bsi);

}  // namespace quorlin
