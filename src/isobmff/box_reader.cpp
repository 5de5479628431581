#include "isobmff/box_reader.h"

#include <algorithm>
#include <cctype>
#include <cinttypes>
#include <new>
#include <string>

#include "bits/report.h"
#include "isobmff/codec_configuration.h"
#include "isobmff/movie_fragments.h"
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

struct BoxType {
    uint32_t type;
    BoxHandler handler;
};

constexpr BoxHandler SKIP = nullptr;

constexpr BoxType BOX_TYPES[] = {
    {fourcc("ftyp"), read_ftyp},
    {fourcc("mdat"), SKIP},  // samples are fetched later, by offset
    {fourcc("moov"), walk_container},
    {fourcc("mvhd"), read_mvhd},
    {fourcc("trak"), read_trak},
    {fourcc("tkhd"), read_tkhd},
    {fourcc("edts"), read_edts},
    {fourcc("stco"), read_stco},
    {fourcc("co64"), read_co64},
    {fourcc("stsz"), read_stsz},
    {fourcc("stsd"), read_stsd},
    {fourcc("stsc"), read_stsc},
    {fourcc("stts"), read_stts},
    {fourcc("stss"), read_stss},
    {fourcc("ctts"), read_ctts},
    {fourcc("mdhd"), read_mdhd},
    {fourcc("stbl"), walk_container},
    {fourcc("encv"), read_visual_sample_entry},
    {fourcc("enca"), read_audio_sample_entry},
    {fourcc("sinf"), walk_container},
    {fourcc("frma"), read_frma},
    {fourcc("mp4a"), read_audio_sample_entry},
    {fourcc("avc1"), read_visual_sample_entry},
    {fourcc("avc3"), read_visual_sample_entry},
    {fourcc("lmav"), read_visual_sample_entry},
    {fourcc("lma1"), read_visual_sample_entry},
    {fourcc("hvc1"), read_visual_sample_entry},
    {fourcc("hev1"), read_visual_sample_entry},
    {fourcc("lmhe"), read_visual_sample_entry},
    {fourcc("lmh1"), read_visual_sample_entry},
    {fourcc("s263"), read_visual_sample_entry},
    {fourcc("tx3g"), SKIP},
    {fourcc("metx"), read_metx},
    {fourcc("ac-3"), read_audio_sample_entry},
    {fourcc("ec-3"), read_audio_sample_entry},
    {fourcc("ac-4"), read_audio_sample_entry},
    {fourcc("mlpa"), read_audio_sample_entry},
    {fourcc("esds"), read_esds},
    {fourcc("d263"), store_configuration},
    {fourcc("avcC"), read_avcC},
    {fourcc("avcE"), read_enhancement_layer_configuration},
    {fourcc("hvcC"), read_hvcC},
    {fourcc("hvcE"), read_enhancement_layer_configuration},
    {fourcc("lmcC"), read_lumora_configuration},
    {fourcc("lmvC"), read_lumora_configuration},
    {fourcc("dac3"), store_configuration},
    {fourcc("dec3"), read_dec3},
    {fourcc("dmlp"), store_configuration},
    {fourcc("dac4"), store_configuration},
    {fourcc("hdlr"), read_hdlr},
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
    {fourcc("trun"), read_trun},
    {fourcc("mfhd"), read_mfhd},
};
static_assert(std::size(BOX_TYPES) == 64);

BoxHandler find_handler(uint32_t type) {
    for (const BoxType& row : BOX_TYPES)
        if (row.type == type) return row.handler;
    return SKIP;
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
int run_handler(MediaContext& context, FileReader& reader, BoxHandler handler, int64_t payload) {
    try {
        return handler(context, reader, payload);
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
    const BoxHandler handler = find_handler(context.box.type);
    int status = 0;
    if (handler != SKIP) status = run_handler(context, reader, handler, payload);
    const bool stay = handler == SKIP && may_stay_in_front(context, reader, left, payload);
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

int refuse_box(const MediaContext& context, const FileReader& reader, const char* rule) {
    report_reason(reader.path, "box '%s' at byte %" PRIu64 ": %s", printable_type(context.box.type).c_str(),
                  context.box.offset, rule);
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

bool payload_in_file(const MediaContext& context, const FileReader& reader, uint64_t size) {
    const uint64_t available = context.file_size > reader.position ? context.file_size - reader.position : 0;
    return size <= available + OVERRUN_SLACK && size <= UINT32_MAX;
}

int read_payload(MediaContext& context, FileReader& reader, int64_t payload_size, std::vector<uint8_t>& payload) {
    const auto size = static_cast<uint64_t>(payload_size);
    if (!payload_in_file(context, reader, size)) return refuse_box(context, reader, "it runs past the end of the file");
    payload.resize(size);
    read_payload_start(reader, payload_size, payload);
    return 0;
}
