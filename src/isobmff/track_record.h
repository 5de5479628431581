#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "isobmff/checked_box.h"
#include "isobmff/ec3_configuration.h"
#include "isobmff/fragment_state.h"
#include "isobmff/lumora_configuration.h"
#include "isobmff/sample_tables.h"
#include "isobmff/seen_samples.h"
#include "isobmff/track_kinds.h"
#include "isobmff/track_output.h"
#include "isobmff/video_configuration.h"

namespace quorlin {

// What a trak box says, and what the segments of its init section add. Multi-byte values are in host order.
struct TrackRecord {
    HandlerKind handler_kind = HandlerKind::OTHER;
    CodecKind codec_kind = CodecKind::UNKNOWN;
    HdrVideoKind hdr_video_kind = HdrVideoKind::NONE;
    uint32_t track_ID = 0;
    bool encrypted = false;
    uint64_t made_in_walk = 0;

    // Sample entry.
    std::array<char, 5> format{};  // its four-character code; of a protected one that of the clear entry
    std::array<char, 5> scheme{};  // of its protection
    CheckedBox entry_box;          // or the trak
    uint32_t channel_count = 0;    // of the entry; dec3 replaces it by its own
    uint32_t samplerate = 0;       // integer part
    uint32_t samplesize = 0;
    uint32_t width = 0;
    uint32_t height = 0;

    // Codec configuration.
    std::optional<std::vector<uint8_t>> config;  // payload of dac3, dac4, dec3, dmlp, d263 or esds
    CheckedBox config_box;                       // that box
    Ec3Configuration ec3;
    VideoConfiguration video;
    std::optional<VideoConfiguration> enhancement_layer;  // avcE or hvcE; its parameter sets are never written
    std::optional<LumoraConfiguration> lumora;

    // Timing.
    uint32_t media_timescale = 0;
    int64_t presentation_offset = 0;               // media timescale
    std::optional<uint64_t> empty_entry_duration;  // movie timescale
    std::array<char, 4> language = {'u', 'n', 'd', 0};

    FragmentState fragment;  // from one fragment to the next, also of the next segment

    // Of the current segment.
    SampleTables samples;
    SeenSamples seen;

    TrackOutput output;  // of all segments, also when a later segment gives the track again
};

// Whether the track's samples are H.264 or H.265: NAL units after length fields.
inline bool is_avc(const TrackRecord& track) {
    return track.codec_kind == CodecKind::AVC1 || track.codec_kind == CodecKind::AVC3;
}

inline bool is_hevc(const TrackRecord& track) {
    return track.codec_kind == CodecKind::HEV1 || track.codec_kind == CodecKind::HVC1;
}

}  // namespace quorlin
