#include "isobmff/movie_boxes.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include "bits/byte_order.h"
#include "bits/place.h"
#include "isobmff/box_payload.h"
#include "isobmff/box_reader.h"
#include "isobmff/box_report.h"
#include "isobmff/media_context.h"

namespace quorlin {

namespace {

constexpr size_t MAX_TRACKS = 256;
constexpr size_t UUID_SIZE = 16;
constexpr std::string_view METADATA_UUID = "VXRO-METADATA-00";

// Record `made` replaces the record that an earlier segment made for the same track_ID, and takes over its output.
void replace_earlier_record(MediaContext& context, size_t made) {
    auto& tracks = context.tracks;
    for (size_t i = 0; i < made; ++i) {
        TrackRecord& earlier = *tracks[i];
        if (earlier.track_ID != tracks[made]->track_ID || earlier.made_in_walk == context.walk.number) continue;
        tracks[made]->output = std::move(earlier.output);
        tracks[i] = std::move(tracks[made]);
        tracks.erase(tracks.begin() + static_cast<ptrdiff_t>(made));
        return;
    }
}

}  // namespace

int read_ftyp(MediaContext& context, FileReader& reader, const Box&) {
    read_fields(reader, context.major_brand);
    return 0;
}

// The version 0 layout serves for every version, deliberately.
int read_mvhd(MediaContext& context, FileReader& reader, const Box&) {
    std::array<uint8_t, 16> payload{};
    read_fields(reader, payload);
    context.movie_timescale = load_be32(payload, 12);
    return 0;
}

int read_trak(MediaContext& context, FileReader& reader, const Box& box) {
    // The walk may make and take away records after this one (a trak inside), never before it.
    const size_t made = context.tracks.size();
    const PlaceScope scope;
    context.tracks.push_back(std::make_unique<TrackRecord>());
    TrackRecord& track = *context.tracks.back();
    track.made_in_walk = context.walk.number;
    track.entry_box.place = current_place;
    context.walk.current_track = &track;
    const int status = walk_container(context, reader, box);
    context.walk.current_track = nullptr;
    replace_earlier_record(context, made);
    if (context.tracks.size() <= MAX_TRACKS || status != 0) return status;
    context.tracks.pop_back();
    return refuse_box(reader, box, "reason-mp4-too-many-tracks", "there are more than 256 tracks");
}

int read_meta(MediaContext& context, FileReader& reader, const Box& box) {
    std::array<uint8_t, FULL_BOX_HEADER_SIZE> header{};
    read_fields(reader, header);
    return walk_container(context, reader, children_after(box, header.size()));
}

int read_uuid(MediaContext& context, FileReader& reader, const Box& box) {
    if (box.payload_size < static_cast<int64_t>(UUID_SIZE))
        return refuse_box(reader, box, "reason-mp4-uuid-short", "it is too short for its extended type");
    std::array<uint8_t, UUID_SIZE> extended_type{};
    read_fields(reader, extended_type);
    if (!std::equal(extended_type.begin(), extended_type.end(), METADATA_UUID.begin())) return 0;
    context.metadata_box_offset = box.offset;
    context.metadata_length = static_cast<uint64_t>(box.payload_size) - UUID_SIZE;
    return 0;
}

}  // namespace quorlin
