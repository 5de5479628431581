#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "support/bit_writer.h"

namespace quorlin {

// The ID3 tag before packed audio; what a test sets wrong stands as it is.
struct Id3Tag {
    uint64_t timestamp = 1;
    std::string frame_id = "PRIV";
    std::string owner = std::string("com.apple.streaming.transportStreamTimestamp") + '\0';
    uint32_t padding = 0;               // bytes after the timestamp, inside the tag
    std::optional<uint32_t> size = {};  // else what the body takes
};

// Tag and payload as a packed audio segment.
inline std::vector<uint8_t> packed_segment(const Id3Tag& tag, std::span<const uint8_t> payload) {
    constexpr uint32_t FRAME_HEADER_AND_TIMESTAMP = 18;
    const uint32_t body_size = FRAME_HEADER_AND_TIMESTAMP + static_cast<uint32_t>(tag.owner.size()) + tag.padding;
    BitWriter segment;
    segment.put_text("ID3");
    segment.put(24, 0x040000);  // version, flags
    segment.put(32, tag.size.value_or(body_size));
    segment.put_text(tag.frame_id);
    segment.put(48, 0);  // frame size and flags
    segment.put_text(tag.owner);
    segment.put(64, tag.timestamp);
    segment.put(tag.padding * 8, 0);
    segment.put_bytes(payload);
    return segment.bytes;
}

}  // namespace quorlin
