#include "isobmff/track_boxes.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string_view>

#include "bits/byte_order.h"
#include "bits/place.h"
#include "isobmff/box_reader.h"

namespace {

constexpr size_t FULL_BOX_HEADER_SIZE = 4;  // version and flags
constexpr size_t UUID_SIZE = 16;
constexpr std::string_view METADATA_UUID = "VXRO-METADATA-00";

// A trak, now record `made`, whose track_ID an earlier segment made takes that record's place, and goes on with its
// output.
void replace_earlier_record(MediaContext& context, size_t made) {
    auto& tracks = context.tracks;
    for (size_t i = 0; i < made; ++i) {
        TrackRecord& earlier = *tracks[i];
        if (earlier.track_ID != tracks[made]->track_ID || earlier.made_in_walk == context.walk_number) continue;
        tracks[made]->output = std::move(earlier.output);
        tracks[i] = std::move(tracks[made]);
        tracks.erase(tracks.begin() + static_cast<ptrdiff_t>(made));
        return;
    }
}

// ISO 639-2/T letters, 5 bits each.
std::array<char, 4> unpack_language(uint16_t code) {
    if (code == 0) return {'u', 'n', 'd', 0};
    std::array<char, 4> language{};
    for (uint32_t i = 0; i < 3; ++i) language[i] = static_cast<char>((code >> (10 - 5 * i) & 31) + 0x60);
    return language;
}

struct EditListEntry {
    uint64_t segment_duration = 0;
    int64_t media_time = 0;
};

// ISO/IEC 14496-12, 8.6.6: entry `index` after the list's header.
EditListEntry edit_list_entry(std::span<const uint8_t> entries, uint8_t version, size_t index) {
    if (version == 1) {
        const std::span<const uint8_t> entry = entries.subspan(index * 20);
        return {load_be64(entry, 0), static_cast<int64_t>(load_be64(entry, 8))};
    }
    const std::span<const uint8_t> entry = entries.subspan(index * 12);
    return {load_be32(entry, 0), static_cast<int32_t>(load_be32(entry, 4))};
}

}  // namespace

int read_ftyp(MediaContext& context, FileReader& reader, int64_t) {
    read_fields(reader, context.major_brand);
    return 0;
}

// The version 0 layout serves for every version, deliberately.
int read_mvhd(MediaContext& context, FileReader& reader, int64_t) {
    std::array<uint8_t, 16> payload{};
    read_fields(reader, payload);
    context.movie_timescale = load_be32(payload, 12);
    return 0;
}

int read_trak(MediaContext& context, FileReader& reader, int64_t payload_size) {
    // The walk may make and take away records after this one (a trak inside), never before it.
    const size_t made = context.tracks.size();
    const PlaceScope scope;
    context.tracks.push_back(std::make_unique<TrackRecord>());
    TrackRecord& track = *context.tracks.back();
    track.made_in_walk = context.walk_number;
    track.entry_place = current_place;
    context.current_track = &track;
    const int status = walk_container(context, reader, payload_size);
    context.current_track = nullptr;
    replace_earlier_record(context, made);
    if (context.tracks.size() <= MAX_TRACKS || status != 0) return status;
    context.tracks.pop_back();
    return refuse_box(context, reader, "reason-mp4-too-many-tracks", "there are more than 256 tracks");
}

int read_tkhd(MediaContext& context, FileReader& reader, int64_t) {
    std::array<uint8_t, 24> payload{};
    read_fields(reader, payload);
    if (payload[0] > 1) return refuse_box(context, reader, "reason-mp4-box-version", "its version is neither 0 nor 1");
    const size_t times_size = payload[0] == 1 ? 16 : 8;
    context.current_track->track_ID = load_be32(payload, FULL_BOX_HEADER_SIZE + times_size);
    current_place.stream = static_cast<int32_t>(context.current_track->track_ID);
    return 0;
}

int read_mdhd(MediaContext& context, FileReader& reader, int64_t) {
    TrackRecord& track = *context.current_track;
    std::array<uint8_t, 36> payload{};
    read_fields(reader, std::span(payload).first(24));
    if (payload[0] == 1) read_fields(reader, std::span(payload).subspan(24));
    if (payload[0] > 1) return refuse_box(context, reader, "reason-mp4-box-version", "its version is neither 0 nor 1");
    if (payload[0] == 1) {
        track.media_timescale = load_be32(payload, 20);
        track.samples.media_duration = load_be32(payload, 28);  // low half
        track.language = unpack_language(load_be16(payload, 32));
    } else {
        track.media_timescale = load_be32(payload, 12);
        track.samples.media_duration = load_be32(payload, 16);
        track.language = unpack_language(load_be16(payload, 20));
    }
    // Whole units of the movie timescale only: the division comes first, deliberately.
    if (track.empty_entry_duration && context.movie_timescale != 0)
        track.presentation_offset =
            static_cast<int64_t>(*track.empty_entry_duration / context.movie_timescale * track.media_timescale);
    return 0;
}

// The edit list is read at its fixed place inside edts. An empty list is refused too, deliberately.
int read_edts(MediaContext& context, FileReader& reader, int64_t) {
    TrackRecord& track = *context.current_track;
    std::array<uint8_t, 16> header{};
    read_fields(reader, header);
    const uint8_t version = header[8];
    const uint32_t entry_count = load_be32(header, 12);
    if (version > 1)
        return refuse_box(context, reader, "reason-mp4-edit-list-version",
                          "the edit list's version is neither 0 nor 1");
    if (entry_count < 1 || entry_count > 2)
        return refuse_box(context, reader, "reason-mp4-edit-list-count",
                          "the edit list has neither one nor two entries");
    std::array<uint8_t, size_t{2} * 20> entries{};
    read_fields(reader, std::span(entries).first(size_t{entry_count} * (version == 1 ? 20 : 12)));
    const EditListEntry first = edit_list_entry(entries, version, 0);
    if (entry_count == 1) {
        track.presentation_offset = static_cast<int64_t>(0 - static_cast<uint64_t>(first.media_time));
        return 0;
    }
    const EditListEntry second = edit_list_entry(entries, version, 1);
    if (first.media_time != -1 || second.media_time != 0)
        return refuse_box(context, reader, "reason-mp4-edit-list-form",
                          "two edits are not an empty one and one from the start of the media (ffmpeg writes another "
                          "list with -movflags +negative_cts_offsets, none with -use_editlist 0)");
    track.empty_entry_duration = first.segment_duration;
    return 0;
}

int read_hdlr(MediaContext& context, FileReader& reader, int64_t) {
    std::array<uint8_t, 12> payload{};
    read_fields(reader, payload);
    HandlerKind kind = HANDLER_OTHER;
    switch (load_be32(payload, 8)) {
        case fourcc("soun"):
            kind = HANDLER_SOUND;
            break;
        case fourcc("vide"):
            kind = HANDLER_VIDEO;
            break;
        case fourcc("text"):
        case fourcc("sbtl"):
            kind = HANDLER_TEXT;
            break;
        case fourcc("meta"):
            kind = HANDLER_META;
            break;
        case fourcc("hint"):
            kind = HANDLER_HINT;
            break;
        default:
            break;
    }
    context.current_track->handler_kind = kind;
    return 0;
}

int read_meta(MediaContext& context, FileReader& reader, int64_t payload_size) {
    std::array<uint8_t, FULL_BOX_HEADER_SIZE> header{};
    read_fields(reader, header);
    return walk_container(context, reader, payload_size - static_cast<int64_t>(header.size()));
}

int read_uuid(MediaContext& context, FileReader& reader, int64_t payload_size) {
    if (payload_size < static_cast<int64_t>(UUID_SIZE))
        return refuse_box(context, reader, "reason-mp4-uuid-short", "it is too short for its extended type");
    std::array<uint8_t, UUID_SIZE> extended_type{};
    read_fields(reader, extended_type);
    if (!std::equal(extended_type.begin(), extended_type.end(), METADATA_UUID.begin())) return 0;
    context.metadata_box_offset = context.box.offset;
    context.metadata_length = static_cast<uint64_t>(payload_size) - UUID_SIZE;
    return 0;
}
