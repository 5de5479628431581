#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bits/place.h"

namespace quorlin {

// What the readers know of the content besides findings, for a recorder: nothing is parsed for it. Times are 90 kHz
// ticks as in Place.

// One elementary stream of one segment.
struct StreamFacts {
    int32_t id = NO_STREAM;        // PID or track_ID; packed audio has none
    const char* codec = "";        // as in a CODECS attribute, without profile: "avc1", "mp4a", "ec-3"
    int64_t first_time = NO_TIME;  // of the first PES packet, sample or frame
    int64_t last_time = NO_TIME;   // of the last one in presentation order
    int64_t end_time = NO_TIME;    // where the last one ends, if its duration is known
    uint64_t units = 0;            // PES packets, samples or frames
    uint64_t payload_bytes = 0;    // extracted, whether or not they are written
    uint32_t channels = 0;         // of analysed audio, LFE included; 0 when unknown
    uint32_t data_rate_kbps = 0;   // of analysed audio; 0 when unknown
};

enum class Container { UNKNOWN, TRANSPORT_STREAM, ISO_MEDIA, PACKED_AUDIO };

// One entry of a playlist, one file of a series, or a single transport stream.
struct SegmentFacts {
    Container container = Container::UNKNOWN;
    bool init = false;  // an EXT-X-MAP section
    const char* path = "";
    const char* uri = "";                 // as the playlist has it; empty without a playlist
    const char* duration = nullptr;       // the text of EXTINF up to its comma
    std::optional<uint64_t> range_start;  // byte range
    std::optional<uint64_t> range_length;
    uint64_t bytes_read = 0;  // size of the file, or of its byte range as far as the file goes; 0 when it is not open
    uint32_t discontinuity_sequence = 0;  // RFC 8216, 6.2.1
    std::vector<StreamFacts> streams;
};

// A playlist that was read. Of a master playlist only `path` and `master` are set. Null for what is absent.
struct PlaylistFacts {
    const char* path = "";
    bool master = false;
    // Of a media playlist, what the master playlist says of it.
    const char* group_id = nullptr;
    const char* name = nullptr;
    const char* language = nullptr;
    const char* codecs = nullptr;
    const char* bandwidth = nullptr;
    const char* average_bandwidth = nullptr;
    const char* resolution = nullptr;
    // Of a media playlist, what it says itself.
    const char* target_duration = nullptr;
    const char* media_sequence = nullptr;
    const char* playlist_type = nullptr;
    const char* key_method = nullptr;  // of the first EXT-X-KEY that is not NONE
    bool end_list = false;
    uint32_t segment_count = 0;
};

// Called by a reader when it is done with a stream of the current segment; kept until the segment's own facts are
// recorded. Does nothing while no recorder is set.
void record_stream(const StreamFacts& stream);

// Called by the driver: `segment` with the streams recorded since the last call, at the current place.
void record_segment(SegmentFacts segment);

void record_playlist(const PlaylistFacts& playlist);

}  // namespace quorlin
