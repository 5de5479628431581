// Whole segments: ranges, several tracks, state from one segment to the next, and damaged input.
#include "segment_run.h"

namespace {

const Bytes DATA_ENTRY = box("wvtt", {});

Bytes letters_segment(const char* text) {
    return media_segment({{.samples = {text_bytes(text)}}});
}

std::optional<ByteRange> range(const std::string& length, std::optional<std::string> offset = {}) {
    return ByteRange{length, std::move(offset)};
}

TEST(Segment, ByteRangesOfOneFile) {
    const Bytes init = init_with_entry(DATA_ENTRY);
    const Bytes first = letters_segment("first");
    const Bytes second = letters_segment("second");
    const Bytes file = join({init, first, second, letters_segment("third")});
    const std::string init_size = std::to_string(init.size());
    const auto size = [](const Bytes& bytes) { return std::to_string(bytes.size()); };
    struct {
        const char* name;
        std::vector<std::optional<ByteRange>> ranges;
        std::vector<int> statuses;
        const char* written;
    } const cases[] = {
        {"with offsets", {range(init_size, "0"), range(size(second), size(join({init, first})))}, {0, 0, 0}, "second"},
        {"one behind the other",
         {range(init_size), range(size(first)), range(size(second))},
         {0, 0, 0, 0},
         "firstsecond"},
        {"length 0 is the whole file", {range(init_size), range("0", "7")}, {0, 0, 0}, "firstsecondthird"},
        {"no range", {range("none", "0")}, {1, 0}, ""},
        {"negative offset", {range(init_size), range("10", "-1")}, {0, 1, 0}, ""},
        {"leading integers", {range(init_size + "x", " 0y")}, {0, 0}, ""},
        {"inside a box", {range(init_size, "4")}, {1, 0}, ""},
        {"behind the file", {range(init_size), range("100", "1000000")}, {0, 0, 0}, ""},
        {"of all bits", {range("99999999999999999999", "99999999999999999999"), range("9", {})}, {0, 0, 0}, ""},
        {"one byte short", {range(init_size), range(std::to_string(first.size() - 1))}, {0, 11, 0}, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const SegmentRun run = run_segments(std::vector<Bytes>(c.ranges.size(), file), {.ranges = c.ranges});
        EXPECT_EQ(run.statuses, c.statuses);
        EXPECT_EQ(run.track(), c.written);
        EXPECT_EQ(run.out.empty(), std::string(c.name) != "one byte short");
    }
}

TEST(Segment, SamplesInFrontOfTheFileAreNotThere) {
    const Bytes init = init_with_entry(DATA_ENTRY);
    const Bytes media = media_segment({{.samples = {text_bytes("x")}, .data_offset = -100000}});
    const auto size = [](const Bytes& bytes) { return std::to_string(bytes.size()); };
    const SegmentRun run =
        run_segments({join({init, media}), join({init, media})}, {.ranges = {range(size(init)), range(size(media))}});
    EXPECT_EQ(run.statuses, (std::vector<int>{0, 11, 0}));
    EXPECT_EQ(run.out, "") << "a seek backwards stays inside any limit";
}

TEST(Segment, TracksKeepTheirFilesOverSegmentsAndRepeatedMovies) {
    const Bytes init =
        init_section({{.track_ID = 1, .entry = audio_entry("mp4a", 2, {})}, {.track_ID = 2, .entry = DATA_ENTRY}});
    const Bytes segment =
        media_segment({{.track_ID = 2, .samples = {text_bytes("two")}}, {.samples = {text_bytes("one")}}});
    const SegmentRun run = run_segments({init, segment, join({init, segment}), segment});
    EXPECT_EQ(run.statuses, (std::vector<int>{0, 0, 0, 0, 0}));
    EXPECT_EQ(run.track("track_id_1.aac"), "oneoneone");
    EXPECT_EQ(run.track("track_id_2.data"), "twotwotwo");
}

TEST(Segment, TwoTracksOfOneIdStayTwo) {
    const Bytes init =
        init_section({{.track_ID = 5, .entry = audio_entry("mp4a", 2, {})}, {.track_ID = 5, .entry = DATA_ENTRY}});
    const SegmentRun run = run_segments({init, media_segment({{.track_ID = 5, .samples = {text_bytes("x")}}})});
    EXPECT_EQ(run.track("track_id_5.aac"), "x");
    EXPECT_TRUE(std::filesystem::exists(run.directory / "s_i_track_id_5.data"));
}

TEST(Segment, DefaultsOfAFragmentStay) {
    const RunSpec with_default = {
        .samples = {text_bytes("abc")}, .trun_flags = 1, .tfhd_flags = 0x20010, .tfhd_fields = big_endian(4, {3})};
    const RunSpec without = {.samples = {text_bytes("def")}, .trun_flags = 1};
    EXPECT_EQ(
        run_segments({init_with_entry(DATA_ENTRY), media_segment({with_default}), media_segment({without})}).track(),
        "abcdef");
}

TEST(Segment, WithoutInitSection) {
    const Bytes segment = letters_segment("x");
    FileReader reader = open_bytes(segment);
    EXPECT_EQ(validate_mp4_segment(reader, {}, nullptr), 1);
    MediaContextPtr none;
    EXPECT_EQ(release_init_context(none), 0);
}

TEST(Segment, OutputThatCannotBeWritten) {
    const Bytes init = init_section({{.track_ID = 1, .entry = DATA_ENTRY}, {.track_ID = 2, .entry = DATA_ENTRY}});
    const std::filesystem::path blocked =
        std::filesystem::path(testing::TempDir()) / "isobmff_test_out" / "s_i_track_id_1.data";
    std::filesystem::remove_all(blocked);
    std::filesystem::create_directories(blocked);
    const SegmentRun run = run_segments({init}, {.keep_files = true});
    EXPECT_EQ(run.statuses[0], 11);
    EXPECT_FALSE(std::filesystem::exists(run.directory / "s_i_track_id_2.data")) << "the track loop ends";

    std::filesystem::remove_all(blocked);
    std::filesystem::create_symlink("/dev/full", blocked);
    const Bytes large = media_segment({{.samples = {zero_bytes(300000)}}});
    const SegmentRun full = run_segments({init, large, large, letters_segment("x")}, {.keep_files = true});
    EXPECT_EQ(full.out, "[SV]   : Failed to fwrite 300000 bytes to file\n") << "once per file";
    EXPECT_EQ(full.statuses, (std::vector<int>{0, 11, 11, 11, 11}));
    // What still lay in a buffer fails when the file is closed.
    EXPECT_EQ(run_segments({init, letters_segment("x")}, {.keep_files = true}).statuses, (std::vector<int>{0, 0, 11}));
    std::filesystem::remove(blocked);
}

// Every prefix of a segment that has everything: a result, nothing read outside.
TEST(Segment, EveryPrefix) {
    const Bytes avc = visual_entry("avc1", {avcC(4, {{7}}, {{8}}), lmcC({.profile = 9, .flags = 5})});
    const Bytes hevc = visual_entry("hvc1", {hvcC(4, {{32, {{1}}}})});
    const Bytes ec3 = audio_entry("ec-3", 2, {box("dec3", {{6, 0, 0x20, 0x0F, 2, 2}})});
    const Bytes ac4 = audio_entry("ac-4", 2, {box("dac4", {{0x20, 0xA4, 1, 0, 0, 0, 0}})});
    const Bytes init = init_section({{.track_ID = 1, .entry = avc},
                                     {.track_ID = 2, .entry = hevc},
                                     {.track_ID = 3, .entry = ec3},
                                     {.track_ID = 4, .entry = ac4}});
    const Bytes unit = {0, 0, 0, 2, 5, 5};
    const Bytes segment = media_segment({{.track_ID = 1, .samples = {unit}},
                                         {.track_ID = 2, .samples = {unit}},
                                         {.track_ID = 3, .samples = {{0x0B, 0x77, 0, 1}}},
                                         {.track_ID = 4, .samples = {{0x40, 0}}}});
    PlaylistAttributes attrs;
    attrs.codecs = "ac-4.02.01.03";
    attrs.channels = "2";
    const auto prefix = [](const Bytes& bytes, size_t size) {
        return Bytes(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
    };
    for (size_t size = 1; size <= init.size(); ++size)
        EXPECT_EQ(run_segments({prefix(init, size)}, {.attrs = &attrs}).statuses.size(), 2u);
    for (size_t size = 1; size <= segment.size(); ++size)
        EXPECT_NE(run_segments({init, prefix(segment, size)}, {.attrs = &attrs}).statuses[1], 0) << size;
}

}  // namespace
