// Whole segments: ranges, several tracks, and state from one segment to the next.
#include "segment_run.h"

namespace quorlin {

namespace {

const Bytes DATA_ENTRY = box("wvtt", {});

Bytes letters_segment(const char* text) {
    return media_segment({{.samples = {text_bytes(text)}}});
}

std::optional<ByteRange> range(const std::string& length, std::optional<std::string> offset = {}) {
    return ByteRange{length, std::move(offset)};
}

// Ranges of one file, one after the other.
SegmentCase ranges(const char* name, const Bytes& file, const std::vector<std::optional<ByteRange>>& ranges) {
    return {name, std::vector<Bytes>(ranges.size(), file), ranges};
}

std::string size(const Bytes& bytes) {
    return std::to_string(bytes.size());
}

TEST(Segment, ByteRangesOfOneFile) {
    const Bytes init = init_with_entry(DATA_ENTRY);
    const Bytes first = letters_segment("first");
    const Bytes second = letters_segment("second");
    const Bytes file = join({init, first, second, letters_segment("third")});
    const Bytes before_it = fragment("tfhd:32 0x20000 1\ntrun:32 0x201 1 0xFFFE7960 1", "x");
    const auto whole_init = range(size(init));
    expect_golden_cases(
        "golden/byte_ranges.txt",
        {
            ranges("with offsets", file, {range(size(init), "0"), range(size(second), size(join({init, first})))}),
            ranges("one after the other", file, {whole_init, range(size(first)), range(size(second))}),
            ranges("length 0 is the whole file", file, {whole_init, range("0", "7")}),
            ranges("inside a box", file, {range(size(init), "4")}),
            ranges("past the file", file, {whole_init, range("100", "1000000")}),
            ranges("one byte short", file, {whole_init, range(std::to_string(first.size() - 1))}),
            ranges("samples before the file", join({init, before_it}), {whole_init, range(size(before_it))}),
        });
}

// Every track walks over the file once; that is not what the limit of work is for.
TEST(Segment, ManyTracksInterleaved) {
    std::vector<TrakSpec> tracks;
    std::vector<RunSpec> runs;
    for (uint32_t i = 1; i <= 100; ++i) {
        tracks.push_back({.track_ID = i, .entry = DATA_ENTRY});
        runs.push_back({.track_ID = i, .samples = {zero_bytes(6000)}});
    }
    const Bytes fragment = media_segment(runs);
    const SegmentCase segments{"tracks", {init_section(tracks), join({fragment, fragment})}};
    EXPECT_EQ(run_segments(segments).statuses, std::vector<int>(3));
    EXPECT_EQ(track_file("track_id_100.data").size(), 12000u);
}

TEST(Segment, StateOfTheContext) {
    const auto two_tracks = [](uint32_t first_ID, uint32_t second_ID) {
        return init_section({{.track_ID = first_ID, .entry = audio_entry("mp4a", 2, {})},
                             {.track_ID = second_ID, .entry = DATA_ENTRY}});
    };
    const Bytes init = two_tracks(1, 2);
    const Bytes segment =
        media_segment({{.track_ID = 2, .samples = {text_bytes("two")}}, {.samples = {text_bytes("one")}}});
    const Bytes with_default = fragment("tfhd:32 0x20010 1 3\ntrun:32 1 1 64", "abc");
    const Bytes without = fragment("tfhd:32 0x20000 1\ntrun:32 1 1 60", "def");
    expect_golden_cases(
        "golden/context.txt",
        {
            {"tracks keep their files over repeated movies", {init, segment, join({init, segment}), segment}},
            {"two tracks of one ID stay two",
             {two_tracks(5, 5), media_segment({{.track_ID = 5, .samples = {text_bytes("x")}}})}},
            {"defaults of a fragment stay", {init_with_entry(DATA_ENTRY), with_default, without}},
        });
}

TEST(Segment, WithoutInitSection) {
    const Bytes segment = letters_segment("x");
    FileReader reader = open_bytes(segment, "segment");
    EXPECT_EQ(validate_mp4_segment(reader, {}, nullptr), MP4_REFUSED);
    MediaContextPtr none;
    EXPECT_EQ(release_init_context(none), 0);
}

TEST(Segment, OutputThatCannotBeWritten) {
    const Bytes init = init_section({{.track_ID = 1, .entry = DATA_ENTRY}, {.track_ID = 2, .entry = DATA_ENTRY}});
    const std::filesystem::path blocked = output_directory() + "/s_i_track_id_1.data";
    std::filesystem::remove_all(output_directory());
    std::filesystem::create_directories(blocked);
    EXPECT_EQ(run_over_files({"directory", {init}}).statuses[0], 11);
    EXPECT_FALSE(std::filesystem::exists(output_directory() + "/s_i_track_id_2.data")) << "the track loop ends";

    std::filesystem::remove_all(blocked);
    std::filesystem::create_symlink("/dev/full", blocked);
    const Bytes large = media_segment({{.samples = {zero_bytes(300000)}}});
    const SegmentRun full = run_over_files({"full", {init, large, large, letters_segment("x")}});
    EXPECT_EQ(full.out, "[SV]   : Failed to fwrite 300000 bytes to file\n") << "once per file";
    EXPECT_EQ(full.statuses, (std::vector<int>{0, 11, 11, 11, 11}));
    // What still lay in a buffer fails when the file is closed.
    EXPECT_EQ(run_over_files({"small", {init, letters_segment("x")}}).statuses, (std::vector<int>{0, 0, 11}));
    std::filesystem::remove(blocked);
}

}  // namespace

}  // namespace quorlin
