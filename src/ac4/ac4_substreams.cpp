#include "ac4/ac4_substreams.h"

#include <array>
#include <bit>
#include <span>

#include "ac4/ac4_derived_channels.h"

namespace quorlin {

namespace {

// ETSI TS 103 190-2, the codes of channel_mode: those of version-0 presentations end at seven bits.
enum class ChannelModeCodes { VERSION_0, VERSION_1 };

uint32_t read_channel_mode_number(BitReader& reader, ChannelModeCodes codes) {
    if (!read_flag(reader)) return 0;
    if (!read_flag(reader)) return 1;
    const uint32_t four_bit_code = read_u32(reader, 2);
    if (four_bit_code < 3) return 2 + four_bit_code;
    const uint32_t seven_bit_code = read_u32(reader, 3);
    if (codes == ChannelModeCodes::VERSION_0)
        return seven_bit_code < 7 ? 5 + seven_bit_code : 12 + read_variable_bits(reader, 2);
    if (seven_bit_code < 6) return 5 + seven_bit_code;
    if (seven_bit_code == 6) return 11 + read_u32(reader, 1);
    const uint32_t nine_bit_code = read_u32(reader, 2);
    return nine_bit_code < 3 ? 13 + nine_bit_code : 16 + read_variable_bits(reader, 2);
}

// ETSI TS 103 190-2, bitrate_indicator: the number of its code, 0 to 19.
uint8_t read_bitrate_indicator(BitReader& reader) {
    // The three-bit codes that end in 0 come first, then the five-bit ones in four blocks.
    const uint32_t code = read_u32(reader, 3);
    if ((code & 1) == 0) return static_cast<uint8_t>(code >> 1);
    return static_cast<uint8_t>(4 + 4 * (code >> 1) + read_u32(reader, 2));
}

// The fields that the substreams of both presentation versions share.
template <class Substream>
void parse_rates(Ac4TocParser& parser, Substream& substream) {
    BitReader& reader = parser.reader;
    if (parser.toc.fs_index == 1) {
        substream.b_sf_multiplier = read_u8(reader, 1);
        if (substream.b_sf_multiplier != 0) substream.sf_multiplier = read_u8(reader, 1);
    }
    substream.b_bitrate_indicator = read_u8(reader, 1);
    if (substream.b_bitrate_indicator != 0) substream.bitrate_indicator = read_bitrate_indicator(reader);
}

// The tail of the three forms of group substreams.
void parse_rates_and_index(Ac4TocParser& parser, const ac4_substream_group_info& group,
                           ac4_group_substream& substream) {
    BitReader& reader = parser.reader;
    parse_rates(parser, substream);
    if (group.b_channel_coded != 0 && ac4_has_add_ch_base(substream.channel_mode))
        substream.add_ch_base = read_u8(reader, 1);
    skip_bits(reader, parser.frame_rate_factor);  // b_audio_ndot
    if (group.b_substreams_present != 0) substream.substream_index = read_escaped(reader, 2, 2);
}

// ETSI TS 103 190-2, ac4_substream_info_chan.
void parse_substream_info_chan(Ac4TocParser& parser, const ac4_substream_group_info& group,
                               ac4_group_substream& substream) {
    BitReader& reader = parser.reader;
    substream.channel_mode = channel_mode_of(read_channel_mode_number(reader, ChannelModeCodes::VERSION_1));
    if (ac4_is_immersive_mode(substream.channel_mode)) {
        substream.b_4_back_channels_present = read_u8(reader, 1);
        substream.b_centre_present = read_u8(reader, 1);
        substream.top_channels_present = read_u8(reader, 2);
    }
    parse_rates_and_index(parser, group, substream);
}

// Which kinds of objects a bed_dyn_obj_assignment stands for.
struct ObjectKinds {
    bool bed = false;
    bool dynamic = false;
    bool isf = false;
};

ObjectKinds bed_kinds(uint32_t n_bed_signals, uint32_t n_signals) {
    return {.bed = true, .dynamic = n_signals > n_bed_signals};
}

// ETSI TS 103 190-2, bed_chan_assign_code: channels of the bed 2.0, 3.0, 5.1, 5.1.2, 5.1.4, 7.1, 7.1.2, 7.1.4.
constexpr std::array<uint8_t, 8> BED_CHANNELS = {2, 3, 6, 8, 10, 8, 10, 12};

// ETSI TS 103 190-2, std_bed_channel_assignment_mask: the bits that stand for one channel (C, LFE, LFE2).
constexpr uint32_t STD_BED_SINGLE_CHANNELS = 1u << 1 | 1u << 2 | 1u << 9;

uint32_t read_bed_mask_channels(BitReader& reader) {
    const bool b_nonstd_bed_channel_assignment = read_flag(reader);
    const uint32_t mask = read_u32(reader, b_nonstd_bed_channel_assignment ? 17 : 10);
    uint32_t channels = static_cast<uint32_t>(std::popcount(mask));
    if (!b_nonstd_bed_channel_assignment)
        channels += static_cast<uint32_t>(std::popcount(mask & ~STD_BED_SINGLE_CHANNELS));
    return channels;
}

// ETSI TS 103 190-2, bed_dyn_obj_assignment.
ObjectKinds parse_bed_dyn_obj_assignment(BitReader& reader, uint32_t n_signals) {
    if (read_flag(reader)) return {.dynamic = true};  // b_dyn_objects_only
    if (read_flag(reader)) {                          // b_isf
        skip_bits(reader, 3);                         // isf_config
        return {.isf = true};
    }
    if (read_flag(reader))  // b_ch_assign_code
        return bed_kinds(BED_CHANNELS[read_u32(reader, 3)], n_signals);
    if (read_flag(reader))  // b_chan_assign_mask
        return bed_kinds(read_bed_mask_channels(reader), n_signals);
    uint32_t n_bed_signals = 1;
    // n_bed_signals_minus1 has ceil(log2(n_signals)) bits.
    if (n_signals > 1) n_bed_signals += read_u32(reader, static_cast<uint32_t>(std::bit_width(n_signals - 1)));
    skip_bits(reader, uint64_t{4} * n_bed_signals);  // nonstd_bed_channel_assignment
    return bed_kinds(n_bed_signals, n_signals);
}

// ETSI TS 103 190-2, oamd_common_data. Trim and bed render data lie inside the additional bytes.
void skip_oamd_common_data(BitReader& reader) {
    const bool b_default_screen_size_ratio = read_flag(reader);
    if (!b_default_screen_size_ratio) skip_bits(reader, 5);  // master_screen_size_ratio_code
    skip_bits(reader, 1);                                    // b_bed_object_chan_distribute
    if (!read_flag(reader)) return;                          // b_additional_data
    uint64_t add_data_bytes = read_u32(reader, 1) + 1;
    if (add_data_bytes == 2) add_data_bytes += read_variable_bits(reader, 2);
    skip_bits(reader, 8 * add_data_bytes);
}

// ETSI TS 103 190-2, ac4_substream_info_ajoc.
void parse_substream_info_ajoc(Ac4TocParser& parser, const ac4_substream_group_info& group,
                               ac4_group_substream& substream) {
    BitReader& reader = parser.reader;
    substream.b_lfe = read_u8(reader, 1);
    substream.b_static_dmx = read_u8(reader, 1);
    if (substream.b_static_dmx == 0) {
        substream.n_dmx_objects_minus1 = read_u8(reader, 4);
        parse_bed_dyn_obj_assignment(reader, substream.n_dmx_objects_minus1 + 1u);
    }
    if (read_flag(reader)) skip_oamd_common_data(reader);  // b_oamd_common_data_present
    substream.n_umx_objects_minus1 = read_u8(reader, 4);
    uint32_t n_fullband_upmix_signals = substream.n_umx_objects_minus1 + 1u;
    if (n_fullband_upmix_signals == 16) n_fullband_upmix_signals += read_variable_bits(reader, 3);
    const ObjectKinds kinds = parse_bed_dyn_obj_assignment(reader, n_fullband_upmix_signals);
    substream.b_substream_contains_bed_objects = kinds.bed;
    substream.b_substream_contains_dynamic_objects = kinds.dynamic;
    substream.b_substream_contains_ISF_objects = kinds.isf;
    parse_rates_and_index(parser, group, substream);
}

// The bed of ac4_substream_info_obj.
void skip_bed(BitReader& reader) {
    if (!read_flag(reader)) return;  // b_bed_start
    if (read_flag(reader)) {         // b_ch_assign_code
        skip_bits(reader, 3);        // bed_chan_assign_code
    } else {
        read_bed_mask_channels(reader);
    }
}

// What stands in ac4_substream_info_obj for objects that are neither dynamic nor a bed. Returns b_isf.
uint8_t skip_isf_or_reserved(BitReader& reader) {
    const uint8_t b_isf = read_u8(reader, 1);
    if (b_isf != 0) {
        if (read_flag(reader)) skip_bits(reader, 3);  // b_isf_start, isf_config
    } else {
        skip_bits(reader, uint64_t{8} * read_u32(reader, 4));  // res_bytes
    }
    return b_isf;
}

// ETSI TS 103 190-2, ac4_substream_info_obj.
void parse_substream_info_obj(Ac4TocParser& parser, const ac4_substream_group_info& group,
                              ac4_group_substream& substream) {
    BitReader& reader = parser.reader;
    skip_bits(reader, 3);                                                 // n_objects_code
    substream.b_substream_contains_dynamic_objects = read_u8(reader, 1);  // b_dynamic_objects
    if (substream.b_substream_contains_dynamic_objects != 0) {
        substream.b_lfe = read_u8(reader, 1);
    } else {
        substream.b_substream_contains_bed_objects = read_u8(reader, 1);  // b_bed_objects
        if (substream.b_substream_contains_bed_objects != 0) {
            skip_bed(reader);
        } else {
            substream.b_substream_contains_ISF_objects = skip_isf_or_reserved(reader);
        }
    }
    parse_rates_and_index(parser, group, substream);
}

// One turn of the substream loop of ac4_substream_group_info.
void parse_group_substream(Ac4TocParser& parser, const ac4_substream_group_info& group,
                           ac4_group_substream& substream) {
    BitReader& reader = parser.reader;
    if (group.b_channel_coded != 0) {
        substream.sus_ver = parser.toc.bitstream_version == 1 ? read_u8(reader, 1) : uint8_t{1};
        parse_substream_info_chan(parser, group, substream);
    } else {
        substream.sus_ver = 1;
        substream.b_ajoc = read_u8(reader, 1);
        if (substream.b_ajoc != 0) {
            parse_substream_info_ajoc(parser, group, substream);
        } else {
            parse_substream_info_obj(parser, group, substream);
        }
    }
    // ac4_hsf_ext_substream_info
    if (group.b_hsf_ext != 0 && group.b_substreams_present != 0)
        substream.hsf_ext_substream_index = read_escaped(reader, 2, 2);
}

}  // namespace

void parse_substream_info(Ac4TocParser& parser, ac4_substream_info& substream) {
    BitReader& reader = parser.reader;
    substream.channel_mode = channel_mode_of(read_channel_mode_number(reader, ChannelModeCodes::VERSION_0));
    parse_rates(parser, substream);
    if (ac4_has_add_ch_base(substream.channel_mode)) substream.add_ch_base = read_u8(reader, 1);
    read_ac4_content_type(reader, Ac4ContentSource::TOC, substream.content_type);
    skip_bits(reader, parser.frame_rate_factor);  // b_iframe
    substream.substream_index = read_escaped(reader, 2, 2);
}

void parse_substream_group_info(Ac4TocParser& parser, ac4_substream_group_info& group) {
    BitReader& reader = parser.reader;
    std::vector<ac4_group_substream>& substreams = parser.toc.group_substreams;
    group.b_substreams_present = read_u8(reader, 1);
    group.b_hsf_ext = read_u8(reader, 1);
    group.b_single_substream = read_u8(reader, 1);
    group.n_lf_substreams = 1;
    if (group.b_single_substream == 0) {
        group.n_lf_substreams = read_u32(reader, 2) + 2;
        if (group.n_lf_substreams == 5) group.n_lf_substreams += read_variable_bits(reader, 2);
    }
    group.b_channel_coded = read_u8(reader, 1);
    if (group.b_channel_coded == 0) {
        group.b_oamd_substream = read_u8(reader, 1);
        if (group.b_oamd_substream != 0) {                                    // oamd_substream_info
            skip_bits(reader, 1);                                             // b_oamd_ndot
            if (group.b_substreams_present != 0) read_escaped(reader, 2, 2);  // substream_index
        }
    }
    group.first_substream = static_cast<uint32_t>(substreams.size());
    check_count(parser, group.n_lf_substreams);
    for (uint32_t i = 0; i < group.n_lf_substreams && !stopped(parser); ++i) {
        ac4_group_substream& substream = substreams.emplace_back();
        parse_group_substream(parser, group, substream);
        check_count(parser, static_cast<uint32_t>(substreams.size()));
    }
    read_ac4_content_type(reader, Ac4ContentSource::TOC, group.content_type);
    if (stopped(parser)) return;
    ac4_derive_group(group, std::span(substreams).subspan(group.first_substream, group.n_lf_substreams));
}

}  // namespace quorlin
