#include "isobmff/box_types.h"

#include <memory>

#include "bits/place.h"
#include "isobmff/box_reader.h"
#include "isobmff/codec_configuration.h"
#include "isobmff/movie_fragments.h"
#include "isobmff/sample_entries.h"
#include "isobmff/sample_tables.h"
#include "isobmff/track_boxes.h"

namespace {

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
    {fourcc("schm"), read_schm, OF_TRACK},
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
    {fourcc("tfdt"), read_tfdt, OF_TRACK},
    {fourcc("trun"), read_trun, OF_TRACK},
    {fourcc("mfhd"), read_mfhd},
};

constexpr BoxType UNKNOWN = {0, SKIP};

const BoxType& find_box_type(uint32_t type) {
    for (const BoxType& row : BOX_TYPES)
        if (row.type == type) return row;
    return UNKNOWN;
}

}  // namespace

int parse_media(MediaContext& context, FileReader& reader) {
    const PlaceScope scope;
    context.find_box_type = find_box_type;
    ++context.walk_number;
    context.box = {};
    context.depth = 0;
    context.status = 0;
    context.unknown_track_reported = false;
    context.moof_start = 0;
    context.current_track = nullptr;
    for (const std::unique_ptr<TrackRecord>& track : context.tracks) {
        clear_sample_tables(track->samples);
        track->seen = {};
    }
    const uint64_t length = context.range_length != 0 ? context.range_length : context.file_size;
    const int status = walk_container(context, reader, static_cast<int64_t>(length));
    context.current_track = nullptr;
    return status;
}
