#include "ac4/ac4_dsi.h"

#include <gtest/gtest.h>

#include "ac4_samples.h"
#include "support/ac4_writer.h"

namespace {

struct SampleEntry {
    uint32_t timescale = 48000;
    uint32_t sample_size = 16;
    uint32_t sample_rate = 48000;
    uint32_t channel_count = 2;
};

std::string parse_output(std::span<const uint8_t> payload, const SampleEntry& entry, Ac4Dsi& dsi) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(parse_dac4(payload, entry.timescale, entry.sample_size, entry.sample_rate, entry.channel_count, dsi), 0);
    return testing::internal::GetCapturedStdout();
}

std::string compare_output(const Ac4Dsi& dsi, const std::string& toc_text) {
    ac4_toc toc;
    uint32_t position = 0;
    EXPECT_EQ(ac4_toc_parse(write_fields(toc_text), position, toc), 0);
    testing::internal::CaptureStdout();
    const int status = compare_dsi_with_toc(dsi, toc);
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, output.empty() ? 0 : 1);
    return output;
}

std::string finding(const std::string& text) {
    return "[SV]   : " + text + "\n";
}

TEST(Ac4Dsi, MatchingPairsAreClean) {
    for (const Ac4Sample& sample : ac4_samples()) {
        SCOPED_TRACE(sample.name);
        const std::vector<uint8_t> payload = write_fields(sample.dsi);
        Ac4Dsi dsi;
        read_dac4(payload, dsi);
        const SampleEntry entry{.timescale = dsi.frame_rate_index == 11 ? 240000u : 48000u,
                                .sample_rate = dsi.fs_index == 0 ? 44100u : 48000u,
                                .channel_count = ac4_dsi_channel_count(dsi)};
        EXPECT_EQ(parse_output(payload, entry, dsi), "");
        EXPECT_EQ(compare_output(dsi, sample.toc), "");
    }
}

TEST(Ac4Dsi, CodecStringAndChannelCount) {
    const std::tuple<const char*, const char*, uint32_t> expected[] = {
        {"virtual", "ac-4.02.02.00", 2}, {"several", "ac-4.02.01.03", 6}, {"immersive", "ac-4.02.01.03", 0},
        {"objects", "ac-4.02.01.04", 0}, {"configs", "ac-4.02.01.01", 8}, {"old", "ac-4.01.00.02", 8}};
    for (const auto& [name, codec_string, channel_count] : expected) {
        Ac4Dsi dsi;
        read_dac4(write_fields(ac4_sample(name).dsi), dsi);
        EXPECT_EQ(ac4_dsi_codec_string(dsi), codec_string);
        EXPECT_EQ(ac4_dsi_channel_count(dsi), channel_count) << name;
    }
}

// The payload of an object stream as found in the field.
TEST(Ac4Dsi, RealObjectPayload) {
    const std::vector<uint8_t> payload = {0x20, 0xba, 0x01, 0x60, 0x00, 0x00, 0x00, 0x1f, 0xff, 0xff, 0xff, 0xe0,
                                          0x01, 0x0a, 0xfc, 0x80, 0x00, 0x00, 0x08, 0x02, 0x28, 0x3d, 0x00, 0x80};
    Ac4Dsi dsi;
    EXPECT_EQ(parse_output(payload, {}, dsi), "");
    EXPECT_EQ(ac4_dsi_codec_string(dsi), "ac-4.02.01.04");
    const ac4_group_substream_dsi& substream = dsi.presentations[0].v1->substream_groups[0].substreams[0];
    EXPECT_EQ(substream.n_dmx_objects_minus1, 8);
    EXPECT_EQ(substream.n_umx_objects_minus1, 15);
    EXPECT_EQ(substream.b_substream_contains_dynamic_objects, 1);
}

// A cut payload is read as far as it is there, and what was read is still compared.
TEST(Ac4Dsi, EveryPrefixStopsWithAFinding) {
    for (const Ac4Sample& sample : ac4_samples()) {
        const std::vector<uint8_t> payload = write_fields(sample.dsi);
        for (size_t size = 0; size < payload.size(); ++size) {
            const std::vector<uint8_t> prefix(payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(size));
            Ac4Dsi dsi;
            EXPECT_NE(parse_output(prefix, {}, dsi), "") << sample.name << " " << size;
            EXPECT_NE(dsi.stop, AC4_DSI_COMPLETE) << sample.name << " " << size;
            compare_output(dsi, sample.toc);
        }
    }
}

TEST(Ac4Dsi, SampleEntryAndTimescale) {
    const std::string timescale = finding(
        "ERROR: The timescale parameter in the Media Header Box mismatches the media time scale which depends on "
        "frame_rate and base_samp_freq in dsi.");
    const std::string size = finding("ERROR: The SampleSize value in the AC4SampleEntry box is not set to 16.");
    const std::string rate = finding("ERROR: The SampleRate value in the AC4SampleEntry box is incorrect.");
    const std::string channels = finding("ERROR: The ChannelCount value in the AC4SampleEntry box is incorrect.");
    struct Case {
        int fs_index, frame_rate_index;
        const char* mask;
        SampleEntry entry;
        std::string output;
    };
    const Case cases[] = {
        {1, 0, "1", {48000, 16, 48000, 2}, ""},
        {1, 3, "1", {240000, 16, 48000, 2}, ""},
        {1, 3, "1", {24000, 16, 48000, 2}, timescale},
        {1, 8, "1", {240000, 16, 48000, 2}, ""},
        {1, 8, "1", {48000, 16, 48000, 2}, timescale},
        {1, 11, "1", {48000, 16, 48000, 2}, timescale},
        {1, 12, "1", {240000, 16, 48000, 2}, timescale},
        {1, 13, "1", {44100, 16, 48000, 2}, timescale},
        {1, 14, "1", {1, 16, 48000, 2}, ""},
        {0, 2, "1", {1, 16, 44100, 2}, ""},
        {0, 13, "1", {48000, 16, 44100, 2}, ""},
        {0, 13, "1", {44100, 24, 44100, 2}, timescale + size},
        {1, 0, "1", {48000, 24, 1, 9}, size},
        {1, 0, "1", {48000, 16, 44100, 9}, rate},
        {1, 0, "1", {48000, 16, 48000, 6}, channels},
        {1, 0, "0x47", {48000, 16, 48000, 6}, ""},
        {1, 0, "0xF80047", {48000, 16, 48000, 6}, ""},
        {1, 0, "0x2FF7F", {48000, 16, 48000, 23}, channels},
        {1, 0, "0x48", {48000, 16, 48000, 9}, ""},
    };
    for (const Case& c : cases) {
        std::string text =
            change_field(ac4_sample("virtual").dsi, "fs_index:1=1 frame_rate_index:4=2",
                         "fs:1=" + std::to_string(c.fs_index) + " rate:4=" + std::to_string(c.frame_rate_index));
        text = change_field(text, "presentation_channel_mask_v1:24=1", std::string("mask:24=") + c.mask);
        Ac4Dsi dsi;
        EXPECT_EQ(parse_output(write_fields(text), c.entry, dsi), c.output)
            << c.fs_index << " " << c.frame_rate_index << " " << c.mask;
    }
}

TEST(Ac4Dsi, Stops) {
    struct Case {
        const char *from, *to, *parsed, *compared;
    };
    const char* const version = "ERROR: presentation 0 version should be 1 or 2 while bitstream version is 1 or 2.";
    const Case cases[] = {
        {"presentation_version:8=1", "presentation_version:8=0",
         "ERROR: presentation 0 version should be 0 while bitstream version is not bigger than 1.", version},
        {"bitstream_version:7=2", "bitstream_version:7=3", version, "ERROR: dsi of presentation version 1 is empty."},
        {"{", "pres_bytes:8=13", "ERROR: pres_bytes should not smaller than presentation_bytes.", nullptr},
        {"{", "pres_bytes:8=15",
         "ERROR: size of AC4SpecificBox is incorrect, parsing 0xe8 bytes while the box size is 0xe0 bytes", nullptr},
        {"presentation_version:8=1 {", "presentation_version:8=3 pres_bytes:8=13",
         "ERROR: size of AC4SpecificBox is incorrect, parsing 0xd8 bytes while the box size is 0xe0 bytes", nullptr},
    };
    const Ac4Sample& sample = ac4_sample("immersive");
    for (const Case& c : cases) {
        std::string text = change_field(sample.dsi, c.from, c.to);
        if (text.find('{') == std::string::npos) text = change_field(text, "}", "align");
        Ac4Dsi dsi;
        EXPECT_EQ(parse_output(write_fields(text), {.sample_rate = 44100}, dsi), finding(c.parsed));
        EXPECT_EQ(compare_output(dsi, sample.toc), c.compared != nullptr ? finding(c.compared) : "");
    }
}

// pres_bytes of 255 goes on in the next 16 bits; the rest of a long entry is skipped.
TEST(Ac4Dsi, LongPresentations) {
    const Ac4Sample& sample = ac4_sample("immersive");
    const std::string text = change_field(sample.dsi, "{", "pres_bytes:8=255 add_pres_bytes:16=1");
    std::vector<uint8_t> payload = write_fields(change_field(text, "}", "align"));
    payload.resize(12 + 4 + 256);  // the entry begins at byte 12
    Ac4Dsi dsi;
    EXPECT_EQ(parse_output(payload, {.sample_rate = 44100}, dsi), "");
    EXPECT_EQ(compare_output(dsi, sample.toc), "");
}

struct Change {
    const char* sample;
    const char* from;
    const char* to;
    std::string text;
};

// A matching pair with one field of the payload changed gives one finding.
void expect_findings(std::span<const Change> changes) {
    for (const Change& change : changes) {
        SCOPED_TRACE(change.text);
        const Ac4Sample& sample = ac4_sample(change.sample);
        Ac4Dsi dsi;
        read_dac4(write_fields(change_field(sample.dsi, change.from, change.to)), dsi);
        EXPECT_EQ(compare_output(dsi, sample.toc), finding("ERROR:" + change.text));
    }
}

TEST(Ac4DsiCompare, StreamFields) {
    const Change changes[] = {
        {"old", "dsi_version:3=1", "dsi_version:3=0", " dsi_version in dsi should be 1 in toc."},
        {"old", "index:4=3", "index:4=2", " frame_rate_index in dsi does not match in toc.\n"},
        {"old", "n_presentations:9=4", "n_presentations:9=3", " n_presentations in dsi does not match in toc."},
        {"several", "id:16=0xBEEF", "id:16=0", " short_program_id in dsi does not match in toc."},
        {"several", "b_uuid:1=1 program_uuid:16=1,2,3,4,5,6,7,8", "b_uuid:1=0",
         " b_uuid in dsi does not match in toc."},
        {"several", "7,8", "7,0", " program_uuid in dsi does not match in toc."},
        {"objects", "b_program_id:1=0", "b_program_id:1=1 id:16=7 b_uuid:1=0",
         " short_program_id in dsi does not match in toc."},
    };
    expect_findings(changes);
}

TEST(Ac4DsiCompare, Version1Presentations) {
    const std::string one = " of presentation 1 info in dsi does not match in toc.";
    const std::string zero = " of presentation 0 info in dsi does not match ";
    const std::string core = "the result of \"pres_ch_mode_core != -1\" in toc.";
    const char* const emdf = "b_add_emdf:1=1 n_add_emdf:7=4 emdf:15=0,0,0 sub_emdf_version:5=7 sub_key_id:10=15";
    const Change changes[] = {
        {"several", "mdcompat.1:3=5", "mdcompat:3=4", " mdcompat" + one},
        {"several", "id.1:1=1 presentation_id:5=21", "id.1:1=0", " b_presentation_id" + one},
        {"several", "extended:9=21", "extended:9=277", " presentation_id" + one},
        {"several", "multiply.1:2=0", "multiply:2=1", " frame_rate_multiply_info" + one},
        {"several", "fraction:2=2", "fraction:2=1", " frame_rate_fraction_info" + one},
        {"several", "emdf_version.1:5=3", "emdf_version:5=2", " presentation_emdf_version" + one},
        {"several", "key_id.1:10=300", "key_id:10=301", " presentation_key_id" + one},
        {"several", "channel_coded.1:1=1 ch_mode.1:5=4 mask.1:24=0x47", "coded:1=0",
         " b_presentation_channel_coded" + one},
        {"several", "ch_mode.1:5=4", "ch_mode:5=3", " presentation_ch_mode" + one},
        {"configs", "config:5=1", "config:5=7 ",
         " n_substream_groups of presentation 0 info in dsi does not match in toc"},
        {"immersive", "back:1=1", "back:1=0", " pres_b_4_back_channels_present" + zero + "in toc."},
        {"immersive", "pairs:2=1", "pairs:2=2", " pres_top_channel_pairs" + zero + "top_channels_present in toc."},
        {"immersive", "mask:24=0xCD", "mask:24=0xFD", " presentation_channel_mask" + zero + "pre_channel_mask in toc."},
        {"several", "core_differs:1=0 filter", "core_differs:1=1 coded:1=0 filter",
         " b_presentation_core_differs of presentation 1 info in dsi does not match " + core},
        {"immersive", "core_coded:1=1 core_mode:2=3", "coded:1=0", " b_presentation_core_channel_coded" + zero + core},
        {"immersive", "core_mode:2=3", "core_mode:2=2",
         " dsi_presentation_channel_mode_core" + zero + "the result of \"pres_ch_mode_core - 3\" in toc."},
        {"several", "filter:1=1 enable:1=1 n_filter_bytes:8=0", "filter:1=0", " b_presentation_filter" + one},
        {"several", "enable:1=1", "enable:1=0", " b_enable_presentation" + one},
        {"several", "n_filter_bytes:8=0", "n:8=2 b:16=0", " n_filter_bytes of presentation 1 info in dsi should be 0."},
        {"several", "b_multi_pid:1=1", "b_multi_pid:1=0", " b_multi_pid" + one},
        {"virtual", "b_pre_virtualized:1=1", "b:1=0", " b_pre_virtualized of presentation 0 (IMS) info should be 1."},
        {"several", "b_pre_virtualized:1=1", "b:1=0", " b_pre_virtualized" + one},
        {"several", emdf, "b_add_emdf:1=0", " b_add_emdf_substreams" + one},
        {"several", emdf, "b_add_emdf:1=1 n:7=3 emdf:15=0,0,0", " n_add_emdf_substreams" + one},
        {"several", "sub_emdf_version:5=7", "sub:5=6", " emdf_version of emdf substream 3" + one},
        {"configs", "key_id.2:10=0", "key:10=1",
         " key_id of emdf substream 0 of presentation 2 info in dsi does not match in toc."},
        {"immersive", "config_v1:5=31", "config_v1:5=6 n_add:7=0 b:2=0 align",
         " if the b_single_substream_group element is set to 1, the presentation_config_v1 element value of "
         "presentation 0 shall be set to 0x1f\n[SV]   : ERROR: b_add_emdf_substreams" +
             zero + "in toc."},
        // The copy as version 1 of rendered stereo is paired with the same presentation.
        {"virtual", "copy_mdcompat:3=0", "mdcompat:3=1", " mdcompat" + one},
    };
    expect_findings(changes);
}

TEST(Ac4DsiCompare, GroupsAndTheirSubstreams) {
    const std::string group = " of group 0 of presentation 1 info in dsi does not match in toc.";
    const std::string joint = " of group 1 of presentation 0 info in dsi does not match in toc.";
    const std::string plain = " of group 0 of presentation 0 info in dsi does not match in toc.";
    const Change changes[] = {
        {"several", "present:1=1 hsf:1=1 coded", "present:1=0 hsf:1=1 coded", " b_substreams_present" + group},
        {"several", "present:1=1 hsf:1=1 coded", "present:1=1 hsf:1=0 coded", " b_hsf_ext" + group},
        {"immersive", "coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=0xCD", "coded:1=0 n:8=1 sf:2=0 b:1=0 objects:5=0",
         " b_channel_coded" + plain},
        {"several", "n_substreams:8=2 sf.1", "n_substreams:8=3 sf:2=2 b:1=0 mask:24=0x47 sf.1",
         " n_substreams" + group + "\n[SV]   : ERROR: dsi_sf_multiplier of substream 1" + group +
             "\n[SV]   : ERROR: dsi_substream_channel_mask of substream 1" + group},
        {"several", "b_content:1=1 classifier:3=2 b_language:1=1 n_bytes:6=3 tag:8=1,2,3", "b:1=0",
         " b_content_type" + group},
        {"several", "classifier:3=2 b_language:1=1 n_bytes", "classifier:3=3 b:1=1 n", " content_classifier" + group},
        {"several", "b_language:1=1 n_bytes:6=3 tag:8=1,2,3", "b_language:1=0", " b_language_indicator" + group},
        {"several", "n_bytes:6=3 tag:8=1,2,3", "n:6=2 tag:8=1,2", " n_language_tag_bytes" + group},
        {"several", "tag:8=1,2,3", "tag:8=1,2,4", "language_tag_bytes" + group},
        {"several", "sf.1:2=2", "sf:2=0", " dsi_sf_multiplier of substream 0" + group},
        {"several", "mask.2:24=2", "mask:24=3", " dsi_substream_channel_mask of substream 1" + group},
        {"virtual", " mask:24=1", " mask:24=0xF",
         " IMS dsi_substream_channel_mask of substream 0 of group 0 of presentation 0 info in dsi does not eqaul to 1."},
        {"objects", "ajoc.0:1=1 static:1=0 n_dmx:4=8 n_umx:6=15", "ajoc:1=0", " b_ajoc of substream 0" + joint},
        {"objects", "static.2:1=0 n_dmx:4=0", "static:1=1", " b_static_dmx of substream 2" + joint},
        {"objects", "n_dmx:4=8", "n_dmx:4=9", " n_dmx_objects_minus1 of substream 0" + joint},
        {"objects", "n_umx:6=15", "n_umx:6=19", " n_umx_objects_minus1 of substream 0" + joint},
        {"objects", "bed.3:1=0", "bed:1=1", " b_substream_contains_bed_objects of substream 3" + plain},
        {"objects", "dynamic.1:1=1", "d:1=0", " b_substream_contains_dynamic_objects of substream 1" + plain},
        {"objects", "isf.2:1=1", "isf:1=0", " b_substream_contains_ISF_objects of substream 2" + plain},
    };
    expect_findings(changes);
}

TEST(Ac4DsiCompare, Version0Presentations) {
    const std::string zero = " of presentation 0 info in dsi does not match in toc.";
    const std::string one = " of presentation 1 info in dsi does not match in toc.";
    const std::string two = " of presentation 2 info in dsi does not match in toc.";
    const std::string first = " of substream 0" + zero;
    const Change changes[] = {
        {"old", "mdcompat:3=2", "mdcompat:3=3", " mdcompat" + zero},
        {"old", "b_group_index:1=1 group_index:5=9", "b:1=0", " b_presentation_group_index" + zero},
        {"old", "group_index:5=9", "group_index:5=8", " presentation_group_index" + zero},
        {"old", "multiply:2=2", "multiply:2=3", " frame_rate_multiply_info" + zero},
        {"old", "emdf:5=0", "emdf:5=1", " presentation_emdf_version" + zero},
        {"old", "key:10=0", "key:10=1", " presentation_key_id" + zero},
        {"old", "mask.1:24=0x47", "mask:24=0x46",
         " presentation_channel_mask of presentation 1 info in dsi does not match in toc"},
        {"old", "hsf:1=1", "hsf:1=0", " b_hsf_ext" + one},
        {"old", "b_pre_virtualized.1:1=1", "b:1=0", " b_pre_virtualized" + one},
        {"old", "b_add_emdf:1=0", "b:1=1 n:7=0", " b_add_emdf_substreams" + zero},
        {"old", "n_add_emdf:7=1", "n:7=2 emdf:15=0", " n_add_emdf_substreams" + two},
        {"old", "sub_emdf:5=0", "emdf:5=9", " substream_emdf_version of emdf_substreams 0" + two},
        {"old", "sub_key:10=0", "key:10=9", " substream_key_id of emdf_substreams 0" + two},
        {"old", "channel_mode.1:5=0", "channel_mode:5=3", " channel_mode of substream 1" + one},
        {"old", "sf.1:2=2", "sf:2=1", " sf_multiplier of substream 0" + one},
        {"old", "b_bitrate.2:1=0", "b:1=1 bitrate:5=0", " b_bitrate_indicator of substream 2" + one},
        {"old", "bitrate:5=1", "bitrate:5=2", " bitrate_indicator" + first},
        {"old", "add_ch_base:1=1", "add_ch_base:1=0", " add_ch_base" + first},
        {"old", "b_content:1=1 classifier:3=1 b_language:1=1 n_bytes:6=2 tag:8=1,2", "b:1=0",
         " b_content_type" + first},
        {"old", "classifier:3=1", "classifier:3=0", " content_classifier" + first},
        {"old", "b_language:1=1 n_bytes:6=2 tag:8=1,2", "b:1=0", " b_language_indicator" + first},
        {"old", "tag:8=1,2", "tag:8=1,3", " language_tag_bytes" + first},
    };
    expect_findings(changes);
}

TEST(Ac4DsiCompare, VersionsThatDoNotMeet) {
    Ac4Dsi dsi;
    read_dac4(write_fields(ac4_sample("immersive").dsi), dsi);
    dsi.frame_rate_index = 3;
    dsi.n_presentations = 4;
    EXPECT_EQ(compare_output(dsi, ac4_sample("old").toc),
              finding("ERROR: bitstream_version should be bigger than 1 while version of presentation 0 is 1."));
    ac4_toc empty;
    empty.bitstream_version = 2;
    empty.frame_rate_index = 3;
    empty.n_presentations = 4;
    testing::internal::CaptureStdout();
    EXPECT_EQ(compare_dsi_with_toc(dsi, empty), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), finding("ERROR: toc of presentation version 1 is empty."));
}

}  // namespace
