#include "isobmff/box_table.h"

#include "isobmff/box_reader.h"
#include "isobmff/codec_boxes.h"
#include "isobmff/fourcc.h"
#include "isobmff/fragment_boxes.h"
#include "isobmff/movie_boxes.h"
#include "isobmff/sample_entry_boxes.h"
#include "isobmff/sample_table_boxes.h"
#include "isobmff/track_boxes.h"

namespace quorlin {

namespace {

constexpr BoxHandler SKIP = nullptr;

constexpr BoxType BOX_TABLE[] = {
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
    {fourcc("schm"), read_schm},
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
    {fourcc("avcE"), read_avcE},
    {fourcc("hvcC"), read_hvcC},
    {fourcc("hvcE"), read_hvcE},
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
    {fourcc("tfdt"), read_tfdt},
    {fourcc("trun"), read_trun},
    {fourcc("mfhd"), read_mfhd},
};

}  // namespace

std::span<const BoxType> box_table() {
    return BOX_TABLE;
}

}  // namespace quorlin
