#include "ac4/ac4_dsi.h"

#include <algorithm>
#include <cstddef>

#include "ac4/ac4_codec_string.h"
#include "ac4/ac4_reader.h"

namespace quorlin {

// The counts of the payload are at most 9 bits wide and bits after its end are zero, so every loop here is short; the
// loops run to their counts although the payload has ended, so that the size finding names the size that was claimed.

namespace {

// ETSI TS 103 190-2, ac4_bitrate_dsi: bit_rate_mode, bit_rate and bit_rate_precision.
constexpr uint32_t BITRATE_DSI_BITS = 66;

ac4_emdf_info read_emdf_info(BitReader& reader) {
    ac4_emdf_info info;
    info.emdf_version = read_u32(reader, 5);
    info.key_id = read_u32(reader, 10);
    return info;
}

void read_emdf_substreams(BitReader& reader, std::vector<ac4_emdf_info>& emdf_substreams) {
    const uint32_t n_add_emdf_substreams = read_u32(reader, 7);
    for (uint32_t i = 0; i < n_add_emdf_substreams; ++i) emdf_substreams.push_back(read_emdf_info(reader));
}

// The data of a configuration that this syntax does not know.
void skip_config_bytes(BitReader& reader) {
    const uint32_t n_skip_bytes = read_u32(reader, 7);
    skip_bits(reader, uint64_t{8} * n_skip_bytes);
}

// ETSI TS 103 190-2, ac4_substream_dsi.
void read_substream(BitReader& reader, ac4_substream_dsi& substream) {
    substream.channel_mode = channel_mode_of(read_u32(reader, 5));
    substream.dsi_sf_multiplier = read_u8(reader, 2);
    substream.b_substream_bitrate_indicator = read_u8(reader, 1);
    if (substream.b_substream_bitrate_indicator != 0) substream.substream_bitrate_indicator = read_u8(reader, 5);
    if (ac4_has_add_ch_base(substream.channel_mode)) substream.add_ch_base = read_u8(reader, 1);
    read_ac4_content_type(reader, Ac4ContentSource::DSI, substream.content_type);
}

void read_presentation_v0_body(BitReader& reader, ac4_presentation_v0_dsi& presentation) {
    const bool single = presentation.presentation_config == AC4_DSI_CONFIG_SINGLE;
    presentation.mdcompat = read_u8(reader, 3);
    presentation.b_presentation_group_index = read_u8(reader, 1);
    if (presentation.b_presentation_group_index != 0) presentation.presentation_group_index = read_u8(reader, 5);
    presentation.dsi_frame_rate_multiply_info = read_u8(reader, 2);
    presentation.emdf_info = read_emdf_info(reader);
    presentation.presentation_channel_mask = read_u32(reader, 24);
    if (!single) presentation.b_hsf_ext = read_u8(reader, 1);
    if (single) {
        presentation.n_substreams = 1;
    } else if (presentation.presentation_config < AC4_CONFIG_SUBSTREAMS.size()) {
        presentation.n_substreams = AC4_CONFIG_SUBSTREAMS[presentation.presentation_config];
    } else {
        skip_config_bytes(reader);
    }
    for (uint32_t i = 0; i < presentation.n_substreams; ++i) read_substream(reader, presentation.substreams[i]);
    presentation.b_pre_virtualized = read_u8(reader, 1);
    presentation.b_add_emdf_substreams = read_u8(reader, 1);
}

// ETSI TS 103 190-2, ac4_presentation_v0_dsi.
void read_presentation_v0(BitReader& reader, ac4_presentation_v0_dsi& presentation) {
    presentation.presentation_config = read_u8(reader, 5);
    if (presentation.presentation_config == AC4_CONFIG_EMDF_ONLY) {
        presentation.b_add_emdf_substreams = 1;
    } else {
        read_presentation_v0_body(reader, presentation);
    }
    if (presentation.b_add_emdf_substreams != 0) read_emdf_substreams(reader, presentation.emdf_substreams);
    align(reader, 0);
}

void read_group_substream(BitReader& reader, bool channel_coded, ac4_group_substream_dsi& substream) {
    substream.dsi_sf_multiplier = read_u8(reader, 2);
    substream.b_substream_bitrate_indicator = read_u8(reader, 1);
    if (substream.b_substream_bitrate_indicator != 0) substream.substream_bitrate_indicator = read_u8(reader, 5);
    if (channel_coded) {
        substream.dsi_substream_channel_mask = read_u32(reader, 24);
        return;
    }
    substream.b_ajoc = read_u8(reader, 1);
    if (substream.b_ajoc != 0) {
        substream.b_static_dmx = read_u8(reader, 1);
        if (substream.b_static_dmx == 0) substream.n_dmx_objects_minus1 = read_u8(reader, 4);
        substream.n_umx_objects_minus1 = read_u8(reader, 6);
    }
    substream.b_substream_contains_bed_objects = read_u8(reader, 1);
    substream.b_substream_contains_dynamic_objects = read_u8(reader, 1);
    substream.b_substream_contains_ISF_objects = read_u8(reader, 1);
    skip_bits(reader, 1);  // reserved
}

// ETSI TS 103 190-2, ac4_substream_group_dsi.
void read_substream_group(BitReader& reader, ac4_substream_group_dsi& group) {
    group.b_substreams_present = read_u8(reader, 1);
    group.b_hsf_ext = read_u8(reader, 1);
    group.b_channel_coded = read_u8(reader, 1);
    const uint32_t n_substreams = read_u32(reader, 8);
    for (uint32_t i = 0; i < n_substreams; ++i)
        read_group_substream(reader, group.b_channel_coded != 0, group.substreams.emplace_back());
    read_ac4_content_type(reader, Ac4ContentSource::DSI, group.content_type);
}

// The channel layout of ac4_presentation_v1_dsi.
void read_presentation_channels(BitReader& reader, ac4_presentation_v1_dsi& presentation) {
    presentation.b_presentation_channel_coded = read_u8(reader, 1);
    if (presentation.b_presentation_channel_coded != 0) {
        presentation.dsi_presentation_ch_mode = channel_mode_of(read_u32(reader, 5));
        if (ac4_is_immersive_mode(presentation.dsi_presentation_ch_mode)) {
            presentation.pres_b_4_back_channels_present = read_u8(reader, 1);
            presentation.pres_top_channel_pairs = read_u8(reader, 2);
        }
        presentation.presentation_channel_mask_v1 = read_u32(reader, 24);
    }
    presentation.b_presentation_core_differs = read_u8(reader, 1);
    if (presentation.b_presentation_core_differs != 0) {
        presentation.b_presentation_core_channel_coded = read_u8(reader, 1);
        if (presentation.b_presentation_core_channel_coded != 0)
            presentation.dsi_presentation_channel_mode_core = read_u8(reader, 2);
    }
}

// The groups of ac4_presentation_v1_dsi, by its configuration.
void read_substream_groups(BitReader& reader, ac4_presentation_v1_dsi& presentation) {
    const uint8_t config = presentation.presentation_config_v1;
    uint32_t n_groups = 0;
    if (config == AC4_DSI_CONFIG_SINGLE) {
        n_groups = 1;
    } else {
        presentation.b_multi_pid = read_u8(reader, 1);
        if (config < AC4_CONFIG_SPECIFIERS.size()) {
            n_groups = AC4_CONFIG_SPECIFIERS[config];
        } else if (config == 5) {
            n_groups = read_u32(reader, 3) + 2;  // n_substream_groups_minus2
        } else {
            skip_config_bytes(reader);
        }
    }
    for (uint32_t i = 0; i < n_groups; ++i) read_substream_group(reader, presentation.substream_groups.emplace_back());
}

void read_presentation_v1_body(BitReader& reader, ac4_presentation_v1_dsi& presentation) {
    presentation.mdcompat = read_u8(reader, 3);
    presentation.b_presentation_id = read_u8(reader, 1);
    if (presentation.b_presentation_id != 0) presentation.presentation_id = read_u8(reader, 5);
    presentation.dsi_frame_rate_multiply_info = read_u8(reader, 2);
    presentation.dsi_frame_rate_fraction_info = read_u8(reader, 2);
    presentation.emdf_info = read_emdf_info(reader);
    read_presentation_channels(reader, presentation);
    presentation.b_presentation_filter = read_u8(reader, 1);
    if (presentation.b_presentation_filter != 0) {
        presentation.b_enable_presentation = read_u8(reader, 1);
        presentation.n_filter_bytes = read_u8(reader, 8);
        skip_bits(reader, uint64_t{8} * presentation.n_filter_bytes);
    }
    read_substream_groups(reader, presentation);
    presentation.b_pre_virtualized = read_u8(reader, 1);
    presentation.b_add_emdf_substreams = read_u8(reader, 1);
}

// ETSI TS 103 190-2, alternative_info.
void skip_alternative_info(BitReader& reader) {
    const uint32_t name_len = read_u32(reader, 16);
    skip_bits(reader, uint64_t{8} * name_len);
    const uint32_t n_targets = read_u32(reader, 5);
    skip_bits(reader, uint64_t{3 + 8} * n_targets);  // target_md_compat, target_device_category
}

// ETSI TS 103 190-2, ac4_presentation_v1_dsi.
void read_presentation_v1(BitReader& reader, uint32_t pres_bytes, ac4_presentation_v1_dsi& presentation) {
    const uint32_t start = reader.position;
    presentation.presentation_config_v1 = read_u8(reader, 5);
    if (presentation.presentation_config_v1 == AC4_CONFIG_EMDF_ONLY) {
        presentation.b_add_emdf_substreams = 1;
    } else {
        read_presentation_v1_body(reader, presentation);
    }
    if (presentation.b_add_emdf_substreams != 0) read_emdf_substreams(reader, presentation.emdf_substreams);
    if (read_flag(reader)) skip_bits(reader, BITRATE_DSI_BITS);  // b_presentation_bitrate_info
    presentation.b_alternative = read_u8(reader, 1);
    if (presentation.b_alternative != 0) {
        align(reader, start);
        skip_alternative_info(reader);
    }
    align(reader, start);
    if (uint64_t{8} * pres_bytes < uint64_t{reader.position - start} + 8) return;
    skip_bits(reader, 1 + 1 + 4);  // de_indicator, immersive indicator, reserved
    presentation.b_extended_presentation_id = read_u8(reader, 1);
    if (presentation.b_extended_presentation_id != 0) {
        presentation.extended_presentation_id = static_cast<uint16_t>(read_u32(reader, 9));
    } else {
        skip_bits(reader, 1);  // reserved
    }
}

void read_program_id(BitReader& reader, Ac4Dsi& dsi) {
    dsi.b_program_id = read_u8(reader, 1);
    if (dsi.b_program_id == 0) return;
    dsi.short_program_id = read_u16(reader);
    dsi.b_uuid = read_u8(reader, 1);
    if (dsi.b_uuid == 0) return;
    for (uint16_t& value : dsi.program_uuid) value = read_u16(reader);
}

// Reads one entry with the bytes that its body leaves over. Returns why the reading must stop, if so.
Ac4DsiStop read_presentation(BitReader& reader, uint8_t bitstream_version, Ac4DsiPresentation& presentation) {
    presentation.presentation_version = read_u8(reader, 8);
    uint32_t pres_bytes = read_u32(reader, 8);
    if (pres_bytes == 255) pres_bytes += read_u32(reader, 16);  // add_pres_bytes
    const uint32_t start = reader.position;
    if (presentation.presentation_version == 0) {
        if (bitstream_version > 1) return Ac4DsiStop::VERSION_0_IN_NEW_STREAM;
        read_presentation_v0(reader, presentation.v0.emplace());
    } else if (presentation.presentation_version <= AC4_DSI_NEWEST_VERSION) {
        if (bitstream_version != 1 && bitstream_version != 2) return Ac4DsiStop::VERSION_1_IN_OLD_STREAM;
        read_presentation_v1(reader, pres_bytes, presentation.v1.emplace());
    }
    const uint32_t body_bits = reader.position - start;
    if (8 * pres_bytes < body_bits) return Ac4DsiStop::PRES_BYTES_TOO_SMALL;
    skip_bits(reader, 8 * pres_bytes - body_bits);
    return Ac4DsiStop::COMPLETE;
}

}  // namespace

void ac4_dsi_parse(std::span<const uint8_t> payload, Ac4Dsi& dsi) {
    dsi = {};
    BitReader reader{.bytes = payload};
    dsi.ac4_dsi_version = read_u8(reader, 3);
    dsi.bitstream_version = read_u8(reader, 7);
    dsi.fs_index = read_u8(reader, 1);
    dsi.frame_rate_index = read_u8(reader, 4);
    dsi.n_presentations = static_cast<uint16_t>(read_u32(reader, 9));
    if (dsi.bitstream_version > 1) read_program_id(reader, dsi);
    dsi.bit_rate_mode = read_u8(reader, 2);
    dsi.bit_rate = read_u32(reader, 32);
    dsi.bit_rate_precision = read_u32(reader, 32);
    align(reader, 0);
    for (uint32_t i = 0; i < dsi.n_presentations && dsi.stop == Ac4DsiStop::COMPLETE; ++i)
        dsi.stop = read_presentation(reader, dsi.bitstream_version, dsi.presentations.emplace_back());
    dsi.position_bits = reader.position;
    if (dsi.stop == Ac4DsiStop::COMPLETE && dsi.position_bits != uint64_t{8} * payload.size())
        dsi.stop = Ac4DsiStop::WRONG_BOX_SIZE;
}

uint32_t ac4_dsi_channel_count(const Ac4Dsi& dsi) {
    if (dsi.presentations.empty()) return 0;
    const Ac4DsiPresentation& first = dsi.presentations[0];
    if (first.v0) return ac4_channel_count(first.v0->presentation_channel_mask);
    if (first.v1) return ac4_channel_count(first.v1->presentation_channel_mask_v1);  // 0 unless channel coded
    return 0;
}

std::string ac4_dsi_codec_string(const Ac4Dsi& dsi) {
    uint32_t presentation_version = 0;
    uint32_t mdcompat = 0;
    if (!dsi.presentations.empty()) {
        const Ac4DsiPresentation& first = dsi.presentations[0];
        presentation_version = first.presentation_version;
        if (first.v0) mdcompat = first.v0->mdcompat;
        if (first.v1) mdcompat = first.v1->mdcompat;
    }
    return ac4_codec_string(dsi.bitstream_version, presentation_version, mdcompat);
}

}  // namespace quorlin
