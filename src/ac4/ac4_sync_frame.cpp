#include "ac4/ac4_sync_frame.h"

#include "bits/byte_order.h"

namespace quorlin {

uint32_t read_ac4_frame_size(std::span<const uint8_t> bytes, size_t& position) {
    constexpr uint32_t ESCAPE = 0xFFFF;
    const uint32_t frame_size = load_be16(bytes, position);
    position += AC4_SHORT_SIZE_BYTES;
    if (frame_size != ESCAPE) return frame_size;
    position += AC4_LONG_SIZE_BYTES;
    return static_cast<uint32_t>(load_be(bytes, position - AC4_LONG_SIZE_BYTES, AC4_LONG_SIZE_BYTES));
}

}  // namespace quorlin
