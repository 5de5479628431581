// H.264 and H.265 samples as byte streams.
#include "isobmff/video_samples.h"

#include "segment_run.h"

namespace {

// "S" stands for the start code.
std::string start_codes(std::string stream) {
    const std::string code("\0\0\0\1", 4);
    for (size_t at = stream.find(code); at != std::string::npos; at = stream.find(code)) stream.replace(at, 4, "S");
    return stream;
}

Bytes unit(uint32_t length_size, const char* text, std::optional<uint64_t> length = {}) {
    const Bytes bytes = text_bytes(text);
    return join({big_endian(length_size, {length.value_or(bytes.size())}), bytes});
}

// Units are named by their first character: its low five bits are the H.264 type, bits 1 to 6 the H.265 type.
constexpr char AVC_IDR[] = "e1";    // type 5
constexpr char AVC_SLICE[] = "a2";  // type 1
constexpr char HEVC_IDR[] = "&1";   // type 19
constexpr char HEVC_CRA[] = "*2";   // type 21
constexpr char HEVC_RPU[] = "|3";   // type 62
constexpr char HEVC_EL[] = "~4";    // type 63

struct VideoCase {
    const char* name;
    const char* entry;
    uint32_t length_size;
    std::vector<Bytes> samples;
};

std::vector<VideoCase> video_cases() {
    const Bytes slice = unit(4, AVC_SLICE);
    const Bytes idr = unit(4, AVC_IDR);
    const Bytes cra = unit(4, HEVC_CRA);
    const Bytes empty = unit(4, "");
    return {
        {"sets before the first unit", "avc1", 4, {slice}},
        {"sets before every IDR slice", "avc1", 4, {join({idr, idr}), slice}},
        {"H.265 IDR_W_RADL only", "hvc1", 4, {cra, unit(4, HEVC_IDR), cra}},
        {"one-byte lengths", "avc1", 1, {join({unit(1, AVC_SLICE), unit(1, AVC_SLICE)})}},
        {"two-byte lengths", "hvc1", 2, {unit(2, HEVC_CRA)}},
        {"three-byte lengths", "avc1", 3, {unit(3, AVC_SLICE)}},
        {"no configuration: one-byte lengths, no sets", "avc3", 0, {unit(1, AVC_IDR)}},
        {"empty units and a rest of 3", "avc1", 4, {join({empty, slice, empty, slice, {0, 0, 9}})}},
        {"length beyond the sample", "avc1", 4, {unit(4, AVC_SLICE, 100), slice}},
        {"length of all bits and nothing behind", "hvc1", 4, {unit(4, "", UINT32_MAX)}},
    };
}

// With PPS before SPS in hvcC, and an SEI that is not written.
Bytes video_init(const std::string& entry, uint32_t length_size) {
    const Bytes sps = text_bytes("Ps");
    const Bytes pps = text_bytes("Pp");
    const Bytes pps2 = text_bytes("Qq");
    const std::vector<HevcArray> arrays = {
        {34, {pps, pps2}}, {39, {text_bytes("Ss")}}, {33, {sps}}, {32, {text_bytes("Vv")}}};
    const auto size = static_cast<uint8_t>(length_size);
    if (size == 0) return init_with_entry(visual_entry(entry, {}));
    return init_with_entry(
        visual_entry(entry, {entry == "avc1" ? avcC(size, {sps}, {pps, pps2}) : hvcC(size, arrays)}));
}

// Every sample in two segments: what is once in a stream is once over all segments.
TEST(VideoSamples, BecomeByteStreams) {
    std::string report;
    for (const VideoCase& c : video_cases()) {
        const Bytes segment = media_segment({{.samples = c.samples}});
        const SegmentRun run = run_segments({video_init(c.entry, c.length_size), segment, segment});
        const std::string stream = run.track(c.entry[0] == 'a' ? "track_id_1.264" : "track_id_1.265");
        report += "== " + std::string(c.name) + ": " + std::to_string(run.statuses[1]) + "\n" + run.out +
                  start_codes(stream) + "\n";
    }
    expect_golden("golden/video_samples.txt", report);
}

// Parameter sets of 60 KiB before each of 30000 two-byte IDR slices.
TEST(VideoSamples, RepeatedParameterSetsEnd) {
    const Bytes init = init_with_entry(visual_entry("avc1", {avcC(1, {zero_bytes(60000)}, {})}));
    Bytes sample;
    for (int i = 0; i < 30000; ++i) sample.insert(sample.end(), {1, 5});
    const SegmentRun run = run_segments({init, media_segment({{.samples = {sample}}})});
    EXPECT_EQ(run.statuses[1], 11);
    EXPECT_LT(run.track("track_id_1.264").size(), 20u << 20);
}

TEST(VideoSamples, SampleLargerThanAGroup) {
    Bytes large = text_bytes(AVC_SLICE);
    large.resize((1 << 20) + 5, 'x');
    const Bytes sample = join({big_endian(4, {large.size()}), large});
    const SegmentRun run =
        run_segments({video_init("avc1", 4), media_segment({{.samples = {sample, unit(4, AVC_SLICE)}}})});
    EXPECT_EQ(run.track("track_id_1.264").size(), 3 * 6 + sample.size() + 6);
}

struct LumoraCase {
    const char* name;
    const char* entry;
    LumoraSpec spec;
    const char* codecs = "";
    bool el_box = false;
    std::vector<Bytes> samples = {};
};

std::vector<LumoraCase> lumora_cases() {
    constexpr uint8_t ALL = 7;
    const LumoraSpec profile_9 = {.profile = 9, .level = 3, .flags = 5};  // RPU and BL
    const LumoraSpec profile_5 = {.profile = 5, .level = 6, .flags = 5};
    const LumoraSpec profile_8 = {.profile = 8, .flags = ALL};
    const Bytes rpu = unit(4, HEVC_RPU);
    const Bytes both = join({rpu, unit(4, HEVC_EL)});
    return {
        {"clean", "lmhe", profile_5, "lmhe.05.06"},
        {"avc1 under either name", "avc1", profile_9, "avc1,lmav.09.03"},
        {"avc1 without a name", "avc1", profile_9, "avc1"},
        {"lma1 under the other name", "lma1", profile_9, "lmav.09.03"},
        {"lmav missing", "lmav", profile_9, "avc1"},
        {"lma1 of another level", "lma1", profile_9, "lma1.09.04"},
        {"hvc1 of another profile", "hvc1", profile_5, "lmh1.08.06"},
        {"version 1.1", "hvc1", {.version_minor = 1, .profile = 5, .flags = 5}},
        {"AVC profile 2", "avc1", {.profile = 2, .flags = 5}},
        {"HEVC profile 9 without base layer", "hvc1", {.profile = 9, .flags = 4}},
        {"profile 10, level 10", "avc1", {.profile = 10, .level = 10, .flags = 5}},
        {"AVC single track without EL box", "avc1", {.profile = 0, .flags = ALL}},
        {"HEVC profile 8 single track without EL box", "hvc1", profile_8},
        {"HEVC profile 7 needs none", "hvc1", {.profile = 7, .flags = ALL}},
        {"RPU not announced", "hvc1", {.profile = 5, .flags = 1}, "", false, {rpu}},
        {"layers in the units", "hvc1", profile_8, "", true, {both}},
        {"announced, but no EL unit", "hvc1", profile_8, "", true, {rpu}},
        {"not announced, but in the units", "hvc1", {.profile = 8, .flags = 3}, "", true, {both}},
    };
}

TEST(Lumora, ConfigurationCodecsAndLayers) {
    std::string report;
    for (const LumoraCase& c : lumora_cases()) {
        const bool hevc = std::string(c.entry).find('h') != std::string::npos;
        const Bytes el_box = c.el_box ? box(hevc ? "hvcE" : "avcE", {zero_bytes(30)}) : Bytes();
        const Bytes entry = visual_entry(c.entry, {hevc ? hvcC(4, {}) : avcC(4, {}, {}), lmcC(c.spec), el_box});
        Bytes file = init_with_entry(entry);
        if (!c.samples.empty()) file = join({file, media_segment({{.samples = c.samples}})});
        PlaylistAttributes attrs;
        attrs.codecs = c.codecs;
        const SegmentRun run = run_segments({file}, {.attrs = &attrs});
        report += "== " + std::string(c.name) + ": " + std::to_string(run.statuses[0]) + "\n" + run.out;
    }
    expect_golden("golden/lumora.txt", report);
}

}  // namespace
