#pragma once

#include <cstdint>
#include <span>

// Reads `n` bits most significant bit first at `position` (in bits from the start of `bytes`) and advances the position
// by `n`. A width above 32 returns the last 32 bits read: callers skip runs of bytes that way. Bits past the end are
// zero and the position still advances (it saturates), so it is itself the sticky error: see bits_overrun.
uint32_t read_bits(uint32_t& position, std::span<const uint8_t> bytes, uint32_t n);

// ETSI TS 103 190-1, 4.2.2: the escape-coded integer of the AC-4 syntax in groups of `n` bits, each followed by a
// continuation flag. Ends at the end of the data whatever the flags say.
int32_t variable_bits(uint32_t n, uint32_t& position, std::span<const uint8_t> bytes);

// True when reads have gone past the last bit of `bytes`.
bool bits_overrun(uint32_t position, std::span<const uint8_t> bytes);
