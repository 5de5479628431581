#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ac4/ac4_channel_mode.h"
#include "ac4/ac4_content_type.h"
#include "ac4/ac4_toc_records.h"

namespace quorlin {

// The AC-4 decoder-specific information (payload of the dac4 box), ETSI TS 103 190-2, annex E: records and reader. A
// field that the syntax leaves out is 0.

// The newest presentation_version that is known; entries of later ones are not read.
constexpr uint32_t AC4_DSI_NEWEST_VERSION = 2;

// presentation_config of a presentation with one substream or one substream group.
constexpr uint32_t AC4_DSI_CONFIG_SINGLE = 0x1F;

// TS 103 190-2, annex E, ac4_substream_dsi.
struct ac4_substream_dsi {
    Ac4ChannelMode channel_mode{};
    uint8_t dsi_sf_multiplier = 0;
    uint8_t b_substream_bitrate_indicator = 0;
    uint8_t substream_bitrate_indicator = 0;
    uint8_t add_ch_base = 0;
    ac4_content_type content_type;
};

// TS 103 190-2, annex E, ac4_presentation_v0_dsi.
struct ac4_presentation_v0_dsi {
    uint8_t presentation_config = 0;
    uint8_t mdcompat = 0;
    uint8_t b_presentation_group_index = 0;
    uint8_t presentation_group_index = 0;
    uint8_t dsi_frame_rate_multiply_info = 0;
    ac4_emdf_info emdf_info;
    uint32_t presentation_channel_mask = 0;
    uint8_t b_hsf_ext = 0;
    uint8_t n_substreams = 0;  // how many of `substreams` are coded
    std::array<ac4_substream_dsi, 3> substreams;
    uint8_t b_pre_virtualized = 0;
    uint8_t b_add_emdf_substreams = 0;
    std::vector<ac4_emdf_info> emdf_substreams;  // n_add_emdf_substreams of them
};

// One substream of TS 103 190-2, annex E, ac4_substream_group_dsi.
struct ac4_group_substream_dsi {
    uint8_t dsi_sf_multiplier = 0;
    uint8_t b_substream_bitrate_indicator = 0;
    uint8_t substream_bitrate_indicator = 0;
    uint32_t dsi_substream_channel_mask = 0;
    uint8_t b_ajoc = 0;
    uint8_t b_static_dmx = 0;
    uint8_t n_dmx_objects_minus1 = 0;
    uint8_t n_umx_objects_minus1 = 0;
    uint8_t b_substream_contains_bed_objects = 0;
    uint8_t b_substream_contains_dynamic_objects = 0;
    uint8_t b_substream_contains_ISF_objects = 0;

    bool operator==(const ac4_group_substream_dsi&) const = default;
};

struct ac4_substream_group_dsi {
    uint8_t b_substreams_present = 0;
    uint8_t b_hsf_ext = 0;
    uint8_t b_channel_coded = 0;
    std::vector<ac4_group_substream_dsi> substreams;  // n_substreams of them
    ac4_content_type content_type;

    bool operator==(const ac4_substream_group_dsi&) const = default;
};

// TS 103 190-2, annex E, ac4_presentation_v1_dsi.
struct ac4_presentation_v1_dsi {
    uint8_t presentation_config_v1 = 0;
    uint8_t mdcompat = 0;
    uint8_t b_presentation_id = 0;
    uint8_t presentation_id = 0;
    uint8_t dsi_frame_rate_multiply_info = 0;
    uint8_t dsi_frame_rate_fraction_info = 0;
    ac4_emdf_info emdf_info;
    uint8_t b_presentation_channel_coded = 0;
    Ac4ChannelMode dsi_presentation_ch_mode{};
    uint8_t pres_b_4_back_channels_present = 0;
    uint8_t pres_top_channel_pairs = 0;
    uint32_t presentation_channel_mask_v1 = 0;
    uint8_t b_presentation_core_differs = 0;
    uint8_t b_presentation_core_channel_coded = 0;
    uint8_t dsi_presentation_channel_mode_core = 0;
    uint8_t b_presentation_filter = 0;
    uint8_t b_enable_presentation = 0;
    uint8_t n_filter_bytes = 0;
    uint8_t b_multi_pid = 0;
    std::vector<ac4_substream_group_dsi> substream_groups;
    uint8_t b_pre_virtualized = 0;
    uint8_t b_add_emdf_substreams = 0;
    std::vector<ac4_emdf_info> emdf_substreams;  // n_add_emdf_substreams of them
    uint8_t b_alternative = 0;
    uint8_t b_extended_presentation_id = 0;
    uint16_t extended_presentation_id = 0;

    bool operator==(const ac4_presentation_v1_dsi&) const = default;
};

// One presentation entry: the body of its version, or none when it was not read.
struct Ac4DsiPresentation {
    uint8_t presentation_version = 0;
    std::optional<ac4_presentation_v0_dsi> v0;
    std::optional<ac4_presentation_v1_dsi> v1;
};

// How reading a payload ended.
enum class Ac4DsiStop {
    COMPLETE,
    VERSION_0_IN_NEW_STREAM,  // presentation_version 0 with a bitstream_version above 1
    VERSION_1_IN_OLD_STREAM,  // presentation_version 1 or 2 with a bitstream_version other than 1 and 2
    PRES_BYTES_TOO_SMALL,     // a body is longer than its pres_bytes
    WRONG_BOX_SIZE,           // the content does not end at the payload's end
};

// TS 103 190-2, annex E, ac4_dsi_v1.
struct Ac4Dsi {
    uint8_t ac4_dsi_version = 0;
    uint8_t bitstream_version = 0;
    uint8_t fs_index = 0;  // 0: 44.1 kHz, 1: 48 kHz
    uint8_t frame_rate_index = 0;
    uint16_t n_presentations = 0;
    uint8_t b_program_id = 0;
    uint16_t short_program_id = 0;
    uint8_t b_uuid = 0;
    std::array<uint16_t, 8> program_uuid{};
    uint8_t bit_rate_mode = 0;
    uint32_t bit_rate = 0;
    uint32_t bit_rate_precision = 0;
    std::vector<Ac4DsiPresentation> presentations;  // as many as were read, n_presentations unless the reading stopped

    Ac4DsiStop stop = Ac4DsiStop::COMPLETE;
    uint32_t position_bits = 0;  // where it stopped
};

// Parses a dac4 payload into `dsi` without printing anything; dsi.stop says how it ended. Never reads past the payload
// (bits after it are zero).
void ac4_dsi_parse(std::span<const uint8_t> payload, Ac4Dsi& dsi);

// The RFC 6381 codec string: "ac-4.", bitstream_version, then presentation_version and mdcompat of the first
// presentation (0 when there is none), two hex digits each.
std::string ac4_dsi_codec_string(const Ac4Dsi& dsi);

// Channels of the first presentation by its channel mask; 0 when it has none or the mask is not a known layout.
uint32_t ac4_dsi_channel_count(const Ac4Dsi& dsi);

}  // namespace quorlin
