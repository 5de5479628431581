#include "ac4/ac4_presentations.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "ac4/ac4_substreams.h"

namespace quorlin {

namespace {

constexpr uint32_t MAX_NESTED_PRESENTATIONS = 64;

uint32_t read_unary(BitReader& reader) {
    uint32_t ones = 0;
    while (read_flag(reader)) ++ones;  // bits after the end are zero
    return ones;
}

// ETSI TS 103 190-2, frame_rate_multiply_info: returns frame_rate_factor.
uint8_t parse_frame_rate_multiply_info(Ac4TocParser& parser) {
    uint8_t factor = 1;
    switch (parser.toc.frame_rate_index) {
        case 2:
        case 3:
        case 4:
            if (read_flag(parser.reader)) factor = read_flag(parser.reader) ? 4 : 2;
            break;
        case 0:
        case 1:
        case 7:
        case 8:
        case 9:
            if (read_flag(parser.reader)) factor = 2;
            break;
        default:
            break;
    }
    parser.frame_rate_factor = factor;
    return factor;
}

// ETSI TS 103 190-2, frame_rate_fractions_info: returns frame_rate_fraction.
uint8_t parse_frame_rate_fractions_info(Ac4TocParser& parser) {
    const uint8_t index = parser.toc.frame_rate_index;
    if (index >= 5 && index <= 9) return parser.frame_rate_factor == 1 && read_flag(parser.reader) ? 2 : 1;
    if (index < 10 || index > 12 || !read_flag(parser.reader)) return 1;
    return read_flag(parser.reader) ? 4 : 2;
}

// ETSI TS 103 190-2, emdf_info with emdf_protection.
ac4_emdf_info parse_emdf_info(BitReader& reader) {
    constexpr std::array<uint8_t, 4> PROTECTION_BITS = {0, 8, 32, 128};
    ac4_emdf_info info;
    info.emdf_version = read_escaped(reader, 2, 2);
    info.key_id = read_escaped(reader, 3, 3);
    if (read_flag(reader)) read_escaped(reader, 2, 2);  // emdf_payloads_substream_info: substream_index
    const uint32_t protection_length_primary = read_u32(reader, 2);
    const uint32_t protection_length_secondary = read_u32(reader, 2);
    skip_bits(reader, PROTECTION_BITS[protection_length_primary] + PROTECTION_BITS[protection_length_secondary]);
    return info;
}

// The additional EMDF substreams: count and emdf_info of each. Returns the count.
uint32_t parse_emdf_substreams(Ac4TocParser& parser) {
    BitReader& reader = parser.reader;
    uint32_t n_add_emdf_substreams = read_u32(reader, 2);
    if (n_add_emdf_substreams == 0) n_add_emdf_substreams = read_variable_bits(reader, 2) + 4;
    check_count(parser, n_add_emdf_substreams);
    for (uint32_t i = 0; i < n_add_emdf_substreams && !stopped(parser); ++i)
        parser.toc.emdf_substreams.push_back(parse_emdf_info(reader));
    return n_add_emdf_substreams;
}

// A version-1 presentation in the extension of a bitstream_version 1 presentation is read for its length alone. Returns
// the whole bytes it takes.
uint32_t skip_nested_presentation(Ac4TocParser& parser) {
    ac4_toc& toc = parser.toc;
    const uint32_t start = parser.reader.position;
    const size_t substreams = toc.group_substreams.size();
    const size_t indices = toc.group_indices.size();
    const size_t emdf_substreams = toc.emdf_substreams.size();
    if (++parser.nesting > MAX_NESTED_PRESENTATIONS) {
        parser.too_many = true;
    } else {
        ac4_presentation_v1_info nested;
        parse_presentation_v1_info(parser, nested);
    }
    --parser.nesting;
    toc.group_substreams.resize(substreams);
    toc.group_indices.resize(indices);
    toc.emdf_substreams.resize(emdf_substreams);
    align(parser.reader, start);
    return (parser.reader.position - start) / 8;
}

// ETSI TS 103 190-2, presentation_config_ext_info.
void parse_presentation_config_ext_info(Ac4TocParser& parser, uint32_t presentation_config) {
    BitReader& reader = parser.reader;
    uint64_t n_skip_bytes = read_u32(reader, 5);
    if (read_flag(reader)) n_skip_bytes += uint64_t{read_variable_bits(reader, 2)} << 5;  // b_more_skip_bytes
    if (parser.toc.bitstream_version == 1 && presentation_config == 7)
        n_skip_bytes -= std::min<uint64_t>(n_skip_bytes, skip_nested_presentation(parser));
    skip_bits(reader, 8 * n_skip_bytes);
}

// ETSI TS 103 190-2, ac4_sgi_specifier: returns the index of the substream group.
uint16_t parse_sgi_specifier(Ac4TocParser& parser) {
    if (parser.toc.bitstream_version == 1) {
        ac4_substream_group_info group;
        parse_substream_group_info(parser, group);
        return AC4_NO_GROUP_INDEX;
    }
    const uint32_t group_index = read_escaped(parser.reader, 3, 2);
    if (group_index >= AC4_MAX_ELEMENTS) {
        parser.too_many = true;
        return AC4_NO_GROUP_INDEX;
    }
    parser.toc.n_substream_groups = std::max(parser.toc.n_substream_groups, group_index + 1);
    return static_cast<uint16_t>(group_index);
}

// The number of groups and of coded specifiers by presentation_config.
void parse_group_counts(Ac4TocParser& parser, ac4_presentation_v1_info& presentation) {
    // Main with dialogue enhancement counts as one group, with an associated group as two, although the enhancement
    // has a specifier of its own.
    constexpr std::array<uint8_t, 5> GROUPS = {2, 1, 2, 3, 2};
    const uint32_t config = presentation.presentation_config;
    if (presentation.b_single_substream_group != 0) {
        presentation.n_substream_groups = presentation.n_group_indices = 1;
    } else if (config < GROUPS.size()) {
        presentation.n_substream_groups = GROUPS[config];
        presentation.n_group_indices = AC4_CONFIG_SPECIFIERS[config];
    } else if (config == 5) {
        uint32_t n_substream_groups = read_u32(parser.reader, 2) + 2;
        if (n_substream_groups == 5) n_substream_groups += read_variable_bits(parser.reader, 2);
        check_count(parser, n_substream_groups);
        presentation.n_substream_groups = presentation.n_group_indices = n_substream_groups;
    }
}

// What follows mdcompat in ac4_presentation_v1_info, unless the presentation consists of EMDF substreams alone.
void parse_presentation_v1_body(Ac4TocParser& parser, ac4_presentation_v1_info& presentation) {
    BitReader& reader = parser.reader;
    presentation.b_presentation_id = read_u8(reader, 1);
    if (presentation.b_presentation_id != 0) presentation.presentation_id = read_variable_bits(reader, 2);
    presentation.frame_rate_factor = parse_frame_rate_multiply_info(parser);
    presentation.frame_rate_fraction = parse_frame_rate_fractions_info(parser);
    presentation.emdf_info = parse_emdf_info(reader);
    presentation.b_presentation_filter = read_u8(reader, 1);
    if (presentation.b_presentation_filter != 0) presentation.b_enable_presentation = read_u8(reader, 1);
    if (presentation.b_single_substream_group == 0) presentation.b_multi_pid = read_u8(reader, 1);
    parse_group_counts(parser, presentation);
    for (uint32_t i = 0; i < presentation.n_group_indices && !stopped(parser); ++i)
        parser.toc.group_indices.push_back(parse_sgi_specifier(parser));
    if (presentation.b_single_substream_group == 0 && presentation.presentation_config > AC4_CONFIG_EMDF_ONLY)
        parse_presentation_config_ext_info(parser, presentation.presentation_config);
    presentation.b_pre_virtualized = read_u8(reader, 1);
    presentation.b_add_emdf_substreams = read_u8(reader, 1);
    presentation.b_alternative = read_u8(reader, 1);  // ac4_presentation_substream_info
    skip_bits(reader, 1);                             // b_pres_ndot
    read_escaped(reader, 2, 2);                       // substream_index
}

// One ac4_substream_info of a version-0 presentation, the first one with the ac4_hsf_ext_substream_info after it.
void parse_presentation_substreams(Ac4TocParser& parser, ac4_presentation_info& presentation) {
    if (presentation.b_single_substream != 0) {
        presentation.n_substreams = 1;
    } else if (presentation.presentation_config < AC4_CONFIG_SUBSTREAMS.size()) {
        presentation.n_substreams = AC4_CONFIG_SUBSTREAMS[presentation.presentation_config];
    }
    for (uint32_t i = 0; i < presentation.n_substreams; ++i) {
        parse_substream_info(parser, presentation.substreams[i]);
        presentation.presentation_channel_mask |= ac4_channel_mode_mask(presentation.substreams[i].channel_mode);
        if (i == 0 && presentation.b_hsf_ext != 0)
            presentation.hsf_ext_substream_index = read_escaped(parser.reader, 2, 2);
    }
}

// What follows mdcompat in ac4_presentation_info, unless the presentation consists of EMDF substreams alone.
void parse_presentation_body(Ac4TocParser& parser, ac4_presentation_info& presentation) {
    BitReader& reader = parser.reader;
    presentation.b_presentation_id = read_u8(reader, 1);
    if (presentation.b_presentation_id != 0) presentation.presentation_id = read_variable_bits(reader, 2);
    presentation.frame_rate_factor = parse_frame_rate_multiply_info(parser);
    presentation.emdf_info = parse_emdf_info(reader);
    if (presentation.b_single_substream == 0) presentation.b_hsf_ext = read_u8(reader, 1);
    parse_presentation_substreams(parser, presentation);
    if (presentation.b_single_substream == 0 && presentation.presentation_config > AC4_CONFIG_EMDF_ONLY)
        parse_presentation_config_ext_info(parser, presentation.presentation_config);
    presentation.b_pre_virtualized = read_u8(reader, 1);
    presentation.b_add_emdf_substreams = read_u8(reader, 1);
}

// Called where mdcompat of a presentation is known; only the first one counts.
void mark_mdcompat(Ac4TocParser& parser) {
    if (!parser.first_mdcompat_end) parser.first_mdcompat_end = parser.reader.position;
}

}  // namespace

void parse_presentation_info(Ac4TocParser& parser, ac4_presentation_info& presentation) {
    BitReader& reader = parser.reader;
    presentation.b_single_substream = read_u8(reader, 1);
    if (presentation.b_single_substream == 0) presentation.presentation_config = read_escaped(reader, 3, 2);
    presentation.presentation_version = read_unary(reader);
    const bool emdf_only =
        presentation.b_single_substream == 0 && presentation.presentation_config == AC4_CONFIG_EMDF_ONLY;
    if (!emdf_only) presentation.mdcompat = read_u8(reader, 3);
    mark_mdcompat(parser);
    if (emdf_only) {
        presentation.b_add_emdf_substreams = 1;
    } else {
        parse_presentation_body(parser, presentation);
    }
    presentation.first_emdf_substream = static_cast<uint32_t>(parser.toc.emdf_substreams.size());
    if (presentation.b_add_emdf_substreams != 0) presentation.n_add_emdf_substreams = parse_emdf_substreams(parser);
}

void parse_presentation_v1_info(Ac4TocParser& parser, ac4_presentation_v1_info& presentation) {
    BitReader& reader = parser.reader;
    const bool nested = parser.toc.bitstream_version == 1;
    presentation.b_single_substream_group = read_u8(reader, 1);
    if (presentation.b_single_substream_group == 0) presentation.presentation_config = read_escaped(reader, 3, 2);
    if (!nested) presentation.presentation_version = read_unary(reader);
    const bool emdf_only =
        presentation.b_single_substream_group == 0 && presentation.presentation_config == AC4_CONFIG_EMDF_ONLY;
    if (!emdf_only && !nested) presentation.mdcompat = read_u8(reader, 3);
    mark_mdcompat(parser);
    presentation.first_group_index = static_cast<uint32_t>(parser.toc.group_indices.size());
    if (emdf_only) {
        presentation.b_add_emdf_substreams = 1;
    } else {
        parse_presentation_v1_body(parser, presentation);
    }
    presentation.first_emdf_substream = static_cast<uint32_t>(parser.toc.emdf_substreams.size());
    if (presentation.b_add_emdf_substreams != 0) presentation.n_add_emdf_substreams = parse_emdf_substreams(parser);
}

}  // namespace quorlin
