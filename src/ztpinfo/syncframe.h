#pragma once

#include <cstdint>
#include <span>

namespace quorlin {

// How AC-3 and E-AC-3 syncframes begin: ETSI TS 102 366, 4.3.1 and E.1.2.1.

constexpr uint16_t FRAME_SYNCWORD = 0x0B77;

constexpr bool is_ac3_bsid(uint32_t bsid) {
    return bsid <= 8;
}

constexpr bool is_eac3_bsid(uint32_t bsid) {
    return bsid >= 11 && bsid <= 16;
}

// bsid of a frame of either kind, from its first three words.
constexpr uint32_t frame_bsid(std::span<const uint16_t> words) {
    return words[2] >> 3 & 31u;
}

// The second word of an E-AC-3 frame.
struct Eac3FrameStart {
    uint16_t strmtyp = 0;
    uint16_t substreamid = 0;
    uint16_t frmsiz = 0;
};

constexpr Eac3FrameStart eac3_frame_start(uint16_t word) {
    return {static_cast<uint16_t>(word >> 14), static_cast<uint16_t>(word >> 11 & 7),
            static_cast<uint16_t>(word & 0x7FF)};
}

// Length of an E-AC-3 frame in words.
constexpr uint32_t eac3_frame_words(uint32_t frmsiz) {
    return frmsiz + 1;
}

}  // namespace quorlin
