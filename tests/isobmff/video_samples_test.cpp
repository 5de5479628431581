// H.264 and H.265 samples as byte streams.
#include "segment_run.h"

namespace quorlin {

namespace {

Bytes unit(uint32_t length_size, const char* text, std::optional<uint64_t> length = {}) {
    const Bytes bytes = text_bytes(text);
    return join({big_endian(length_size, {length.value_or(bytes.size())}), bytes});
}

// Units are named by their first character: its low five bits are the H.264 type, bits 1 to 6 the H.265 type.
constexpr char AVC_IDR[] = "e1";    // type 5
constexpr char AVC_SLICE[] = "a2";  // type 1
constexpr char HEVC_IDR[] = "&1";   // type 19
constexpr char HEVC_CRA[] = "*2";   // type 21

// With PPS before SPS in hvcC, and an SEI that is not written. Length fields of 0: there is no configuration.
Bytes video_init(const std::string& entry, uint8_t length_size) {
    const Bytes sps = text_bytes("Ps");
    const Bytes pps = text_bytes("Pp");
    const Bytes pps2 = text_bytes("Qq");
    const std::vector<HevcArray> arrays = {
        {34, {pps, pps2}}, {39, {text_bytes("Ss")}}, {33, {sps}}, {32, {text_bytes("Vv")}}};
    if (length_size == 0) return init_with_entry(visual_entry(entry, {}));
    return init_with_entry(
        visual_entry(entry, {entry == "avc1" ? avcC(length_size, {sps}, {pps, pps2}) : hvcC(length_size, arrays)}));
}

// Every sample in two segments: what is once in a stream is once over all segments.
SegmentCase video_case(const char* name, const char* entry, uint8_t length_size, const std::vector<Bytes>& samples) {
    const Bytes segment = media_segment({{.samples = samples}});
    return {name, {video_init(entry, length_size), segment, segment}};
}

TEST(VideoSamples, BecomeByteStreams) {
    const Bytes slice = unit(4, AVC_SLICE);
    const Bytes idr = unit(4, AVC_IDR);
    const Bytes cra = unit(4, HEVC_CRA);
    expect_golden_cases("golden/video_samples.txt",
                        {
                            video_case("sets before the first unit", "avc1", 4, {slice}),
                            video_case("sets before every IDR slice", "avc1", 4, {join({idr, idr}), slice}),
                            video_case("H.265 IDR_W_RADL only", "hvc1", 4, {cra, unit(4, HEVC_IDR), cra}),
                            video_case("two-byte lengths", "hvc1", 2, {unit(2, HEVC_CRA)}),
                            video_case("three-byte lengths", "avc1", 3, {unit(3, AVC_SLICE)}),
                            video_case("no configuration: one-byte lengths, no sets", "avc3", 0, {unit(1, AVC_IDR)}),
                            video_case("empty units and a rest of 3", "avc1", 4,
                                       {join({zero_bytes(4), slice, zero_bytes(4), slice, {0, 0, 9}})}),
                            video_case("length beyond the sample", "avc1", 4, {unit(4, AVC_SLICE, 100), slice}),
                            video_case("length of all bits and nothing after it", "hvc1", 4, {unit(4, "", UINT32_MAX)}),
                        });
}

// Parameter sets of 60 KiB before each of 30000 two-byte IDR slices.
TEST(VideoSamples, RepeatedParameterSetsEnd) {
    const Bytes init = init_with_entry(visual_entry("avc1", {avcC(1, {zero_bytes(60000)}, {})}));
    Bytes sample;
    for (int i = 0; i < 30000; ++i) sample.insert(sample.end(), {1, 5});
    EXPECT_EQ(run_segments({"sets", {init, media_segment({{.samples = {sample}}})}}).statuses[1], 11);
    EXPECT_LT(track_file("track_id_1.264").size(), 20u << 20);
}

TEST(VideoSamples, SampleLargerThanAGroup) {
    Bytes large = text_bytes(AVC_SLICE);
    large.resize((1 << 20) + 5, 'x');
    const Bytes sample = join({big_endian(4, {large.size()}), large});
    run_segments({"large", {video_init("avc1", 4), media_segment({{.samples = {sample, unit(4, AVC_SLICE)}}})}});
    EXPECT_EQ(track_file("track_id_1.264").size(), 3 * 6 + sample.size() + 6);
}

}  // namespace

}  // namespace quorlin
