#pragma once

#include <cstdint>
#include <span>

namespace quorlin {

// CRC-16 of AC-3 and E-AC-3 syncframes (ETSI TS 102 366, 6.10.1): generator x^16 + x^15 + x^2 + 1, most significant bit
// first, nothing inverted. `crc` is the register before the first word (0 at the start); returns the register after
// the last. A range that ends with its check word leaves 0.
//
// All forms give the same value; crc16 takes the fastest one that the processor has.
uint16_t crc16(uint16_t crc, std::span<const uint16_t> words);

// One table look-up per byte: the plain form that every machine runs.
uint16_t crc16_table(uint16_t crc, std::span<const uint16_t> words);

// Slicing: sixteen look-ups per eight words, which do not wait for one another.
uint16_t crc16_slicing(uint16_t crc, std::span<const uint16_t> words);

// Folding by carry-less multiplication, where crc16_clmul_available(); elsewhere the same as crc16_slicing.
uint16_t crc16_clmul(uint16_t crc, std::span<const uint16_t> words);
bool crc16_clmul_available();

}  // namespace quorlin
