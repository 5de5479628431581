#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace quorlin {

enum class SegmentFormat {
    UNKNOWN,
    PLAYLIST,
    TRANSPORT_STREAM,
    ISO_MEDIA,
    PACKED_AUDIO,  // after an ID3 tag
};

// The first bytes of a file decide on its container; more are looked at to say what else it may be.
constexpr uint32_t FORMAT_DECIDING_SIZE = 8;
constexpr uint32_t FORMAT_LOOK_SIZE = 1024;

// Recognises the container of a segment from the first bytes of its file (not of its byte range).
SegmentFormat detect_segment_format(std::span<const uint8_t> start);

// Says why the container of the segment `path` is not recognised: what it looks like, or that it is encrypted by the
// METHOD of the EXT-X-KEY before it ("NONE" if there is none).
void report_unknown_format(std::span<const uint8_t> start, const std::string& path, const std::string& key_method);

}  // namespace quorlin
