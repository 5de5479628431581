#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "ac4/ac4_channel_mode.h"
#include "ac4/ac4_content_type.h"

namespace quorlin {

// The table of contents of an AC-4 raw frame, ETSI TS 103 190-1 and TS 103 190-2, in the standard's field names. A
// field that the syntax leaves out is 0.

// More presentations, substream groups or substreams than this are a failed parse.
constexpr uint32_t AC4_MAX_ELEMENTS = 20000;

// A substream group index where the syntax gives none because the group stands in its place.
constexpr uint16_t AC4_NO_GROUP_INDEX = 0xFFFF;

// presentation_version of a presentation that is rendered for headphones (immersive stereo).
constexpr uint32_t AC4_IMS_PRESENTATION_VERSION = 2;

// presentation_config of a presentation that consists of EMDF substreams alone.
constexpr uint32_t AC4_CONFIG_EMDF_ONLY = 6;

// By presentation_config: substreams of a version-0 presentation, substream group specifiers of a later one.
constexpr std::array<uint8_t, 6> AC4_CONFIG_SUBSTREAMS = {2, 2, 2, 3, 3, 1};
constexpr std::array<uint8_t, 5> AC4_CONFIG_SPECIFIERS = {2, 2, 2, 3, 3};

// TS 103 190-2, emdf_info; the payload substream and the protection bits are not kept.
struct ac4_emdf_info {
    uint32_t emdf_version = 0;
    uint32_t key_id = 0;

    bool operator==(const ac4_emdf_info&) const = default;
};

// TS 103 190-1, ac4_substream_info: a substream of a version-0 presentation.
struct ac4_substream_info {
    Ac4ChannelMode channel_mode{};
    uint8_t b_sf_multiplier = 0;
    uint8_t sf_multiplier = 0;
    uint8_t b_bitrate_indicator = 0;
    uint8_t bitrate_indicator = 0;  // number of the code, 0 to 19
    uint8_t add_ch_base = 0;
    ac4_content_type content_type;
    uint32_t substream_index = 0;
};

// TS 103 190-1, ac4_presentation_info: version-0 presentation.
struct ac4_presentation_info {
    uint8_t b_single_substream = 0;
    uint32_t presentation_config = 0;
    uint32_t presentation_version = 0;
    uint8_t b_add_emdf_substreams = 0;
    uint8_t mdcompat = 0;
    uint8_t b_presentation_id = 0;
    uint32_t presentation_id = 0;
    uint8_t frame_rate_factor = 1;
    ac4_emdf_info emdf_info;
    uint8_t b_hsf_ext = 0;
    uint32_t hsf_ext_substream_index = 0;
    uint8_t n_substreams = 0;  // how many of `substreams` are coded
    std::array<ac4_substream_info, 3> substreams;
    uint8_t b_pre_virtualized = 0;
    uint32_t n_add_emdf_substreams = 0;
    uint32_t first_emdf_substream = 0;  // their place in ac4_toc::emdf_substreams

    // Derived from the substreams.
    uint32_t presentation_channel_mask = 0;
};

// TS 103 190-2, ac4_presentation_v1_info.
struct ac4_presentation_v1_info {
    uint8_t b_single_substream_group = 0;
    uint32_t presentation_config = 0;
    uint32_t presentation_version = 0;
    uint8_t mdcompat = 0;
    uint8_t b_presentation_id = 0;
    uint32_t presentation_id = 0;
    uint8_t frame_rate_factor = 1;
    uint8_t frame_rate_fraction = 1;
    ac4_emdf_info emdf_info;
    uint8_t b_presentation_filter = 0;
    uint8_t b_enable_presentation = 0;
    uint8_t b_multi_pid = 0;
    uint32_t n_substream_groups = 0;  // as the standard counts: without a dialogue enhancement group
    uint32_t n_group_indices = 0;     // one per coded ac4_sgi_specifier
    uint32_t first_group_index = 0;   // their place in ac4_toc::group_indices
    uint8_t b_pre_virtualized = 0;
    uint8_t b_add_emdf_substreams = 0;
    uint8_t b_alternative = 0;
    uint32_t n_add_emdf_substreams = 0;
    uint32_t first_emdf_substream = 0;  // their place in ac4_toc::emdf_substreams

    // Derived from the substreams of the groups named.
    uint8_t b_presentation_channel_coded = 0;
    Ac4ChannelMode presentation_ch_mode = Ac4ChannelMode::NONE;
    uint8_t pres_b_4_back_channels_present = 0;
    uint8_t pres_top_channel_pairs = 0;
    uint32_t presentation_channel_mask = 0;
    Ac4ChannelMode pres_ch_mode_core = Ac4ChannelMode::NONE;
};

// A substream of a group: TS 103 190-2, ac4_substream_info_chan, ac4_substream_info_ajoc or ac4_substream_info_obj.
struct ac4_group_substream {
    uint8_t sus_ver = 0;
    // Channel coded.
    Ac4ChannelMode channel_mode{};
    uint8_t b_4_back_channels_present = 0;
    uint8_t b_centre_present = 0;
    uint8_t top_channels_present = 0;
    uint8_t add_ch_base = 0;
    // Objects.
    uint8_t b_ajoc = 0;
    uint8_t b_lfe = 0;
    uint8_t b_static_dmx = 0;
    uint8_t n_dmx_objects_minus1 = 0;  // n_fullband_dmx_signals_minus1
    uint8_t n_umx_objects_minus1 = 0;  // n_fullband_upmix_signals_minus1, the four bits as they are coded
    uint8_t b_substream_contains_bed_objects = 0;
    uint8_t b_substream_contains_dynamic_objects = 0;
    uint8_t b_substream_contains_ISF_objects = 0;
    // All.
    uint8_t b_sf_multiplier = 0;
    uint8_t sf_multiplier = 0;
    uint8_t b_bitrate_indicator = 0;
    uint8_t bitrate_indicator = 0;  // number of the code, 0 to 19
    uint32_t substream_index = 0;
    uint32_t hsf_ext_substream_index = 0;
};

// What a group adds to the derived values of a presentation that names it.
struct ac4_group_channels {
    Ac4LayoutSuperset layouts;
    Ac4LayoutSuperset core_layouts;
    bool adaptive = false;  // some substream has no core mode
    uint8_t b_4_back_channels_present = 0;
    uint8_t top_channel_pairs = 0;
    uint32_t channel_mask = 0;
};

// TS 103 190-2, ac4_substream_group_info.
struct ac4_substream_group_info {
    uint8_t b_substreams_present = 0;
    uint8_t b_hsf_ext = 0;
    uint8_t b_single_substream = 0;
    uint32_t n_lf_substreams = 0;
    uint8_t b_channel_coded = 0;
    uint8_t b_oamd_substream = 0;
    uint32_t first_substream = 0;  // their place in ac4_toc::group_substreams
    ac4_content_type content_type;

    // Derived from the substreams: as they are, and as an immersive stereo presentation takes them.
    ac4_group_channels channels;
    ac4_group_channels ims_channels;
};

// TS 103 190-2, ac4_toc. What a presentation or group has any number of lies in one array for all of them.
struct ac4_toc {
    uint8_t bitstream_version = 0;
    uint8_t fs_index = 0;
    uint8_t frame_rate_index = 0;
    uint8_t b_iframe_global = 0;
    uint8_t b_single_presentation = 0;
    uint32_t n_presentations = 0;
    uint16_t short_program_id = 0;
    uint8_t b_program_uuid_present = 0;
    std::array<uint16_t, 8> program_uuid{};
    std::vector<ac4_presentation_info> presentations_v0;     // bitstream_version 0 and 1
    std::vector<ac4_presentation_v1_info> presentations_v1;  // bitstream_version above 1
    uint32_t n_substream_groups = 0;
    std::vector<ac4_substream_group_info> substream_groups;
    std::vector<ac4_group_substream> group_substreams;
    std::vector<uint16_t> group_indices;
    std::vector<ac4_emdf_info> emdf_substreams;
};

// The indices of the groups that a presentation names, in the order of its specifiers.
inline std::span<const uint16_t> ac4_group_indices(const ac4_toc& toc, const ac4_presentation_v1_info& presentation) {
    return std::span(toc.group_indices).subspan(presentation.first_group_index, presentation.n_group_indices);
}

// The substreams of a group.
inline std::span<const ac4_group_substream> ac4_group_substreams(const ac4_toc& toc,
                                                                 const ac4_substream_group_info& group) {
    return std::span(toc.group_substreams).subspan(group.first_substream, group.n_lf_substreams);
}

// The additional EMDF substreams of a presentation of either version.
template <class Presentation>
std::span<const ac4_emdf_info> ac4_emdf_substreams(const ac4_toc& toc, const Presentation& presentation) {
    return std::span(toc.emdf_substreams)
        .subspan(presentation.first_emdf_substream, presentation.n_add_emdf_substreams);
}

}  // namespace quorlin
