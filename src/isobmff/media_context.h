#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bits/output_file.h"
#include "bits/place.h"
#include "playlist/playlist_attributes.h"
#include "ztpinfo/ztpinfo.h"

// What the box walk fills and the segment validation reads: one MediaContext for an init section and the segments that
// belong to it, one TrackRecord for each of its tracks. Multi-byte values are in host order.

constexpr size_t MAX_TRACKS = 256;

// The status of a segment with findings.
constexpr int SEGMENT_FINDING = 11;

// The status of a segment that cannot be read: a malformed box, or no init section.
constexpr int SEGMENT_REFUSED = 1;

// ISO/IEC 14496-10 and 23008-2, annex B: what each NAL unit of a byte stream begins with.
constexpr std::array<uint8_t, 4> START_CODE = {0, 0, 0, 1};

// A four-character code as the number that its bytes make, first character most significant.
constexpr uint32_t fourcc(const char (&text)[5]) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(text[i]);
    return value;
}

enum HandlerKind : uint32_t {
    HANDLER_OTHER = 0,
    HANDLER_SOUND = 1,
    HANDLER_VIDEO = 2,
    HANDLER_TEXT = 3,
    HANDLER_META = 4,
    HANDLER_HINT = 5,
};

enum CodecKind : uint32_t {
    CODEC_UNKNOWN = 0,
    CODEC_AAC = 1,
    CODEC_AVC1 = 2,
    CODEC_AVC3 = 4,
    CODEC_AC3 = 6,
    CODEC_EC3 = 7,
    CODEC_TIMED_METADATA = 8,
    CODEC_MLPA = 10,
    CODEC_S263 = 11,
    CODEC_HEV1 = 12,
    CODEC_HVC1 = 13,
    CODEC_AC4 = 14,
};

enum HdrVideoKind : uint32_t {
    HDR_NONE = 0,
    HDR_LMAV = 1,
    HDR_LMA1 = 2,
    HDR_LMHE = 3,
    HDR_LMH1 = 4,
};

// Consecutive samples of one size: stsz entries, a constant sample_size, or the samples of a trun.
struct SizeRun {
    uint32_t count = 0;
    uint32_t size = 0;
};

struct SampleToChunk {
    uint32_t first_chunk = 0;  // from 1
    uint32_t samples_per_chunk = 0;
    uint32_t sample_description_index = 0;
};

struct TimeToSample {
    uint32_t sample_count = 0;
    uint32_t sample_delta = 0;
};

// The decoding time of a track's sample, in the media timescale, by a tfdt box; unknown where a fragment has none.
struct DecodeTime {
    uint64_t sample = 0;  // from 0
    std::optional<uint64_t> time;
};

struct CompositionOffset {
    uint32_t sample_count = 0;
    uint32_t sample_offset = 0;  // signed in version 1
};

// ISO/IEC 14496-12, 8.6 and 8.7. Movie fragments are folded into the same tables.
struct SampleTables {
    std::vector<SizeRun> sizes;
    uint64_t sample_count = 0;
    std::vector<uint64_t> chunk_offsets;  // absolute in the file
    std::vector<SampleToChunk> sample_to_chunk;
    std::vector<TimeToSample> time_to_sample;
    std::vector<DecodeTime> decode_times;
    std::vector<CompositionOffset> composition_offsets;
    std::vector<uint32_t> sync_samples;  // numbers from 1
    uint32_t media_duration = 0;
};

// ETSI TS 102 366, F.6: one independent substream of a dec3 box.
struct Ec3IndependentSubstream {
    uint32_t fscod = 0;
    uint32_t bsid = 0;
    uint32_t asvc = 0;
    uint32_t bsmod = 0;
    uint32_t acmod = 0;
    uint32_t lfeon = 0;
    uint32_t num_dep_sub = 0;
    uint32_t chan_loc = 0;
};

// ETSI TS 102 366, F.6: EC3SpecificBox. All zero without one.
struct Ec3Configuration {
    uint32_t data_rate = 0;    // kbit/s
    uint32_t num_ind_sub = 0;  // the number, not the field that is one less
    std::array<Ec3IndependentSubstream, 8> substreams;
    uint32_t flag_ec3_extension_type_a = 0;  // object audio
    uint32_t complexity_index_type_a = 0;
};

// A piece of VideoConfiguration::payload.
struct ParameterSet {
    size_t offset = 0;
    size_t size = 0;
};

// ISO/IEC 14496-15, avcC and hvcC, avcE and hvcE: the length fields of the samples and the parameter sets.
struct VideoConfiguration {
    std::vector<uint8_t> payload;
    uint32_t length_size_minus_one = 0;
    std::vector<ParameterSet> vps;  // H.265 only
    std::vector<ParameterSet> sps;
    std::vector<ParameterSet> pps;
};

// lmcC and lmvC.
struct LumoraConfiguration {
    uint32_t version_major = 0;
    uint32_t version_minor = 0;
    uint32_t profile = 0;
    uint32_t level = 0;
    bool rpu_present = false;
    bool el_present = false;
    bool bl_present = false;
    uint32_t compatibility_id = 0;
};

// Where a track's samples go; lives as long as the context, over all its segments.
struct TrackOutput {
    OutputFile file;
    bool opened = false;
    bool parameter_sets_written = false;
    bool unvalidated_reported = false;  // what of its samples is not validated
    ZtpInfoPtr analyzer;
};

// Steps through the decoding times of a track's samples, see sample_times.h.
struct SampleClock {
    uint64_t sample = 0;     // the next one
    size_t decode_time = 0;  // the entry that may hold for it
    size_t row = 0;          // time-to-sample entry of it
    uint32_t used = 0;       // samples of that entry that are done
    std::optional<uint64_t> time = 0;
};

// What was met in the samples of one segment; the last six only while a recorder is set.
struct SeenSamples {
    bool el = false;
    bool rpu = false;
    uint32_t cut = 0;  // with a rest too short for a NAL unit's length field
    int64_t first_offset = NO_OFFSET;
    SampleClock clock;
    uint64_t count = 0;
    uint64_t bytes = 0;
    int64_t first_time = NO_TIME;  // 90 kHz
    int64_t last_time = NO_TIME;
    int64_t end_time = NO_TIME;
    uint32_t channels = 0;  // of analysed audio
    uint32_t data_rate_kbps = 0;
};

// Samples that lie one after another in their file, from `offset` on.
struct AdjacentSamples {
    uint64_t offset = 0;
    std::span<uint8_t> bytes;
    std::span<const uint32_t> sizes;
};

struct TrackRecord {
    HandlerKind handler_kind = HANDLER_OTHER;
    CodecKind codec_kind = CODEC_UNKNOWN;
    HdrVideoKind hdr_video_kind = HDR_NONE;
    uint32_t track_ID = 0;
    bool encrypted = false;
    uint64_t made_in_walk = 0;

    // Sample entry.
    std::array<char, 5> format{};  // its four-character code; of a protected one that of the clear entry
    std::array<char, 5> scheme{};  // of its protection
    Place entry_place;             // of its box, or of the trak
    bool entry_checked = false;    // in the segment that holds it, or one after it
    uint32_t channel_count = 0;    // of the entry; dec3 replaces it by its own
    uint32_t samplerate = 0;       // integer part
    uint32_t samplesize = 0;
    uint32_t width = 0;
    uint32_t height = 0;

    // Codec configuration.
    std::optional<std::vector<uint8_t>> config;  // payload of dac3, dac4, dec3, dmlp, d263 or esds
    Place config_place;                          // of that box
    bool config_checked = false;                 // dac4
    Ec3Configuration ec3;
    VideoConfiguration video;
    std::optional<VideoConfiguration> enhancement_layer;  // avcE or hvcE; its parameter sets are never written
    std::optional<LumoraConfiguration> lumora;

    // Timing.
    uint32_t media_timescale = 0;
    int64_t presentation_offset = 0;               // media timescale
    std::optional<uint64_t> empty_entry_duration;  // movie timescale
    std::array<char, 4> language = {'u', 'n', 'd', 0};

    std::optional<uint64_t> fragment_decode_time;  // tfdt of the current traf

    // trex, overridden by tfhd, also for the fragments that follow.
    uint32_t default_sample_duration = 0;
    uint32_t default_sample_size = 0;
    uint32_t default_sample_description_index = 0;
    uint64_t base_data_offset = 0;

    SampleTables samples;  // of the current segment
    SeenSamples seen;      // likewise

    TrackOutput output;
};

// Whether the track's samples are H.264 or H.265: NAL units after length fields.
inline bool is_avc(const TrackRecord& track) {
    return track.codec_kind == CODEC_AVC1 || track.codec_kind == CODEC_AVC3;
}

inline bool is_hevc(const TrackRecord& track) {
    return track.codec_kind == CODEC_HEV1 || track.codec_kind == CODEC_HVC1;
}

// Where the walk stands, for the handlers and for the line that says why it stopped.
struct BoxPlace {
    uint32_t type = 0;
    uint64_t offset = 0;  // of the box header
};

struct BoxType;

struct MediaContext {
    // Given by the playlist.
    std::optional<std::string> output_dir;
    std::string stem;
    std::string init_stem;
    std::optional<PlaylistAttributes> attrs;

    // Of the current segment's walk.
    const BoxType& (*find_box_type)(uint32_t type) = nullptr;
    uint64_t walk_number = 0;
    uint64_t file_size = 0;
    uint64_t range_length = 0;  // 0: the whole file
    BoxPlace box;
    uint32_t depth = 0;
    int status = 0;  // findings of the box handlers
    bool unknown_track_reported = false;

    bool init_refused = false;  // the walk of the init section ended early: little is known of the tracks

    // ftyp, mvhd, uuid, mfhd.
    std::array<uint8_t, 4> major_brand{};
    uint32_t movie_timescale = 0;
    uint64_t metadata_box_offset = 0;
    uint64_t metadata_length = 0;
    uint32_t fragment_sequence_number = 0;
    uint64_t moof_start = 0;

    std::vector<std::unique_ptr<TrackRecord>> tracks;
    TrackRecord* current_track = nullptr;  // inside a trak, or named by the last tfhd

    std::vector<uint8_t> sample_buffer;

    uint64_t work_left = 0;  // see read_limits.h
};

// The CODECS value to compare with, null when there is none.
inline const std::string* playlist_codecs(const MediaContext& context) {
    return context.attrs && !context.attrs->codecs.empty() ? &context.attrs->codecs : nullptr;
}

// The place of a box whose contents are checked for every segment: as found again from the second time on.
inline Place place_checked_again(const Place& box, bool checked_before) {
    Place place = box;
    place.repeated = checked_before;
    return place;
}
