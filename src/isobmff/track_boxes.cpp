#include "isobmff/track_boxes.h"

#include <array>
#include <span>

#include "bits/byte_order.h"
#include "bits/place.h"
#include "isobmff/box_payload.h"
#include "isobmff/box_report.h"
#include "isobmff/fourcc.h"
#include "isobmff/media_context.h"

namespace quorlin {

namespace {

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

int read_tkhd(MediaContext&, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, 24> payload{};
    read_fields(reader, payload);
    if (payload[0] > 1) return refuse_box(reader, box, "reason-mp4-box-version", "its version is neither 0 nor 1");
    const size_t times_size = payload[0] == 1 ? 16 : 8;
    track.track_ID = load_be32(payload, FULL_BOX_HEADER_SIZE + times_size);
    current_place.stream = static_cast<int32_t>(track.track_ID);
    return 0;
}

int read_mdhd(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, 36> payload{};
    read_fields(reader, std::span(payload).first(24));
    if (payload[0] == 1) read_fields(reader, std::span(payload).subspan(24));
    if (payload[0] > 1) return refuse_box(reader, box, "reason-mp4-box-version", "its version is neither 0 nor 1");
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
int read_edts(MediaContext&, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, 16> header{};
    read_fields(reader, header);
    const uint8_t version = header[8];
    const uint32_t entry_count = load_be32(header, 12);
    if (version > 1)
        return refuse_box(reader, box, "reason-mp4-edit-list-version", "the edit list's version is neither 0 nor 1");
    if (entry_count < 1 || entry_count > 2)
        return refuse_box(reader, box, "reason-mp4-edit-list-count", "the edit list has neither one nor two entries");
    std::array<uint8_t, size_t{2} * 20> entries{};
    read_fields(reader, std::span(entries).first(size_t{entry_count} * (version == 1 ? 20 : 12)));
    const EditListEntry first = edit_list_entry(entries, version, 0);
    if (entry_count == 1) {
        track.presentation_offset = static_cast<int64_t>(0 - static_cast<uint64_t>(first.media_time));
        return 0;
    }
    const EditListEntry second = edit_list_entry(entries, version, 1);
    if (first.media_time != -1 || second.media_time != 0)
        return refuse_box(reader, box, "reason-mp4-edit-list-form",
                          "two edits are not an empty one and one from the start of the media (ffmpeg writes another "
                          "list with -movflags +negative_cts_offsets, none with -use_editlist 0)");
    track.empty_entry_duration = first.segment_duration;
    return 0;
}

int read_hdlr(MediaContext&, FileReader& reader, const Box&, TrackRecord& track) {
    std::array<uint8_t, 12> payload{};
    read_fields(reader, payload);
    HandlerKind kind = HandlerKind::OTHER;
    switch (load_be32(payload, 8)) {
        case fourcc("soun"):
            kind = HandlerKind::SOUND;
            break;
        case fourcc("vide"):
            kind = HandlerKind::VIDEO;
            break;
        case fourcc("text"):
        case fourcc("sbtl"):
            kind = HandlerKind::TEXT;
            break;
        case fourcc("meta"):
            kind = HandlerKind::META;
            break;
        case fourcc("hint"):
            kind = HandlerKind::HINT;
            break;
        default:
            break;
    }
    track.handler_kind = kind;
    return 0;
}

}  // namespace quorlin
