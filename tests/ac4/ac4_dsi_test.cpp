#include "ac4/ac4_dsi.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "ac4/ac4_dsi_checks.h"
#include "ac4/ac4_dsi_compare.h"
#include "ac4/ac4_toc.h"
#include "ac4_samples.h"
#include "support/ac4_writer.h"
#include "support/golden.h"
#include "support/named_texts.h"

namespace quorlin {

namespace {

const Ac4TrackClaims RIGHT = {48000, 16, 48000, 2};

// -1 without a table of contents.
int compare(const Ac4Dsi& dsi, std::span<const uint8_t> frame) {
    ac4_toc toc;
    uint32_t position = 0;
    return ac4_toc_parse(frame, position, toc) == 0 ? compare_dsi_with_toc(dsi, toc) : -1;
}

// The findings about a payload whose sample entry is as it asks for, and about its difference from a table of contents.
int parse_and_compare(std::span<const uint8_t> payload, std::span<const uint8_t> frame) {
    Ac4Dsi dsi;
    ac4_dsi_parse(payload, dsi);
    EXPECT_EQ(parse_dac4(payload,
                         {.media_timescale = dsi.frame_rate_index == 11 ? 240000u : 48000u,
                          .sample_size = 16,
                          .sample_rate = dsi.fs_index == 0 ? 44100u : 48000u,
                          .channel_count = ac4_dsi_channel_count(dsi)},
                         dsi),
              0);
    return compare(dsi, frame);
}

int parse_and_compare(const std::string& dsi_text, const std::string& toc_text) {
    return parse_and_compare(write_fields(dsi_text), write_fields(toc_text));
}

TEST(Ac4Dsi, MatchingPairsAreClean) {
    std::string report;
    for (const Ac4Sample& sample : ac4_samples())
        report += transcript_entry(sample.name, [&] {
            Ac4Dsi dsi;
            ac4_dsi_parse(write_fields(sample.dsi), dsi);
            std::printf("%s, %u channels\n", ac4_dsi_codec_string(dsi).c_str(), ac4_dsi_channel_count(dsi));
            return parse_and_compare(sample.dsi, sample.toc);
        });
    expect_golden("golden/matching_pairs.txt", report);
}

// A matching pair with one field of the payload changed gives one finding.
TEST(Ac4Dsi, EveryChangeGivesItsFinding) {
    std::string report;
    for (const auto& [name, text] : read_texts("data/changes.txt")) {
        const Ac4Sample& sample = ac4_sample(text.substr(0, text.find(": ")));
        std::istringstream changes(text.substr(text.find(": ") + 2));
        std::string dsi = sample.dsi;
        for (std::string change; std::getline(changes, change);) {
            const size_t arrow = change.find(" -> ");
            dsi = change_field(dsi, change.substr(0, arrow), change.substr(arrow + 4));
        }
        report += transcript_entry(name, [&] { return parse_and_compare(dsi, sample.toc); });
    }
    expect_golden("golden/changes.txt", report);
}

// Payloads and tables of contents with faults, at a tail that a longer one reads on in.
TEST(Ac4Dsi, DamagedPairs) {
    const auto damage = [](const std::string& text, std::mt19937& random) {
        std::vector<uint8_t> bytes = random() % 3 == 0 ? write_fields(text) : with_faults(write_fields(text), random);
        for (int i = 0; i < 32; ++i) bytes.push_back(static_cast<uint8_t>(random()));
        return bytes;
    };
    std::string report;
    for (const Ac4Sample& sample : ac4_samples())
        report += transcript_checksums(sample.name, 320, [&](std::mt19937& random) {
            const std::vector<uint8_t> payload = damage(sample.dsi, random);
            const std::vector<uint8_t> frame = damage(sample.toc, random);
            return transcript_entry("", [&] { return parse_and_compare(payload, frame); });
        });
    expect_golden("golden/damaged_pairs.txt", report);
}

TEST(Ac4Dsi, SampleEntryAndTimescale) {
    struct {
        int fs_index, frame_rate_index;
        const char* mask;
        Ac4TrackClaims claims;
    } const cases[] = {
        {1, 0, "1", {48000, 16, 48000, 2}},
        {1, 3, "1", {240000, 16, 48000, 2}},
        {1, 3, "1", {24000, 16, 48000, 2}},
        {1, 8, "1", {240000, 16, 48000, 2}},
        {1, 8, "1", {48000, 16, 48000, 2}},
        {1, 11, "1", {48000, 16, 48000, 2}},
        {1, 12, "1", {240000, 16, 48000, 2}},
        {1, 13, "1", {44100, 16, 48000, 2}},
        {1, 14, "1", {1, 16, 48000, 2}},
        {0, 2, "1", {1, 16, 44100, 2}},
        {0, 13, "1", {48000, 16, 44100, 2}},
        {0, 13, "1", {44100, 24, 44100, 2}},
        {1, 0, "1", {48000, 24, 1, 9}},
        {1, 0, "1", {48000, 16, 44100, 9}},
        {1, 0, "1", {48000, 16, 48000, 6}},
        {1, 0, "0x47", {48000, 16, 48000, 6}},
        {1, 0, "0xF80047", {48000, 16, 48000, 6}},
        {1, 0, "0x2FF7F", {48000, 16, 48000, 23}},
        {1, 0, "0x48", {48000, 16, 48000, 9}},
    };
    std::string report;
    for (const auto& c : cases) {
        const auto& [timescale, size, rate, channels] = c.claims;
        const std::string stream =
            "fs:1=" + std::to_string(c.fs_index) + " rate:4=" + std::to_string(c.frame_rate_index);
        std::string text = change_field(ac4_sample("virtual").dsi, "fs_index:1=1 frame_rate_index:4=2", stream);
        text = change_field(text, "presentation_channel_mask_v1:24=1", std::string("mask:24=") + c.mask);
        report += transcript_entry(stream + " mask " + c.mask + ", timescale " + std::to_string(timescale) + ", " +
                                       std::to_string(size) + " bits, " + std::to_string(rate) + " Hz, " +
                                       std::to_string(channels) + " channels",
                                   [&] {
                                       Ac4Dsi dsi;
                                       return parse_dac4(write_fields(text), c.claims, dsi);
                                   });
    }
    expect_golden("golden/sample_entries.txt", report);
}

// The payload of an object stream as found in the field.
TEST(Ac4Dsi, RealObjectPayload) {
    const std::vector<uint8_t> payload = {0x20, 0xba, 0x01, 0x60, 0x00, 0x00, 0x00, 0x1f, 0xff, 0xff, 0xff, 0xe0,
                                          0x01, 0x0a, 0xfc, 0x80, 0x00, 0x00, 0x08, 0x02, 0x28, 0x3d, 0x00, 0x80};
    Ac4Dsi dsi;
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(parse_dac4(payload, RIGHT, dsi), 0); }), "");
    EXPECT_EQ(ac4_dsi_codec_string(dsi), "ac-4.02.01.04");
    EXPECT_EQ(ac4_dsi_codec_string({}), "ac-4.00.00.00");
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
            EXPECT_NE(printed_by([&] { EXPECT_EQ(parse_dac4(prefix, RIGHT, dsi), 0); }), "")
                << sample.name << " " << size;
            EXPECT_NE(dsi.stop, Ac4DsiStop::COMPLETE) << sample.name << " " << size;
            printed_by([&] { EXPECT_GE(compare(dsi, write_fields(sample.toc)), 0); });
        }
    }
}

TEST(Ac4Dsi, PresentationsThatDoNotMeet) {
    Ac4Dsi dsi;
    ac4_dsi_parse(write_fields(ac4_sample("immersive").dsi), dsi);
    ac4_toc empty;
    empty.bitstream_version = 2;
    empty.frame_rate_index = dsi.frame_rate_index = 3;
    empty.n_presentations = dsi.n_presentations = 4;
    // Two presentations of immersive stereo against one and its copy, then two that the payload describes as they are.
    const Ac4Sample& rendered = ac4_sample("virtual");
    const std::string two = change_field(
        change_field(rendered.toc, "b_single_presentation:1=1", "b_single:1=0 b_more:1=1 n_presentations_minus2:v2=0"),
        "channel_mode:7=0x78", "channel_mode:2=2");
    const size_t begin = two.find("b_single_substream_group");
    const std::string presentation = two.substr(begin, two.find("b_substreams_present") - begin);
    const std::string version_1 = change_field(presentation, "presentation_version:3=6", "presentation_version:2=2");
    expect_golden("golden/presentations.txt",
                  transcript_entry("stream of version 1", [&] {
                      return compare(dsi, write_fields(ac4_sample("old").toc));
                  }) + transcript_entry("no presentations", [&] {
                      return compare_dsi_with_toc(dsi, empty);
                  }) + transcript_entry("a copy is told by what it says", [&] {
                      return parse_and_compare(rendered.dsi,
                                               change_field(two, presentation, presentation + presentation));
                  }) + transcript_entry("no copy where the table of contents has a version-1 presentation", [&] {
                      return parse_and_compare(rendered.dsi, change_field(two, presentation, presentation + version_1));
                  }));
}

}  // namespace

}  // namespace quorlin
