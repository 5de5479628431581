#include "isobmff/sample_entry_boxes.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "bits/byte_order.h"
#include "bits/place.h"
#include "isobmff/box_payload.h"
#include "isobmff/box_reader.h"
#include "isobmff/box_report.h"
#include "isobmff/fourcc.h"
#include "isobmff/media_context.h"

namespace quorlin {

namespace {

constexpr size_t STSD_HEADER_SIZE = 8;
constexpr size_t VISUAL_ENTRY_SIZE = 78;
constexpr size_t AUDIO_ENTRY_SIZE = 28;
constexpr size_t METADATA_ENTRY_SIZE = 8;
constexpr size_t METADATA_STRINGS_SIZE = 512;
constexpr std::string_view METADATA_NAMESPACE = "urn:vexro:mobile-metadata";

struct SampleFormat {
    uint32_t type;
    CodecKind codec_kind;
    HdrVideoKind hdr_video_kind;
    bool named_by_frma;  // a protected entry of this format keeps its kind
};

// Protected AC-3, E-AC-3 and AC-4 have no kind, deliberately: their samples cannot be analysed.
constexpr SampleFormat SAMPLE_FORMATS[] = {
    {fourcc("avc1"), CodecKind::AVC1, HdrVideoKind::NONE, true},
    {fourcc("avc3"), CodecKind::AVC3, HdrVideoKind::NONE, true},
    {fourcc("hev1"), CodecKind::HEV1, HdrVideoKind::NONE, true},
    {fourcc("hvc1"), CodecKind::HVC1, HdrVideoKind::NONE, true},
    {fourcc("s263"), CodecKind::S263, HdrVideoKind::NONE, true},
    {fourcc("mp4a"), CodecKind::AAC, HdrVideoKind::NONE, true},
    {fourcc("lmav"), CodecKind::AVC3, HdrVideoKind::LMAV, true},
    {fourcc("lma1"), CodecKind::AVC1, HdrVideoKind::LMA1, true},
    {fourcc("lmhe"), CodecKind::HEV1, HdrVideoKind::LMHE, true},
    {fourcc("lmh1"), CodecKind::HVC1, HdrVideoKind::LMH1, true},
    {fourcc("ac-3"), CodecKind::AC3, HdrVideoKind::NONE, false},
    {fourcc("ec-3"), CodecKind::EC3, HdrVideoKind::NONE, false},
    {fourcc("ac-4"), CodecKind::AC4, HdrVideoKind::NONE, false},
    {fourcc("mlpa"), CodecKind::MLPA, HdrVideoKind::NONE, false},
};

const SampleFormat* find_format(uint32_t type) {
    for (const SampleFormat& format : SAMPLE_FORMATS)
        if (format.type == type) return &format;
    return nullptr;
}

// The type of the box at the reader's position, which stays.
std::array<char, 5> peek_type(FileReader& reader) {
    const uint64_t position = reader.position;
    std::array<uint8_t, 8> header{};
    read_fields(reader, header);
    if (reader.position != position) reader_skip(static_cast<int64_t>(position - reader.position), reader);
    return printable_fourcc(load_be32(header, 4));
}

// What the type of a sample entry says about its track.
void set_kinds(TrackRecord& track, uint32_t type) {
    track.entry_box.place = current_place;
    if (type == fourcc("encv") || type == fourcc("enca")) {
        track.encrypted = true;
        return;
    }
    const SampleFormat* format = find_format(type);
    if (format == nullptr) return;
    track.codec_kind = format->codec_kind;
    track.hdr_video_kind = format->hdr_video_kind;
}

// The text up to its terminating zero, removed from `strings`.
std::string_view take_string(std::string_view& strings) {
    const std::string_view text = strings.substr(0, strings.find('\0'));
    strings.remove_prefix(std::min(text.size() + 1, strings.size()));
    return text;
}

}  // namespace

int read_stsd(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, STSD_HEADER_SIZE> header{};
    read_fields(reader, header);
    if (load_be32(header, 4) != 1)
        return refuse_box(reader, box, "reason-mp4-sample-descriptions",
                          "it does not hold exactly one sample description");
    track.format = peek_type(reader);
    return walk_container(context, reader, children_after(box, header.size()));
}

int read_visual_sample_entry(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, VISUAL_ENTRY_SIZE> entry{};
    read_fields(reader, entry);
    set_kinds(track, box.type);
    track.width = load_be16(entry, 24);
    track.height = load_be16(entry, 26);
    return walk_container(context, reader, children_after(box, entry.size()));
}

int read_audio_sample_entry(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, AUDIO_ENTRY_SIZE> entry{};
    read_fields(reader, entry);
    set_kinds(track, box.type);
    track.channel_count = load_be16(entry, 16);
    track.samplesize = load_be16(entry, 18);
    track.samplerate = load_be16(entry, 24);
    return walk_container(context, reader, children_after(box, entry.size()));
}

int read_frma(MediaContext&, FileReader& reader, const Box&, TrackRecord& track) {
    std::array<uint8_t, 4> data_format{};
    read_fields(reader, data_format);
    const uint32_t type = load_be32(data_format, 0);
    track.format = printable_fourcc(type);
    const SampleFormat* format = find_format(type);
    if (format == nullptr || !format->named_by_frma) return 0;
    track.codec_kind = format->codec_kind;
    // A format without HDR leaves the entry's own HDR kind.
    if (format->hdr_video_kind != HdrVideoKind::NONE) track.hdr_video_kind = format->hdr_video_kind;
    return 0;
}

// Only a box that is wholly there is read, as with tfdt.
int read_schm(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, 8> payload{};
    if (!is_whole(context.limits, reader, box, 8)) return 0;
    read_payload_start(reader, box.payload_size, payload);
    track.scheme = printable_fourcc(load_be32(payload, 4));
    return 0;
}

// ISO/IEC 14496-12, 12.3.3: content_encoding, namespace, schema_location.
int read_metx(MediaContext&, FileReader& reader, const Box& box, TrackRecord& track) {
    track.entry_box.place = current_place;
    std::array<uint8_t, METADATA_ENTRY_SIZE + METADATA_STRINGS_SIZE> payload{};
    read_payload_start(reader, box.payload_size, payload);
    std::string_view strings(reinterpret_cast<const char*>(payload.data()), payload.size());
    strings.remove_prefix(METADATA_ENTRY_SIZE);
    take_string(strings);
    track.codec_kind = take_string(strings) == METADATA_NAMESPACE ? CodecKind::TIMED_METADATA : CodecKind::UNKNOWN;
    return 0;
}

}  // namespace quorlin
