#pragma once

#include <cstdint>
#include <span>
#include <string>

enum class SegmentFormat {
    UNKNOWN,
    PLAYLIST,
    TRANSPORT_STREAM,
    ISO_MEDIA,
    PACKED_AUDIO,  // after an ID3 tag
};

// The first bytes of a file decide on its container; more are looked at when they do not.
constexpr uint32_t FORMAT_DECIDING_SIZE = 8;
constexpr uint32_t FORMAT_LOOK_SIZE = 1024;

// Recognises the container of the segment `path` from the first bytes of its file (not of its byte range). What is no
// segment has its reason on standard error.
SegmentFormat detect_segment_format(std::span<const uint8_t> start, const std::string& path);
