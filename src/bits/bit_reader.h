#pragma once

#include <cstdint>
#include <span>

namespace quorlin {

// Reads `n` bits most significant bit first at `position` (in bits from the start of `bytes`) and advances the position
// by `n`. A width above 32 returns the last 32 bits read: callers skip runs of bytes that way. Bits past the end are
// zero and the position still advances (it saturates), so it is itself the sticky error: see bits_overrun.
uint32_t read_bits(uint32_t& position, std::span<const uint8_t> bytes, uint32_t n);

// ETSI TS 103 190-1, 4.2.2: the escape-coded integer of the AC-4 syntax in groups of `n` bits, each followed by a
// continuation flag. Ends at the end of the data whatever the flags say.
int32_t variable_bits(uint32_t n, uint32_t& position, std::span<const uint8_t> bytes);

// True when reads have gone past the last bit of `bytes`.
bool bits_overrun(uint32_t position, std::span<const uint8_t> bytes);

// Bytes with their read position, for syntax elements of many fields.
struct BitReader {
    std::span<const uint8_t> bytes;
    uint32_t position = 0;  // bits from the start
};

// The next `n` bits, up to 32.
inline uint32_t read_u32(BitReader& reader, uint32_t n) {
    return read_bits(reader.position, reader.bytes, n);
}

// `n` up to 8.
inline uint8_t read_u8(BitReader& reader, uint32_t n) {
    return static_cast<uint8_t>(read_u32(reader, n));
}

inline uint16_t read_u16(BitReader& reader) {
    return static_cast<uint16_t>(read_u32(reader, 16));
}

inline bool read_flag(BitReader& reader) {
    return read_u32(reader, 1) != 0;
}

// Saturates, so that a long skip cannot lead back into the data.
void skip_bits(BitReader& reader, uint64_t n);

inline bool overrun(const BitReader& reader) {
    return bits_overrun(reader.position, reader.bytes);
}

}  // namespace quorlin
