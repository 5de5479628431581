// From the sample tables and fragments to the bytes of a track.
#include "segment_run.h"

namespace quorlin {

namespace {

const Bytes DATA_ENTRY = box("wvtt", {});

// A file of letters, or what stands for them, and the tables of a track after them.
Bytes data_and_tables(const Bytes& data, const Bytes& tables) {
    return join({box("free", {}), box("mdat", {data}), init_section({{.entry = DATA_ENTRY, .tables = tables}})});
}

TEST(SampleTables, LayoutsBecomeTheBytesOfTheTrack) {
    const Bytes letters = text_bytes("abcdefghijklmnopqrstuvwxyz");
    expect_golden_cases("golden/sample_tables.txt",
                        cases_from("data/sample_tables.txt", [&](const std::string& name, const std::string& text) {
                            return SegmentCase{name, {data_and_tables(letters, text_boxes(text))}};
                        }));
}

// Tables that name the same data over and over come to an end: the file is 16 KiB, what it claims is 32 MiB or more.
TEST(SampleTables, ClaimsBeyondAllMeasureEnd) {
    std::string offsets = "stco:32 0 2000";
    for (int i = 0; i < 2000; ++i) offsets += " 16";
    const Bytes tables = text_boxes("stsz:32 0 16384 0xFFFFFFFF\nstsc:32 0 1 1 1 1\n" + offsets);
    EXPECT_EQ(run_segments({"repeated chunk", {data_and_tables(zero_bytes(16384), tables)}}).statuses[0], 11);
    EXPECT_LT(track_file("track_id_1.data").size(), 20u << 20);

    // Tables that are read on to the end of the file, one after the other.
    std::string read_on;
    for (int i = 0; i < 3000; ++i) read_on += "stsz:32 0 0 5000\n";
    EXPECT_EQ(
        run_segments({"read on", {init_section({{.entry = DATA_ENTRY, .tables = text_boxes(read_on)}})}}).statuses,
        (std::vector<int>{11, 0}));

    // A run of empty samples costs nothing in the file.
    const Bytes empty = fragment("tfhd:32 0x20000 1\ntrun:32 1 0xFFFFFFFF 0\ntrun:32 1 0xFFFFFFFF 0", "");
    EXPECT_EQ(run_segments({"empty", {init_with_entry(DATA_ENTRY), empty}}).statuses[1], 11);
}

TEST(MovieFragments, RunsBecomeTheBytesOfTheTrack) {
    expect_golden_cases("golden/movie_fragments.txt",
                        cases_from("data/movie_fragments.txt", [](const std::string& name, const std::string& text) {
                            return SegmentCase{name, {init_with_entry(DATA_ENTRY), fragment(text, "aabbccd")}};
                        }));
}

}  // namespace

}  // namespace quorlin
