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
    bool hevc = false;
    uint32_t length_size = 4;
    std::vector<Bytes> samples;
    const char* written;
    const char* printed = "";
};

std::vector<VideoCase> video_cases() {
    return {
        {"sets before the first unit", false, 4, {unit(4, AVC_SLICE)}, "SPsSPpSQqSa2"},
        {"sets before every IDR slice",
         false,
         4,
         {join({unit(4, AVC_IDR), unit(4, AVC_IDR)}), unit(4, AVC_SLICE)},
         "SPsSPpSQqSe1SPsSPpSQqSe1Sa2"},
        {"H.265 IDR_W_RADL only",
         true,
         4,
         {unit(4, HEVC_CRA), unit(4, HEVC_IDR), unit(4, HEVC_CRA)},
         "SVvSPsSPpSQqS*2SVvSPsSPpSQqS&1S*2"},
        {"one-byte lengths", false, 1, {join({unit(1, AVC_SLICE), unit(1, AVC_SLICE)})}, "SPsSPpSQqSa2Sa2"},
        {"two-byte lengths", true, 2, {unit(2, HEVC_CRA)}, "SVvSPsSPpSQqS*2"},
        {"three-byte lengths", false, 3, {unit(3, AVC_SLICE)}, "SPsSPpSQqSa2"},
        {"empty units and a rest of 3",
         false,
         4,
         {join({unit(4, ""), unit(4, AVC_SLICE), unit(4, ""), unit(4, AVC_SLICE), {0, 0, 9}})},
         "SPsSPpSQqSa2Sa2"},
        {"length beyond the sample",
         false,
         4,
         {unit(4, AVC_SLICE, 100), unit(4, AVC_SLICE)},
         "SPsSPpSQqSa2Sa2",
         "[SV]   : NAL size (100) exceeds remaining data (2 bytes)\n"},
        {"length of all bits and nothing behind",
         true,
         4,
         {unit(4, "", UINT32_MAX)},
         "",
         "[SV]   : NAL size (4294967295) exceeds remaining data (0 bytes)\n"},
    };
}

Bytes video_init(bool hevc, uint32_t length_size) {
    const Bytes sps = text_bytes("Ps");
    const Bytes pps = text_bytes("Pp");
    const Bytes pps2 = text_bytes("Qq");
    const auto size = static_cast<uint8_t>(length_size);
    if (!hevc) return init_with_entry(visual_entry("avc1", {avcC(size, {sps}, {pps, pps2})}));
    // PPS before SPS, and an SEI that is not written.
    const std::vector<HevcArray> arrays = {
        {34, {pps, pps2}}, {39, {text_bytes("Ss")}}, {33, {sps}}, {32, {text_bytes("Vv")}}};
    return init_with_entry(visual_entry("hvc1", {hvcC(size, arrays)}));
}

TEST(VideoSamples, BecomeByteStreams) {
    for (const VideoCase& c : video_cases()) {
        SCOPED_TRACE(c.name);
        const SegmentRun run =
            run_segments({video_init(c.hevc, c.length_size), media_segment({{.samples = c.samples}})});
        EXPECT_EQ(start_codes(run.track(c.hevc ? "track_id_1.265" : "track_id_1.264")), c.written);
        EXPECT_EQ(run.out, c.printed);
        EXPECT_EQ(run.statuses[1], *c.printed != 0 ? 11 : 0);
    }
}

TEST(VideoSamples, SetsAreWrittenOnceOverAllSegments) {
    const Bytes segment = media_segment({{.samples = {unit(4, AVC_SLICE)}}});
    EXPECT_EQ(start_codes(run_segments({video_init(false, 4), segment, segment}).track("track_id_1.264")),
              "SPsSPpSQqSa2Sa2");
}

TEST(VideoSamples, WithoutConfigurationLengthsHaveOneByte) {
    const Bytes init = init_with_entry(visual_entry("avc3", {}));
    const SegmentRun run = run_segments({init, media_segment({{.samples = {unit(1, AVC_IDR)}}})});
    EXPECT_EQ(start_codes(run.track("track_id_1.264")), "Se1");
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
        run_segments({video_init(false, 4), media_segment({{.samples = {sample, unit(4, AVC_SLICE)}}})});
    EXPECT_EQ(run.track("track_id_1.264").size(), 3 * 6 + sample.size() + 6);
}

struct LumoraCase {
    const char* name;
    const char* entry;
    LumoraSpec spec;
    bool el_box;
    const char* codecs;  // null: no playlist attributes
    std::vector<Bytes> samples;
    const char* printed;
};

const char MISSING_RPU[] = "[SV]   : ERROR: lumora stream, RPU must be present!\n";
const char SINGLE_TRACK[] = "[SV]   : ERROR: lumora single track stream, BL, EL and RPU must be present!\n";
const char HEVC_CODECS[] =
    "[SV]   : ERROR: Mismatch in the codecs attribute value between the HEVC SampleEntry and the CODECS string in the master manifest.\n";

std::vector<LumoraCase> lumora_cases() {
    constexpr uint8_t ALL = 7;
    constexpr uint8_t RPU_BL = 5;
    const Bytes rpu = unit(4, HEVC_RPU);
    const Bytes both = join({rpu, unit(4, HEVC_EL)});
    return {
        {"clean", "lmhe", {.profile = 5, .level = 6, .flags = RPU_BL}, false, "lmhe.05.06", {}, ""},
        {"avc1 under either name",
         "avc1",
         {.profile = 9, .level = 3, .flags = RPU_BL},
         false,
         "avc1,lmav.09.03",
         {},
         ""},
        {"avc1 without a name",
         "avc1",
         {.profile = 9, .level = 3, .flags = RPU_BL},
         false,
         "avc1",
         {},
         "[SV]   : ERROR: Missing lmav or lma1 in CODECS string in master manifest.\n"},
        {"lma1 under the other name",
         "lma1",
         {.profile = 9, .level = 3, .flags = RPU_BL},
         false,
         "lmav.09.03",
         {},
         "[SV]   : ERROR: Missing lma1 in CODECS string in master manifest.\n"},
        {"lmav missing",
         "lmav",
         {.profile = 9, .level = 3, .flags = RPU_BL},
         false,
         "avc1",
         {},
         "[SV]   : ERROR: Missing lmav in CODECS string in master manifest.\n"},
        {"lma1 of another level",
         "lma1",
         {.profile = 9, .level = 3, .flags = RPU_BL},
         false,
         "lma1.09.04",
         {},
         "[SV]   : ERROR: Mismatch profile or level is found in the codec attribute value between the LMA1SampleEntry and the CODECS string in the master manifest.\n"},
        {"hvc1 of another profile",
         "hvc1",
         {.profile = 5, .level = 6, .flags = RPU_BL},
         false,
         "lmh1.08.06",
         {},
         HEVC_CODECS},
        {"version 1.1",
         "hvc1",
         {.version_minor = 1, .profile = 5, .flags = RPU_BL},
         false,
         nullptr,
         {},
         "[SV]   : ERROR: lumora stream compliant with this Lumora stream within ISO BMFF spec!\n"},
        {"AVC profile 2",
         "avc1",
         {.profile = 2, .flags = RPU_BL},
         false,
         nullptr,
         {},
         "[SV]   : ERROR: lumora avc stream, profile should be 0 or 1 or 9!\n"},
        {"HEVC profile 9 without base layer",
         "hvc1",
         {.profile = 9, .flags = 4},
         false,
         nullptr,
         {},
         "[SV]   : ERROR: lumora hevc stream, profile should be larger than 1, less than 9!\n"
         "[SV]   : ERROR: lumora profile 9, BL and RPU must be present!\n"},
        {"profile 10, level 10",
         "avc1",
         {.profile = 10, .level = 10, .flags = RPU_BL},
         false,
         nullptr,
         {},
         "[SV]   : ERROR: lumora avc stream, profile should be 0 or 1 or 9!\n"
         "[SV]   : ERROR: lumora profile setting not correct!\n[SV]   : ERROR: lumora level setting not correct!\n"},
        {"AVC single track without EL box",
         "avc1",
         {.profile = 0, .flags = ALL},
         false,
         nullptr,
         {},
         "[SV]   : ERROR: single track lumora, must have EL config box\n"},
        {"HEVC profile 8 single track without EL box",
         "hvc1",
         {.profile = 8, .flags = ALL},
         false,
         nullptr,
         {},
         "[SV]   : ERROR: single track lumora must have EL config box.\n"},
        {"HEVC profile 7 needs none", "hvc1", {.profile = 7, .flags = ALL}, false, nullptr, {}, ""},
        {"RPU not announced", "hvc1", {.profile = 5, .flags = 1}, false, nullptr, {rpu}, MISSING_RPU},
        {"layers in the units", "hvc1", {.profile = 8, .flags = ALL}, true, nullptr, {both}, ""},
        {"announced, but no EL unit", "hvc1", {.profile = 8, .flags = ALL}, true, nullptr, {rpu}, SINGLE_TRACK},
        {"not announced, but in the units", "hvc1", {.profile = 8, .flags = 3}, true, nullptr, {both}, ""},
    };
}

TEST(Lumora, ConfigurationCodecsAndLayers) {
    for (const LumoraCase& c : lumora_cases()) {
        SCOPED_TRACE(c.name);
        const bool hevc = std::string(c.entry).find('h') != std::string::npos;
        const Bytes el_box = c.el_box ? box(hevc ? "hvcE" : "avcE", {zero_bytes(30)}) : Bytes();
        const Bytes entry = visual_entry(c.entry, {hevc ? hvcC(4, {}) : avcC(4, {}, {}), lmcC(c.spec), el_box});
        // A track with a single init section holds the rules of the configuration, with samples those of the units.
        Bytes file = init_with_entry(entry);
        if (!c.samples.empty()) file = join({file, media_segment({{.samples = c.samples}})});
        PlaylistAttributes attrs;
        attrs.codecs = c.codecs != nullptr ? c.codecs : "";
        const SegmentRun run = run_segments({file}, {.attrs = &attrs});
        EXPECT_EQ(run.out, c.printed);
        EXPECT_EQ(run.statuses[0], *c.printed != 0 ? 11 : 0);
    }
}

}  // namespace
