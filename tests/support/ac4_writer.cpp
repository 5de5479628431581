#include "support/ac4_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "support/bit_writer.h"

namespace quorlin {

namespace {

const std::map<std::string, std::string> PIECES = {
    {"@emdf", "emdf_version:e2.2=0 key_id:e3.3=0 b_emdf_payloads_substream_info:1=0 protection_length:4=0"},
    {"@rates", "b_sf_multiplier:1=0 b_bitrate_info:1=0"},
    {"@tail", "b_pre_virtualized:1=0 b_add_emdf:1=0 b_alternative:1=0 b_pres_ndot:1=0 substream_index:e2.2=3"},
    {"@no_sizes", "n_substreams:2=1 b_size_present:1=0"},
    {"@bitrate", "bit_rate_mode:2=2 bit_rate:32=0 bit_rate_precision:32=0xFFFFFFFF align"},
    // Up to the presentations; a presentation of one or two groups, or of one that is rendered for headphones.
    {"@header",
     "bitstream_version:2=2 sequence_counter:10=1 b_wait_frames:1=0 fs_index:1=1 frame_rate_index:4=13 "
     "b_iframe_global:1=1 b_single_presentation:1=1 b_payload_base:1=0 b_program_id:1=0"},
    {"@v1", "mdcompat:3=1 b_presentation_id:1=0 @emdf b_presentation_filter:1=0"},
    {"@one_group", "b_single_substream_group:1=1 presentation_version:2=2 @v1 group_index:e3.2=0 @tail"},
    {"@two_groups",
     "b_single_substream_group:1=0 config:3=0 presentation_version:2=2 @v1 b_multi_pid:1=0 "
     "group_index:e3.2=0,1 @tail"},
    {"@rendered", "b_single_substream_group:1=1 presentation_version:3=6 @v1 group_index:e3.2=0 @tail"},
    // The begin of a group, and of one with a substream of advanced joint object coding; its end.
    {"@channels", "b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=1 b_channel_coded:1=1"},
    {"@two_channel_substreams",
     "b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=0 n:2=0 b_channel_coded:1=1"},
    {"@objects",
     "b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=1 b_channel_coded:1=0 b_oamd_substream:1=0"},
    {"@upmix", "@objects b_ajoc:1=1 b_lfe:1=0 b_static_dmx:1=1 b_oamd_common_data_present:1=0"},
    {"@upmix_5.1", "@objects b_ajoc:1=1 b_lfe:1=1 b_static_dmx:1=1 b_oamd_common_data_present:1=0"},
    {"@rates_and_index", "@rates b_audio_ndot:1=1 substream_index:2=0"},
    {"@end", "@rates_and_index b_content_type:1=0"},
};

// ETSI TS 103 190-1, variable_bits: the groups that lead to `value`, each with the flag that another one follows.
void put_variable(BitWriter& writer, uint32_t n, uint64_t value, bool more) {
    if (value >> n != 0) put_variable(writer, n, (value >> n) - 1, true);
    writer.put(n, value);
    writer.put(1, more);
}

void put_value(BitWriter& writer, const std::string& width, uint64_t value) {
    if (width[0] == 'v') {
        put_variable(writer, static_cast<uint32_t>(std::stoul(width.substr(1))), value, false);
    } else if (width[0] == 'e') {
        const auto bits = static_cast<uint32_t>(std::stoul(width.substr(1)));
        const auto group = static_cast<uint32_t>(std::stoul(width.substr(width.find('.') + 1)));
        const uint64_t escape = (1u << bits) - 1;
        writer.put(bits, value < escape ? value : escape);
        if (value >= escape) put_variable(writer, group, value - escape, false);
    } else {
        writer.put(static_cast<uint32_t>(std::stoul(width)), value);
    }
}

void put_field(BitWriter& writer, const std::string& field) {
    const size_t width = field.find(':') + 1;
    const size_t values = field.find('=') + 1;
    if (width == 0 || values == 0) {
        ADD_FAILURE() << "not a field: " << field;
        return;
    }
    std::istringstream list(field.substr(values));
    for (std::string value; std::getline(list, value, ',');)
        put_value(writer, field.substr(width, values - 1 - width), std::stoull(value, nullptr, 0));
}

void put_fields(BitWriter& writer, const std::string& text) {
    size_t pres_bytes = 0;
    std::istringstream fields(text);
    for (std::string field; fields >> field;) {
        if (field == "{") {
            pres_bytes = writer.bytes.size();
            writer.put(8, 0);
        } else if (field == "}") {
            writer.align();
            if (pres_bytes != 0) writer.bytes[pres_bytes] = static_cast<uint8_t>(writer.bytes.size() - pres_bytes - 1);
        } else if (field == "align") {
            writer.align();
        } else if (field[0] == '@') {
            put_fields(writer, PIECES.at(field));
        } else {
            put_field(writer, field);
        }
    }
}

}  // namespace

std::vector<uint8_t> write_fields(const std::string& text) {
    BitWriter writer;
    put_fields(writer, text);
    return writer.bytes;
}

std::string change_field(const std::string& text, const std::string& from, const std::string& to) {
    std::string line = text;
    std::replace(line.begin(), line.end(), '\n', ' ');
    const size_t place = line.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return place == std::string::npos ? line : line.replace(place, from.size(), to);
}

}  // namespace quorlin
