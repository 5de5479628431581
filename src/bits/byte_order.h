#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorlin {

// Big-endian value of `count` bytes (up to 8) at `offset`; bytes that are not there read as zero.
inline uint64_t load_be(std::span<const uint8_t> bytes, size_t offset, size_t count) {
    uint64_t value = 0;
    for (size_t i = 0; i < count; ++i) {
        const uint8_t byte = offset < bytes.size() && i < bytes.size() - offset ? bytes[offset + i] : uint8_t{0};
        value = value << 8 | byte;
    }
    return value;
}

inline uint8_t load_u8(std::span<const uint8_t> bytes, size_t offset) {
    return offset < bytes.size() ? bytes[offset] : uint8_t{0};
}

inline uint16_t load_be16(std::span<const uint8_t> bytes, size_t offset) {
    return static_cast<uint16_t>(load_be(bytes, offset, 2));
}

inline uint32_t load_be32(std::span<const uint8_t> bytes, size_t offset) {
    return static_cast<uint32_t>(load_be(bytes, offset, 4));
}

inline uint64_t load_be64(std::span<const uint8_t> bytes, size_t offset) {
    return load_be(bytes, offset, 8);
}

}  // namespace quorlin
