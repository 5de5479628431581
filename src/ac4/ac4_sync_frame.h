#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorlin {

// ETSI TS 103 190-2, annex C: the words that come before a raw AC-4 frame in an elementary stream.
constexpr uint16_t AC4_SYNC_WORD = 0xAC40;
constexpr uint16_t AC4_SYNC_WORD_WITH_CRC = 0xAC41;  // a CRC word follows the frame
constexpr size_t AC4_SYNC_WORD_BYTES = 2;
constexpr size_t AC4_CRC_WORD_BYTES = 2;
constexpr uint32_t AC4_SHORT_SIZE_BYTES = 2;  // of frame_size
constexpr uint32_t AC4_LONG_SIZE_BYTES = 3;   // of frame_size after an escape

// Reads frame_size, in bytes, after a sync word: 16 bits, or 24 after an escape. `position` moves past it. Bytes
// that are not there read as zero.
uint32_t read_ac4_frame_size(std::span<const uint8_t> bytes, size_t& position);

}  // namespace quorlin
