#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorlin {

// An attribute or tag value as the playlist writes it; absent when the playlist does not carry it.
using Text = std::optional<std::string>;

// RFC 8216, 4.3.4.1: one EXT-X-MEDIA rendition.
struct MediaEntry {
    Text type;
    Text group_id;
    Text name;
    Text default_;
    Text autoselect;
    Text language;
    Text assoc_language;
    Text channels;
    Text uri;  // resolved
    Text forced;
    Text instream_id;
    Text characteristics;
    Text ztp_program[4];    // ZTP_PROGRAM0 to ZTP_PROGRAM3
    bool selected = false;  // set by the master playlist checks: the rendition is to be validated
    uint32_t line = 0;      // of its tag
};

// RFC 8216, 4.3.4.2: one EXT-X-STREAM-INF or EXT-X-I-FRAME-STREAM-INF variant.
struct VariantStream {
    Text bandwidth;
    Text codecs;
    Text resolution;
    Text frame_rate;
    Text average_bandwidth;
    Text hdcp_level;
    Text audio;
    Text video;
    Text subtitle;
    Text closed_captions;
    Text uri;               // resolved
    bool selected = false;  // set by the master playlist checks: its media playlist is to be validated
    uint32_t line = 0;      // of its tag
};

// By the tag that made the entry.
enum class SegmentKind : uint32_t {
    NONE = 0,           // counted, but its tag was swallowed as another entry's address
    MEDIA = 1,          // EXTINF
    BYTE_RANGE = 2,     // EXTINF with EXT-X-BYTERANGE
    INIT = 3,           // EXT-X-MAP
    DISCONTINUITY = 4,  // EXT-X-DISCONTINUITY
    END_LIST = 5,       // EXT-X-ENDLIST
};

// The two texts of a byte range, split at its first "@".
struct ByteRange {
    std::string length;
    Text offset;
};

struct SegmentEntry {
    Text duration;
    Text path;  // the URI, joined to the directory of the playlist
    std::optional<ByteRange> byte_range;
    SegmentKind kind = SegmentKind::NONE;
    uint32_t line = 0;                    // of the address, else of the tag; 0 when the tag was swallowed
    uint32_t discontinuity_sequence = 0;  // RFC 8216, 6.2.1
    uint32_t keys_before = 0;             // how many of the playlist's EXT-X-KEY tags come before it
};

// The parts of the text that were not read as they are meant: the line where each was met last, 0 for nowhere.
struct PlaylistLosses {
    bool cut_short = false;         // a read failed
    uint32_t long_line = 0;         // the rest of a line was read as a line of its own
    uint32_t early_byte_range = 0;  // EXT-X-BYTERANGE before EXTINF
    uint32_t low_latency = 0;       // EXT-X-PART, EXT-X-PRELOAD-HINT, EXT-X-SKIP
};

struct Playlist {
    bool is_master = false;
    Text version;
    std::vector<MediaEntry> media;
    Text target_duration;
    Text media_sequence;
    std::vector<VariantStream> variants;
    Text playlist_type;
    bool independent_segments = false;
    bool iframes_only = false;
    std::vector<VariantStream> iframe_variants;
    std::vector<SegmentEntry> entries;
    std::vector<std::string> key_methods;  // METHOD of each EXT-X-KEY
    PlaylistLosses losses;
};

}  // namespace quorlin
