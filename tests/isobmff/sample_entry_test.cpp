// Codec configurations, and sample entries against CODECS and CHANNELS.
#include "isobmff/codec_configuration.h"

#include "isobmff/box_reader.h"
#include "segment_run.h"

namespace {

TrackRecord parse_entry(const Bytes& entry, int expected_status = 0) {
    const Bytes file = init_with_entry(entry);
    MediaContext context;
    FileReader reader = open_bytes(file);
    context.file_size = file.size();
    EXPECT_EQ(parse_media(context, reader), 0);
    EXPECT_EQ(context.status, expected_status);
    return std::move(*context.tracks.at(0));
}

Bytes ec3_entry(const Bytes& payload) {
    return audio_entry("ec-3", 2, {box("dec3", {payload})});
}

TEST(Dec3, ChannelCount) {
    struct {
        const char* name;
        Bytes payload;
        uint32_t channels;
    } const cases[] = {
        {"1+1", {6, 0, 0x20, 0, 0}, 2},
        {"mono with LFE", {6, 0, 0x20, 3, 0}, 2},
        {"3/1", {6, 0, 0x20, 0x0A, 0}, 4},
        {"5.1", {6, 0, 0x20, 0x0F, 0}, 6},
        {"7.1, rear surrounds", {6, 0, 0x20, 0x0F, 2, 2}, 8},
        {"5.1 and Cs", {6, 0, 0x20, 0x0F, 2, 4}, 7},
        {"3/1 and Cs counts once", {6, 0, 0x20, 0x0A, 2, 4}, 4},
        {"every location", {6, 0, 0x20, 0x0F, 3, 0xFF}, 6 + 5 * 2 + 3 + 1},
        {"cut behind its first byte", {6}, 2},
        {"the first substream counts", {6, 1, 0x20, 2, 0, 0x20, 0x0F, 0}, 1},
    };
    for (const auto& c : cases) EXPECT_EQ(parse_entry(ec3_entry(c.payload)).channel_count, c.channels) << c.name;
}

TEST(Dec3, FieldsAndReservedBits) {
    std::string printed = printed_by([] {
        const Ec3Configuration ec3 =
            parse_entry(ec3_entry({0x14, 1, 0x61, 0x9F, 0xE5, 2, 0x20, 0x0F, 0x40, 1, 16})).ec3;
        EXPECT_EQ(ec3.data_rate, 640u);
        EXPECT_EQ(ec3.num_ind_sub, 2u);
        EXPECT_EQ(ec3.substreams[0].fscod, 1u);
        EXPECT_EQ(ec3.substreams[0].bsid, 16u);
        EXPECT_EQ(ec3.substreams[0].asvc, 1u);
        EXPECT_EQ(ec3.substreams[0].bsmod, 1u);
        EXPECT_EQ(ec3.substreams[0].num_dep_sub, 2u);
        EXPECT_EQ(ec3.substreams[0].chan_loc, 0x102u);
        EXPECT_EQ(ec3.substreams[1].acmod, 7u);
        EXPECT_EQ(ec3.flag_ec3_extension_type_a, 1u);
        EXPECT_EQ(ec3.complexity_index_type_a, 16u);
    });
    // Bit 0 of the first byte, value 0x20 of the third; its value 0x40 is not looked at.
    EXPECT_EQ(printed, "ERROR: Reserved field is not zero.\nERROR: Reserved field is not zero.\n");
    EXPECT_EQ(parse_entry(ec3_entry({6, 0, 0x20, 0x0F, 0, 0, 16})).ec3.complexity_index_type_a, 0u);
}

TEST(Dec3, ChannelMapsBecomeChannelLocations) {
    EXPECT_EQ(chanmap_to_chan_loc(0xF801), 0u) << "the channels of 5.1 are no locations";
    EXPECT_EQ(chanmap_to_chan_loc(0x0200), 2u);
    EXPECT_EQ(chanmap_to_chan_loc(0x0004), 0u) << "Lts/Rts has none";
    EXPECT_EQ(chanmap_to_chan_loc(0x07FA), 0x1FFu);
}

TEST(AvcC, PiffFormAndCuts) {
    const VideoConfiguration piff =
        parse_entry(
            visual_entry("avc1", {box("avcC", {text_bytes("PIFF"), {0, 0, 0, 1, 7, 7, 0, 0, 0, 1, 8, 0, 0, 0, 1, 9}})}))
            .video;
    EXPECT_EQ(piff.length_size_minus_one, 3u);
    ASSERT_EQ(piff.sps.size(), 1u);
    EXPECT_EQ(piff.sps[0].size, 2u);
    EXPECT_EQ(piff.pps.size(), 2u);

    Bytes payload = avcC(2, {{7, 7}}, {{8}, {8}});
    payload.erase(payload.begin(), payload.begin() + 8);
    for (size_t size = 0; size <= payload.size(); ++size) {
        const Bytes cut(payload.begin(), payload.begin() + static_cast<ptrdiff_t>(size));
        const VideoConfiguration video = parse_entry(visual_entry("avc1", {box("avcC", {cut})})).video;
        EXPECT_EQ(video.sps.size(), size < 10 ? 0u : 1u) << size;
        EXPECT_EQ(video.pps.size(), size < 14 ? 0u : size < 17 ? 1u : 2u) << size;
    }
}

TEST(HvcC, SetsThatRunPastThePayload) {
    Bytes payload = hvcC(4, {{32, {{1}}}, {39, {{1}}}, {34, {{1}, {2, 2, 2}}}});
    payload.erase(payload.begin(), payload.begin() + 8);
    payload.resize(payload.size() - 2);
    const std::string printed = printed_by([&] {
        const VideoConfiguration video = parse_entry(visual_entry("hvc1", {box("hvcC", {payload})}), 11).video;
        EXPECT_EQ(video.vps.size(), 1u);
        EXPECT_EQ(video.pps.size(), 1u);
    });
    EXPECT_EQ(printed, "[SV]   : PPS offset + length (43 + 3) exceeds DSI size (44)\n");
}

struct EntryCase {
    const char* name;
    Bytes entry;
    const char* codecs;
    const char* channels;  // null: no CHANNELS
};

Bytes ac4_entry(const Bytes& dac4) {
    return audio_entry("ac-4", 2, {dac4});
}

// bitstream_version 2, one presentation of version 1 with mdcompat 1 and six channels.
const Bytes DAC4_51 = {0x20, 0xBA, 0x01, 0,    0, 0, 0,    0x1F, 0xFF, 0xFF, 0xFF, 0xE0, 0x01, 0x0D,
                       0xF9, 0,    0,    0x09, 0, 0, 0x11, 0xCA, 0x02, 0,    0,    0x11, 0xC0};

std::vector<EntryCase> entry_cases() {
    const Bytes aac = audio_entry("mp4a", 2, {});
    const Bytes ac3 = audio_entry("ac-3", 2, {});
    const Bytes ec3 = ec3_entry({6, 0, 0x20, 0x0F, 0});
    const Bytes joc = ec3_entry({6, 0, 0x20, 0x0F, 0, 1, 16});
    const Bytes ac4 = ac4_entry(box("dac4", {DAC4_51}));
    const Bytes avc = visual_entry("avc1", {});
    const Bytes hevc = visual_entry("hev1", {});
    return {
        {"AAC", aac, "mp4a.40.2,avc1.640028", nullptr},
        {"AAC missing", aac, "avc1.640028", nullptr},
        {"AC-3", ac3, "ac-3", nullptr},
        {"AC-3 in a list", ac3, "ac-3,avc1.640028", nullptr},
        {"E-AC-3", ec3, "ec-3", "6"},
        {"E-AC-3 in a list, wrong channels", ec3, "ec-3,mp4a", "2"},
        {"part of the name", ec3, "c-3", "6 channels"},
        {"E-AC-3 objects", joc, "ec-3", "16/JOC"},
        {"E-AC-3 objects as 16", joc, "ec-3", "16"},
        {"channels announce objects", ec3, "ec-3", "16/JOC"},
        {"AC-4", ac4, "ac-4.02.01.01", "6"},
        {"AC-4, wrong channels", ac4, "ac-4.02.01.01", "2"},
        {"AC-4, other mdcompat", ac4, "ac-4.02.01.03", "6"},
        {"AC-4, not named", ac4, "2.01.01", nullptr},
        {"AC-4 without dac4", ac4_entry({}), "ac-4.02.01.01", "6"},
        {"H.264", avc, "lmav.09.01", nullptr},
        {"H.264 missing", avc, "hvc1.2.4.L60", "2"},
        {"H.265", hevc, "lmh1.08.01", nullptr},
        {"H.265 missing", hevc, "avc1", nullptr},
        {"without CODECS", joc, "", "2"},
        {"unknown entry", box("wvtt", {}), "mp4a", "2"},
    };
}

TEST(SampleEntry, AgainstThePlaylist) {
    std::string report;
    for (const EntryCase& c : entry_cases()) {
        PlaylistAttributes attrs;
        attrs.codecs = c.codecs;
        if (c.channels != nullptr) attrs.channels = c.channels;
        const SegmentRun run = run_segments({init_with_entry(c.entry)}, {.attrs = &attrs});
        report += "== " + std::string(c.name) + ": " + std::to_string(run.statuses[0]) + "\n" + run.out;
    }
    expect_golden("golden/sample_entries.txt", report);
}

}  // namespace
