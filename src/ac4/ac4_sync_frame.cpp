#include "ac4/ac4_sync_frame.h"

#include "bits/byte_order.h"

namespace quorlin {

uint32_t read_ac4_frame_size(std::span<const uint8_t> bytes, size_t& position) {
    constexpr uint32_t ESCAPE = 0xFFFF;
    const uint32_t frame_size = load_be16(bytes, position);
    position += 2;
    if (frame_size != ESCAPE) return frame_size;
    position += 3;
    return static_cast<uint32_t>(load_be(bytes, position - 3, 3));
}

}  // namespace quorlin
