#include "ac4/ac4_toc.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdio>
#include <map>

#include "ac4_samples.h"
#include "support/ac4_writer.h"
#include "support/golden.h"
#include "support/named_texts.h"

namespace quorlin {

namespace {

int parse(std::span<const uint8_t> frame, ac4_toc& toc) {
    uint32_t position = 0;
    const int status = ac4_toc_parse(frame, position, toc);
    EXPECT_TRUE(status != 0 || position <= 8 * frame.size());
    return status;
}

void print_version_0(const ac4_presentation_info& p) {
    std::printf("version 0: mdcompat %d id %u factor %d hsf index %u mask 0x%X EMDF substreams %u\n", p.mdcompat,
                p.presentation_id, p.frame_rate_factor, p.hsf_ext_substream_index, p.presentation_channel_mask,
                p.n_add_emdf_substreams);
    for (size_t i = 0; i < p.n_substreams; ++i)
        std::printf("  substream: mode %d bitrate %d add_ch_base %d index %u\n",
                    channel_mode_number(p.substreams[i].channel_mode), p.substreams[i].bitrate_indicator,
                    p.substreams[i].add_ch_base, p.substreams[i].substream_index);
}

void print_version_1(const ac4_toc& toc, const ac4_presentation_v1_info& p) {
    std::printf("version %u: mdcompat %d id %u factor %d fraction %d EMDF %u/%u groups %u:", p.presentation_version,
                p.mdcompat, p.presentation_id, p.frame_rate_factor, p.frame_rate_fraction, p.emdf_info.emdf_version,
                p.emdf_info.key_id, p.n_substream_groups);
    for (const uint16_t index : ac4_group_indices(toc, p)) std::printf(" %d", index);
    for (const ac4_emdf_info& emdf : ac4_emdf_substreams(toc, p))
        std::printf(" EMDF %u/%u", emdf.emdf_version, emdf.key_id);
    std::printf("\n  mode %d core %d mask 0x%X back %d top pairs %d\n", channel_mode_number(p.presentation_ch_mode),
                channel_mode_number(p.pres_ch_mode_core), p.presentation_channel_mask, p.pres_b_4_back_channels_present,
                p.pres_top_channel_pairs);
    EXPECT_EQ(p.b_presentation_channel_coded, p.presentation_ch_mode != Ac4ChannelMode::NONE);
}

void print_group(const ac4_toc& toc, const ac4_substream_group_info& group) {
    const ac4_content_type& content = group.content_type;
    std::printf("group: content %d serialized tag %d tag of %d\n", content.content_classifier,
                content.b_serialized_language_tag, content.n_language_tag_bytes);
    for (const ac4_group_substream& s : ac4_group_substreams(toc, group))
        std::printf("  substream: mode %d sf %d bitrate %d bed %d dynamic %d ISF %d index %u hsf index %u\n",
                    channel_mode_number(s.channel_mode), s.sf_multiplier, s.bitrate_indicator,
                    s.b_substream_contains_bed_objects, s.b_substream_contains_dynamic_objects,
                    s.b_substream_contains_ISF_objects, s.substream_index, s.hsf_ext_substream_index);
}

int print_toc(std::span<const uint8_t> frame) {
    ac4_toc toc;
    const int status = parse(frame, toc);
    if (status != 0) return status;
    std::printf("%s iframe %d presentations %u groups %u of substreams %zu\n", ac4_toc_codec_string(toc).c_str(),
                toc.b_iframe_global, toc.n_presentations, toc.n_substream_groups, toc.group_substreams.size());
    for (const ac4_presentation_info& presentation : toc.presentations_v0) print_version_0(presentation);
    for (const ac4_presentation_v1_info& presentation : toc.presentations_v1) print_version_1(toc, presentation);
    for (const ac4_substream_group_info& group : toc.substream_groups) print_group(toc, group);
    return status;
}

// Fields as they are read, and what follows from them.
TEST(Ac4Toc, FieldsAndDerivedValues) {
    std::string report;
    for (const Ac4Sample& sample : ac4_samples())
        report += transcript_entry(sample.name, [&] { return print_toc(write_fields(sample.toc)); });
    for (const auto& [name, text] : read_texts("data/tables_of_contents.txt"))
        report += transcript_entry(name, [&toc = text] { return print_toc(write_fields(toc)); });
    report += transcript_checksums("damaged", 2560, [](std::mt19937& random) {
        const std::vector<Ac4Sample>& samples = ac4_samples();
        std::vector<uint8_t> frame = with_faults(write_fields(samples[random() % samples.size()].toc), random);
        for (int i = 0; i < 64; ++i) frame.push_back(static_cast<uint8_t>(random()));
        return transcript_entry("", [&] { return print_toc(frame); });
    });
    expect_golden("golden/tables_of_contents.txt", report);
}

// The channels of a mode are those of its mask, where most bits stand for a pair. Supersets by number of channels.
TEST(Ac4Toc, Layouts) {
    constexpr uint32_t SINGLE_CHANNELS = 1u << 1 | 1u << 6 | 0xFu << 9 | 3u << 14;
    for (int mode = 0; mode <= channel_mode_number(Ac4ChannelMode::L22_2); ++mode) {
        const uint32_t mask = ac4_channel_mode_mask(static_cast<Ac4ChannelMode>(mode));
        const int pairs = std::popcount(mask & ~SINGLE_CHANNELS);
        EXPECT_EQ(ac4_channel_count(mask), static_cast<uint32_t>(std::popcount(mask) + pairs)) << mode;
    }
    for (const auto& [a, b, superset] : std::vector<std::array<int, 3>>{{0, 1, 1},
                                                                        {1, 2, 2},
                                                                        {2, 3, 3},
                                                                        {3, 4, 4},
                                                                        {4, 5, 6},
                                                                        {5, 7, 7},
                                                                        {6, 7, 8},
                                                                        {7, 9, 9},
                                                                        {8, 9, 10},
                                                                        {9, 11, 11},
                                                                        {12, 11, 12},
                                                                        {13, 10, 14},
                                                                        {14, 13, 14},
                                                                        {0, 15, 15}}) {
        Ac4LayoutSuperset layouts;
        ac4_add_layout(layouts, static_cast<Ac4ChannelMode>(a));
        ac4_add_layout(layouts, static_cast<Ac4ChannelMode>(b));
        EXPECT_EQ(channel_mode_number(ac4_superset_mode(layouts)), superset) << a << " " << b;
    }
}

// Each sample ends on the byte where its text ends; one record serves all of them. No prefix is a table of contents;
// the head is readable from the prefix on that holds mdcompat of the first presentation.
TEST(Ac4Toc, EveryKindIsReadToItsEndAndNoPrefixIs) {
    const std::map<std::string, size_t> head_bytes = {{"virtual", 5}, {"several", 25}, {"immersive", 4},
                                                      {"objects", 5}, {"configs", 5},  {"old", 4}};
    ac4_toc toc;
    for (const Ac4Sample& sample : ac4_samples()) {
        std::vector<uint8_t> frame = write_fields(sample.toc);
        const size_t size = frame.size();
        ASSERT_EQ(parse(frame, toc), 0) << sample.name;
        const std::string codec_string = ac4_toc_codec_string(toc);
        for (size_t i = 0; i < size; ++i) {
            const std::vector<uint8_t> prefix(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(i));
            EXPECT_EQ(parse(prefix, toc), -1) << sample.name << " " << i;
            const bool has_head = ac4_toc_parse_head(prefix, toc) == 0;
            EXPECT_EQ(has_head, i >= head_bytes.at(sample.name)) << sample.name << " " << i;
            EXPECT_TRUE(!has_head || ac4_toc_codec_string(toc) == codec_string) << sample.name << " " << i;
        }
        frame.push_back(0xFF);
        uint32_t position = 0;
        EXPECT_EQ(ac4_toc_parse(frame, position, toc), 0) << sample.name;
        EXPECT_EQ(position, 8 * size) << sample.name;
    }
}

TEST(Ac4Toc, BeginsAndAlignsAtAnyBit) {
    const std::string& text = ac4_sample("virtual").toc;
    ac4_toc toc;
    uint32_t position = 11;
    ASSERT_EQ(ac4_toc_parse(write_fields("before:11=0 " + change_field(text, "align", "padding:8=255")), position, toc),
              0);
    EXPECT_EQ(position, 11 + 8 * 17u);
    EXPECT_EQ(toc.presentations_v1[0].presentation_version, 2u);
}

TEST(Ac4Toc, NoAllocationAfterTheFirstFrame) {
    const std::vector<uint8_t> bytes = write_fields(ac4_sample("several").toc);
    ac4_toc toc;
    ASSERT_EQ(parse(bytes, toc), 0);
    const auto arrays = [&toc] {
        return std::array<const void*, 5>{toc.presentations_v1.data(), toc.substream_groups.data(),
                                          toc.group_substreams.data(), toc.group_indices.data(),
                                          toc.emdf_substreams.data()};
    };
    const auto before = arrays();
    ASSERT_EQ(parse(bytes, toc), 0);
    EXPECT_EQ(arrays(), before);
}

TEST(Ac4Toc, CountsHaveALimit) {
    const std::string& old = ac4_sample("old").toc;
    const std::string& several = ac4_sample("several").toc;
    const auto status = [](const std::string& text, const std::string& from, const std::string& to) {
        std::vector<uint8_t> frame = write_fields(change_field(text, from, to));
        frame.resize(frame.size() + 2000000);
        ac4_toc toc;
        return parse(frame, toc);
    };
    EXPECT_EQ(status(old, "n_presentations_minus2:v2=2", "n:v2=19998"), 0);
    EXPECT_EQ(status(old, "n_presentations_minus2:v2=2", "n:v2=19999"), -1);
    // Groups of one substream without anything, up to the largest index.
    std::string groups = "@header b_single:1=1 version:2=2 @v1 group_index:e3.2=0 @tail group:9=0x60";
    for (uint32_t i = 1; i < AC4_MAX_ELEMENTS; ++i) groups += ",0x60";
    EXPECT_EQ(status(groups, "group_index:e3.2=0", "group_index:e3.2=19999"), 0);
    EXPECT_EQ(status(groups, "group_index:e3.2=0", "group_index:e3.2=20000"), -1);
    groups = change_field(groups, "group:9=0x60", "two_substreams:16=0 group:9=0x60");
    EXPECT_EQ(status(groups, "group_index:e3.2=0", "group_index:e3.2=19999"), -1);
    EXPECT_EQ(status(several, "n_add_emdf_substreams:v2=0", "n:v2=19996"), 0);
    EXPECT_EQ(status(several, "n_add_emdf_substreams:v2=0", "n:v2=19997"), -1);
    EXPECT_EQ(status(several, "n_substreams:v2=1", "n:v2=19996"), 0);
    EXPECT_EQ(status(several, "n_substreams:v2=1", "n:v2=19997"), -1);
}

// Presentations may lie inside presentations, but not without end.
TEST(Ac4Toc, NestingHasALimit) {
    for (const int depth : {63, 64}) {
        std::string text =
            "bitstream_version:2=1 counter:10=0 wait:1=0 fs:1=1 rate:4=13 iframe:1=1 single:1=1 base:1=0 "
            "b_single:1=0 config:e3.2=7 version:1=0 mdcompat:3=0 id:1=0 @emdf hsf:1=0 ";
        for (int i = 0; i < depth; ++i)
            text += "n_skip_bytes:5=0 more:1=0 single:1=0 config:e3.2=7 id:1=0 @emdf filter:1=0 multi:1=0 ";
        text += "n_skip_bytes:5=0 more:1=0 single:1=0 config:e3.2=6 n_add:2=1 @emdf rest:1000=0";
        ac4_toc toc;
        EXPECT_EQ(parse(write_fields(text), toc), depth < 64 ? 0 : -1) << depth;
    }
}

}  // namespace

}  // namespace quorlin
