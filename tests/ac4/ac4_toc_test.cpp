#include "ac4/ac4_toc.h"

#include <gtest/gtest.h>

#include "ac4_samples.h"
#include "support/ac4_writer.h"

namespace {

// Up to the presentations, and a presentation that names group 0.
const std::string HEADER =
    "bitstream_version:2=2 sequence_counter:10=1 b_wait_frames:1=0 fs_index:1=1 frame_rate_index:4=13 "
    "b_iframe_global:1=1 b_single_presentation:1=1 b_payload_base:1=0 b_program_id:1=0 ";
const std::string SINGLE_GROUP =
    "b_single_substream_group:1=1 presentation_version:2=2 mdcompat:3=1 b_presentation_id:1=0 @emdf "
    "b_presentation_filter:1=0 group_index:e3.2=0 @tail ";
const std::string NO_SIZES = " @no_sizes";

int parse(std::span<const uint8_t> frame, ac4_toc& toc) {
    uint32_t position = 0;
    const int status = ac4_toc_parse(frame, position, toc);
    EXPECT_TRUE(status != 0 || position <= 8 * frame.size());
    return status;
}

// Each sample ends on the byte where its text ends; one record serves all of them, and a prefix is never enough.
TEST(Ac4Toc, EveryKindIsReadToItsEndAndNoPrefixIs) {
    ac4_toc toc;
    for (const Ac4Sample& sample : ac4_samples()) {
        std::vector<uint8_t> frame = write_fields(sample.toc);
        const size_t size = frame.size();
        for (size_t i = 0; i < size; ++i) {
            const std::vector<uint8_t> prefix(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(i));
            EXPECT_EQ(parse(prefix, toc), -1) << sample.name << " " << i;
        }
        frame.push_back(0xFF);
        uint32_t position = 0;
        EXPECT_EQ(ac4_toc_parse(frame, position, toc), 0) << sample.name;
        EXPECT_EQ(position, 8 * size) << sample.name;
    }
}

TEST(Ac4Toc, FieldsOfVersion1Presentations) {
    ac4_toc toc;
    ASSERT_EQ(parse(write_fields(ac4_sample("several").toc), toc), 0);
    EXPECT_EQ(ac4_toc_codec_string(toc), "ac-4.02.01.03");
    EXPECT_EQ(toc.b_iframe_global, 0);
    ASSERT_EQ(toc.n_presentations, 2u);
    ASSERT_EQ(toc.n_substream_groups, 3u);
    const ac4_presentation_v1_info& presentation = toc.presentations_v1[1];
    EXPECT_EQ(presentation.emdf_info, (ac4_emdf_info{.emdf_version = 3, .key_id = 300}));
    EXPECT_EQ(presentation.n_substream_groups, 5u);
    EXPECT_EQ(ac4_group_indices(toc, presentation)[3], 1);
    EXPECT_EQ(ac4_emdf_substreams(toc, presentation)[3].key_id, 15u);
    const auto substreams = ac4_group_substreams(toc, toc.substream_groups[0]);
    EXPECT_EQ(substreams[0].bitrate_indicator, 14);
    EXPECT_EQ(substreams[1].bitrate_indicator, 3);
    EXPECT_EQ(substreams[1].hsf_ext_substream_index, 3u);
    EXPECT_EQ(toc.substream_groups[1].content_type.b_serialized_language_tag, 1);

    ASSERT_EQ(parse(write_fields(ac4_sample("configs").toc), toc), 0);
    EXPECT_EQ(toc.presentations_v1[0].n_substream_groups, 1u);
    EXPECT_EQ(toc.presentations_v1[0].n_group_indices, 2u);
    EXPECT_EQ(toc.presentations_v1[1].n_substream_groups, 2u);
    EXPECT_EQ(toc.presentations_v1[1].n_group_indices, 3u);
}

TEST(Ac4Toc, FieldsOfVersion0Presentations) {
    ac4_toc toc;
    ASSERT_EQ(parse(write_fields(ac4_sample("old").toc), toc), 0);
    EXPECT_EQ(ac4_toc_codec_string(toc), "ac-4.01.00.02");
    ASSERT_EQ(toc.presentations_v0.size(), 4u);
    EXPECT_EQ(toc.presentations_v0[0].substreams[0].channel_mode, 8u);
    EXPECT_EQ(toc.presentations_v0[1].hsf_ext_substream_index, 4u);
    EXPECT_EQ(toc.presentations_v0[3].mdcompat, 1);
    EXPECT_EQ(toc.n_substream_groups, 0u);
    EXPECT_TRUE(toc.group_substreams.empty());  // those of the nested presentation are not kept
}

TEST(Ac4Toc, EscapedVersionAndNoPresentations) {
    const std::string text =
        "bitstream_version:e2.2=4 counter:10=0 wait:1=0 fs:1=1 rate:4=2 iframe:1=1 single:1=0 more:1=0 base:1=0 id:1=0";
    ac4_toc toc;
    ASSERT_EQ(parse(write_fields(text + NO_SIZES), toc), 0);
    EXPECT_EQ(toc.bitstream_version, 4);
    EXPECT_EQ(toc.n_presentations, 0u);
    EXPECT_EQ(toc.n_substream_groups, 0u);
    EXPECT_EQ(ac4_toc_codec_string(toc), "ac-4.04.01.00");
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
    std::string groups = HEADER + SINGLE_GROUP + "group:9=0x60";
    for (uint32_t i = 1; i < AC4_MAX_ELEMENTS; ++i) groups += ",0x60";
    EXPECT_EQ(status(groups, "group_index:e3.2=0", "group_index:e3.2=19999"), 0);
    EXPECT_EQ(status(groups, "group_index:e3.2=0", "group_index:e3.2=20000"), -1);
    groups = change_field(groups, "group:9=0x60", "two_substreams:16=0 group:9=0x60");
    EXPECT_EQ(status(groups, "group_index:e3.2=0", "group_index:e3.2=19999"), -1);
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

// Values that a presentation has only through its substreams.
TEST(Ac4Toc, DerivedChannelValues) {
    const std::string rates = " sf:1=0 bitrate:1=0 ndot:1=1 index:2=0 ";
    const auto group = [](const std::string& substreams, int count, bool coded) {
        return "present:1=1 hsf:1=0 " + (count == 1 ? "single:1=1 " : "single:1=0 n:2=" + std::to_string(count - 2)) +
               (coded ? " coded:1=1 " : " coded:1=0 oamd:1=0 ") + substreams + " content:1=0 ";
    };
    const auto mode = [&](const std::string& code) { return "channel_mode:" + code + rates; };
    const auto one = [&](const std::string& code) { return group(mode(code), 1, true); };
    const std::string static_dmx = group("ajoc:1=1 lfe:1=1 static:1=1 oamd:1=0 umx:4=0 dynamic:1=1" + rates, 1, false);
    const std::string dynamic_dmx =
        group("ajoc:1=1 lfe:1=1 static:1=0 dmx:4=0 dynamic:1=1 oamd:1=0 umx:4=0 dynamic:1=1" + rates, 1, false);
    struct Case {
        const char* name;
        std::string groups;
        int n_groups, version, ch_mode, core;
        uint32_t mask;
        int back, pairs;
    };
    const Case cases[] = {
        {"5.1", one("4=14"), 1, 1, 4, -1, 0x47, 0, 0},
        {"mono and stereo", one("1=0") + one("2=2"), 2, 1, 2, -1, 0x3, 0, 0},
        {"5.1 and 7.0", group(mode("4=14") + mode("7=0x78"), 2, true), 1, 1, 6, -1, 0x4F, 0, 0},
        {"no common layout", one("7=0x7C") + one("7=0x78"), 2, 1, -1, -1, 0x4000F, 0, 0},
        {"22.2", one("9=510"), 1, 1, 15, -1, 0x2FF7F, 0, 0},
        {"reserved", one("9=511 more:v2=4"), 1, 1, 20, -1, 0, 0, 0},
        {"7.1.4", one("8=0xFD layout:4=0xF"), 1, 1, 12, 6, 0x7F, 1, 2},
        {"7.0.4", one("8=0xFC layout:4=0xF"), 1, 1, 11, 5, 0x3F, 1, 2},
        {"5.1.2", one("8=0xFD layout:4=5"), 1, 1, 12, 6, 0xC7, 0, 1},
        {"9.1.4 without centre and top, and 5.0", one("9=509 layout:4=8") + one("4=13"), 2, 1, 14, 6, 0x1004F, 1, 0},
        {"channels and objects", one("4=14") + dynamic_dmx, 2, 1, -1, -1, 0x47, 0, 0},
        {"static downmix", static_dmx, 1, 1, -1, 4, 0, 0, 0},
        {"static downmix and 7.1", one("7=0x79") + static_dmx, 2, 1, -1, 6, 0x4F, 0, 0},
        {"rendered stereo", one("7=0x79"), 1, 2, 1, -1, 0x1, 0, 0},
        {"5.1 in a rendered stream", one("4=14"), 1, 2, 4, -1, 0x47, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::string text = HEADER + SINGLE_GROUP;
        if (c.n_groups == 2) {
            text = change_field(text, "b_single_substream_group:1=1", "b_single_substream_group:1=0 config:3=0");
            text = change_field(text, "group_index:e3.2=0", "b_multi_pid:1=0 group_index:e3.2=0,1");
        }
        if (c.version == 2) text = change_field(text, "presentation_version:2=2", "presentation_version:3=6");
        // The 7.X modes other than 3/4/0 have add_ch_base.
        std::string groups = c.groups;
        if (groups.find("7=0x7C") != std::string::npos) groups = change_field(groups, "ndot", "add_ch_base:1=0 ndot");
        ac4_toc toc;
        ASSERT_EQ(parse(write_fields(text + groups + NO_SIZES), toc), 0);
        const ac4_presentation_v1_info& p = toc.presentations_v1[0];
        EXPECT_EQ(p.presentation_ch_mode, c.ch_mode);
        EXPECT_EQ(p.b_presentation_channel_coded, c.ch_mode != -1);
        EXPECT_EQ(p.pres_ch_mode_core, c.core);
        EXPECT_EQ(p.presentation_channel_mask, c.mask);
        EXPECT_EQ(p.pres_b_4_back_channels_present, c.back);
        EXPECT_EQ(p.pres_top_channel_pairs, c.pairs);
    }
}

// bed_dyn_obj_assignment of an upmix with so many signals, and the kinds of objects that it stands for.
TEST(Ac4Toc, ObjectKindsOfAnUpmix) {
    struct Case {
        const char* assignment;
        int n_signals, bed, dynamic, isf;
    };
    const Case cases[] = {
        {"dyn_objects_only:1=1", 9, 0, 1, 0},
        {"isf:2=1 isf_config:3=7", 9, 0, 0, 1},
        {"code:3=1 bed_chan_assign_code:3=2", 6, 1, 0, 0},
        {"code:3=1 bed_chan_assign_code:3=2", 7, 1, 1, 0},
        {"mask:4=1 nonstd:1=0 mask:10=0x00B", 5, 1, 0, 0},  // L R, C, Ls Rs
        {"mask:4=1 nonstd:1=0 mask:10=0x206", 4, 1, 1, 0},  // C, LFE, LFE2
        {"mask:4=1 nonstd:1=1 mask:17=0x07", 3, 1, 0, 0},
        {"list:4=0 n_bed_signals_minus1:3=7 channels:32=0", 8, 1, 0, 0},
        {"list:4=0 n_bed_signals_minus1:4=0 channels:4=0", 9, 1, 1, 0},
        {"list:4=0 channels:4=0", 1, 1, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.assignment);
        const std::string text = HEADER + SINGLE_GROUP +
                                 "present:1=1 hsf:1=0 single:1=1 coded:1=0 oamd:1=0 ajoc:1=1 lfe:1=0 static:1=1 "
                                 "oamd:1=0 umx:4=" +
                                 std::to_string(c.n_signals - 1) + " " + c.assignment +
                                 " sf:1=0 bitrate:1=0 ndot:1=1 index:2=2 content:1=1 classifier:3=5 language:1=0";
        ac4_toc toc;
        ASSERT_EQ(parse(write_fields(text + NO_SIZES), toc), 0);
        const ac4_group_substream& s = toc.group_substreams[0];
        EXPECT_EQ(s.b_substream_contains_bed_objects, c.bed);
        EXPECT_EQ(s.b_substream_contains_dynamic_objects, c.dynamic);
        EXPECT_EQ(s.b_substream_contains_ISF_objects, c.isf);
        EXPECT_EQ(toc.substream_groups[0].content_type.content_classifier, 5);
    }
}

}  // namespace
