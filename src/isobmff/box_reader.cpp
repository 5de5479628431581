#include "isobmff/box_reader.h"

#include <algorithm>
#include <cctype>
#include <cinttypes>
#include <new>
#include <string>

#include "bits/report.h"
#include "isobmff/codec_configuration.h"
#include "isobmff/movie_fragments.h"
#include "isobmff/read_limits.h"
#include "isobmff/sample_entries.h"
#include "isobmff/sample_tables.h"
#include "isobmff/track_boxes.h"

namespace {

constexpr int64_t BOX_HEADER_SIZE = 8;
constexpr uint32_t SIZE_TO_THE_END = 0;
constexpr uint32_t SIZE_IS_64_BIT = 1;
constexpr uint32_t MAX_DEPTH = 64;

// A box may reach 8 bytes behind its container (see walk_container), nested ones each by 8.
constexpr uint64_t OVERRUN_SLACK = uint64_t{MAX_DEPTH} * BOX_HEADER_SIZE;

// Of each byte of table entries that is read on after a payload: in memory an entry takes more than in the file.
constexpr uint64_t READ_ON_WORK = 4;

struct BoxType {
    uint32_t type;
    BoxHandler handler;
    bool needs_track = false;  // passed over where no track is the current one
};

constexpr BoxHandler SKIP = nullptr;
constexpr bool OF_TRACK = true;

constexpr BoxType BOX_TYPES[] = {
    {fourcc("ftyp"), read_ftyp},
    {fourcc("mdat"), SKIP},  // samples are fetched later, by offset
    {fourcc("moov"), walk_container},
    {fourcc("mvhd"), read_mvhd},
    {fourcc("trak"), read_trak},
    {fourcc("tkhd"), read_tkhd, OF_TRACK},
    {fourcc("edts"), read_edts, OF_TRACK},
    {fourcc("stco"), read_stco, OF_TRACK},
    {fourcc("co64"), read_co64, OF_TRACK},
    {fourcc("stsz"), read_stsz, OF_TRACK},
    {fourcc("stsd"), read_stsd, OF_TRACK},
    {fourcc("stsc"), read_stsc, OF_TRACK},
    {fourcc("stts"), read_stts, OF_TRACK},
    {fourcc("stss"), read_stss, OF_TRACK},
    {fourcc("ctts"), read_ctts, OF_TRACK},
    {fourcc("mdhd"), read_mdhd, OF_TRACK},
    {fourcc("stbl"), walk_container},
    {fourcc("encv"), read_visual_sample_entry, OF_TRACK},
    {fourcc("enca"), read_audio_sample_entry, OF_TRACK},
    {fourcc("sinf"), walk_container},
    {fourcc("frma"), read_frma, OF_TRACK},
    {fourcc("mp4a"), read_audio_sample_entry, OF_TRACK},
    {fourcc("avc1"), read_visual_sample_entry, OF_TRACK},
    {fourcc("avc3"), read_visual_sample_entry, OF_TRACK},
    {fourcc("lmav"), read_visual_sample_entry, OF_TRACK},
    {fourcc("lma1"), read_visual_sample_entry, OF_TRACK},
    {fourcc("hvc1"), read_visual_sample_entry, OF_TRACK},
    {fourcc("hev1"), read_visual_sample_entry, OF_TRACK},
    {fourcc("lmhe"), read_visual_sample_entry, OF_TRACK},
    {fourcc("lmh1"), read_visual_sample_entry, OF_TRACK},
    {fourcc("s263"), read_visual_sample_entry, OF_TRACK},
    {fourcc("tx3g"), SKIP},
    {fourcc("metx"), read_metx, OF_TRACK},
    {fourcc("ac-3"), read_audio_sample_entry, OF_TRACK},
    {fourcc("ec-3"), read_audio_sample_entry, OF_TRACK},
    {fourcc("ac-4"), read_audio_sample_entry, OF_TRACK},
    {fourcc("mlpa"), read_audio_sample_entry, OF_TRACK},
    {fourcc("esds"), read_esds, OF_TRACK},
    {fourcc("d263"), store_configuration, OF_TRACK},
    {fourcc("avcC"), read_avcC, OF_TRACK},
    {fourcc("avcE"), read_avcE, OF_TRACK},
    {fourcc("hvcC"), read_hvcC, OF_TRACK},
    {fourcc("hvcE"), read_hvcE, OF_TRACK},
    {fourcc("lmcC"), read_lumora_configuration, OF_TRACK},
    {fourcc("lmvC"), read_lumora_configuration, OF_TRACK},
    {fourcc("dac3"), store_configuration, OF_TRACK},
    {fourcc("dec3"), read_dec3, OF_TRACK},
    {fourcc("dmlp"), store_configuration, OF_TRACK},
    {fourcc("dac4"), store_configuration, OF_TRACK},
    {fourcc("hdlr"), read_hdlr, OF_TRACK},
    {fourcc("mdia"), walk_container},
    {fourcc("minf"), walk_container},
    {fourcc("dinf"), walk_container},
    {fourcc("udta"), walk_container},
    {fourcc("meta"), read_meta},
    {fourcc("ilst"), SKIP},
    {fourcc("uuid"), read_uuid},
    {fourcc("mvex"), walk_container},
    {fourcc("moof"), read_moof},
    {fourcc("traf"), walk_container},
    {fourcc("trex"), read_trex},
    {fourcc("tfhd"), read_tfhd},
    {fourcc("trun"), read_trun, OF_TRACK},
    {fourcc("mfhd"), read_mfhd},
};

const BoxType& find_box_type(uint32_t type) {
    static constexpr BoxType UNKNOWN = {0, SKIP};
    for (const BoxType& row : BOX_TYPES)
        if (row.type == type) return row;
    return UNKNOWN;
}

// The type as text, "?" for what cannot be printed.
std::string printable_type(uint32_t type) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>(type >> shift & 0xFF);
        text += std::isprint(static_cast<unsigned char>(c)) != 0 ? c : '?';
    }
    return text;
}

// Sample data that ends the file or range is not skipped in fact: nothing is read behind it, and the start of the
// segment, where the samples are, stays in the reader's buffer.
bool may_stay_in_front(const MediaContext& context, const FileReader& reader, int64_t left, int64_t payload) {
    return context.depth == 1 && left <= payload + BOX_HEADER_SIZE && (!reader.limited || reader.remaining >= payload);
}

// Memory that a handler does not get ends the walk as a malformed box does.
int run_handler(MediaContext& context, FileReader& reader, const BoxType& box, int64_t payload) {
    if (box.handler == SKIP || (box.needs_track && context.current_track == nullptr)) return 0;
    try {
        return box.handler(context, reader, payload);
    } catch (const std::bad_alloc&) {
        return refuse_box(context, reader, "memory is short for what it holds");
    }
}

// Reads one box of a container with `left` bytes; `left` becomes what is behind the box.
int walk_box(MediaContext& context, FileReader& reader, int64_t& left) {
    const BoxPlace container = context.box;
    context.box = {0, reader.position};
    int64_t size = read_be32(reader);
    context.box.type = read_be32(reader);
    if (size == SIZE_TO_THE_END) {
        size = left;
    } else if (size == SIZE_IS_64_BIT) {
        const uint64_t largesize = read_be64(reader);
        left -= BOX_HEADER_SIZE;
        if (largesize > static_cast<uint64_t>(INT64_MAX))
            return refuse_box(context, reader, "its size is out of range");
        size = static_cast<int64_t>(largesize) - BOX_HEADER_SIZE;
    }
    // Deliberately lax: the payload is measured against what is left with the header, so a box may reach up to 8 bytes
    // behind its container.
    const int64_t payload = size - BOX_HEADER_SIZE;
    if (payload < 0) return refuse_box(context, reader, "its size is smaller than its header");
    if (payload > left) return refuse_box(context, reader, "it is larger than what is left of its container");

    const uint64_t end = reader.position + static_cast<uint64_t>(payload);
    const BoxType& box = find_box_type(context.box.type);
    const int status = run_handler(context, reader, box, payload);
    const bool stay = box.handler == SKIP && may_stay_in_front(context, reader, left, payload);
    if (reader.position != end && !stay) reader_skip(static_cast<int64_t>(end - reader.position), reader);
    left -= size;
    context.box = container;
    return status;
}

}  // namespace

int walk_container(MediaContext& context, FileReader& reader, int64_t payload_size) {
    if (payload_size < 1) return 0;
    if (context.depth == MAX_DEPTH) return refuse_box(context, reader, "boxes are nested too deeply");
    ++context.depth;
    int64_t left = payload_size;
    int status = 0;
    while (left >= 1 && status == 0) status = walk_box(context, reader, left);
    --context.depth;
    return status;
}

int parse_media(MediaContext& context, FileReader& reader) {
    ++context.walk_number;
    context.box = {};
    context.depth = 0;
    context.status = 0;
    context.unknown_track_reported = false;
    context.moof_start = 0;
    context.current_track = nullptr;
    for (const std::unique_ptr<TrackRecord>& track : context.tracks) {
        clear_sample_tables(track->samples);
        track->el_seen = false;
        track->rpu_seen = false;
    }
    const uint64_t length = context.range_length != 0 ? context.range_length : context.file_size;
    const int status = walk_container(context, reader, static_cast<int64_t>(length));
    context.current_track = nullptr;
    return status;
}

void note_box(const MediaContext& context, const FileReader& reader, const char* rule) {
    report_reason(reader.path, "box '%s' at byte %" PRIu64 ": %s", printable_type(context.box.type).c_str(),
                  context.box.offset, rule);
}

int refuse_box(const MediaContext& context, const FileReader& reader, const char* rule) {
    note_box(context, reader, rule);
    return 1;
}

void read_fields(FileReader& reader, std::span<uint8_t> bytes) {
    const uint32_t delivered = reader_read(bytes.data(), static_cast<uint32_t>(bytes.size()), reader);
    std::fill(bytes.begin() + delivered, bytes.end(), uint8_t{0});
}

void read_payload_start(FileReader& reader, int64_t payload_size, std::span<uint8_t> bytes) {
    const size_t count = std::min(static_cast<size_t>(payload_size), bytes.size());
    read_fields(reader, bytes.first(count));
    std::fill(bytes.begin() + static_cast<ptrdiff_t>(count), bytes.end(), uint8_t{0});
}

int admit_entries(MediaContext& context, const FileReader& reader, uint64_t size, int64_t payload_left) {
    if (!can_deliver(context, reader, size))
        return refuse_box(context, reader, "it counts more entries than the file or byte range holds");
    const uint64_t inside = payload_left > 0 ? static_cast<uint64_t>(payload_left) : 0;
    if (size <= inside) return 0;
    spend_work(context, READ_ON_WORK * (size - inside));
    if (work_remains(context)) return 0;
    note_box(context, reader, "tables claim many times the data that the file holds; the segment is not read on");
    return SEGMENT_FINDING;
}

int read_payload(MediaContext& context, FileReader& reader, int64_t payload_size, std::vector<uint8_t>& payload) {
    const auto size = static_cast<uint64_t>(payload_size);
    const uint64_t available = context.file_size > reader.position ? context.file_size - reader.position : 0;
    if (size > available + OVERRUN_SLACK || size > UINT32_MAX)
        return refuse_box(context, reader, "it runs past the end of the file");
    payload.resize(size);
    read_payload_start(reader, payload_size, payload);
    return 0;
}
