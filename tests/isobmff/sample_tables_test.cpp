// From the sample tables and fragments to the bytes of a track.
#include "isobmff/sample_tables.h"

#include "isobmff/box_reader.h"

#include "segment_run.h"

namespace {

constexpr uint32_t DATA = 16;  // file offset of the letters
const char LETTERS[] = "abcdefghijklmnopqrstuvwxyz";

struct Layout {
    const char* name;
    Bytes stsz;
    Bytes stsc;
    Bytes stco;
    const char* written;
    int status = 0;
};

Bytes sizes(std::initializer_list<uint64_t> entries) {
    return full_box("stsz", 0, 0, {big_endian(4, {0, entries.size()}), big_endian(4, entries)});
}

Bytes constant_size(uint32_t size, uint32_t count) {
    return full_box("stsz", 0, 0, {big_endian(4, {size, count})});
}

Bytes offsets(std::initializer_list<uint64_t> entries) {
    return table_box("stco", static_cast<uint32_t>(entries.size()), entries);
}

std::vector<Layout> layouts() {
    const Bytes by_two = table_box("stsc", 1, {1, 2, 1});
    const uint64_t at = DATA;
    return {
        {"two chunks", sizes({1, 2, 3, 1}), by_two, offsets({at, at + 10}), "abcklmn"},
        {"64-bit offsets", sizes({2, 2}), by_two, full_box("co64", 0, 0, {big_endian(4, {1}), big_endian(8, {at + 1})}),
         "bcde"},
        {"constant size", constant_size(2, 3), by_two, offsets({at, at + 10}), "abcdkl"},
        {"more samples than the chunks hold", sizes({1, 1, 1, 1, 1}), by_two, offsets({at, at + 10}), "abkl"},
        {"fewer samples than the chunks hold", sizes({1, 1, 1}), by_two, offsets({at, at + 10}), "abk"},
        {"rows change", sizes({1, 1, 1, 1, 1, 1}), table_box("stsc", 3, {1, 1, 1, 2, 3, 1, 3, 1, 1}),
         offsets({at, at + 5, at + 10, at + 15}), "afghkp"},
        {"rows not ascending", sizes({1, 1, 1, 1}), table_box("stsc", 2, {2, 3, 1, 1, 1, 1}), offsets({at, at + 5}),
         "af"},
        {"first row behind the first chunk", sizes({1, 1}), table_box("stsc", 1, {2, 1, 1}), offsets({at, at + 5}),
         "f"},
        {"no rows", sizes({1, 1}), table_box("stsc", 0, {}), offsets({at}), ""},
        {"no chunks", sizes({1, 1}), by_two, offsets({}), ""},
        {"chunks backwards and overlapping", sizes({3, 1, 2, 2}), by_two, offsets({at + 20, at}), "uvwxabcd"},
        {"empty samples", sizes({0, 2, 0, 0, 1}), table_box("stsc", 1, {1, 5, 1}), offsets({at}), "abc"},
        {"second sample behind the end", sizes({2, 5000}), by_two, offsets({at + 23}), "xy", 11},
        {"chunk far behind the end", sizes({1}), by_two,
         full_box("co64", 0, 0, {big_endian(4, {1}), big_endian(8, {uint64_t{1} << 63})}), "", 11},
        {"constant size of 4 GiB", constant_size(UINT32_MAX, UINT32_MAX), by_two, offsets({at}), "", 11},
        {"count larger than its table", table_box("stsz", 0, {3, 1, 1}), by_two, offsets({at}), "", 1},
        {"count of all bits", sizes({1}), table_box("stsc", UINT32_MAX, {1, 1, 1}), offsets({at}), "", 1},
        {"table twice", join({sizes({9, 9}), sizes({1, 1})}), by_two, offsets({at}), "ab"},
    };
}

Bytes with_letters(const Bytes& tables) {
    return join({box("free", {}), box("mdat", {text_bytes(LETTERS)}),
                 init_section({{.entry = box("wvtt", {}), .tables = tables}})});
}

TEST(SampleTables, LayoutsBecomeTheBytesOfTheTrack) {
    for (const Layout& c : layouts()) {
        SCOPED_TRACE(c.name);
        const Bytes file = with_letters(join({c.stsz, c.stsc, c.stco}));
        for (const uint32_t chunk_size : {1u, 7u, READER_CHUNK_SIZE}) {
            const SegmentRun run = run_segments({file}, {.chunk_size = chunk_size});
            EXPECT_EQ(run.statuses[0], c.status);
            EXPECT_EQ(run.track(), c.written);
        }
    }
}

// Tables that name the same data over and over come to an end: the file is 16 KiB, what it claims is 32 MiB or more.
TEST(SampleTables, ClaimsBeyondAllMeasureEnd) {
    const auto repeat = [](uint32_t samples, uint32_t size) {
        Bytes stco = big_endian(4, {0, 2000});
        for (int i = 0; i < 2000; ++i) stco = join({std::move(stco), big_endian(4, {DATA})});
        const Bytes tables =
            join({constant_size(size, UINT32_MAX), table_box("stsc", 1, {1, samples, 1}), box("stco", {stco})});
        return join({box("free", {}), box("mdat", {zero_bytes(16384)}),
                     init_section({{.entry = box("wvtt", {}), .tables = tables}})});
    };
    const SegmentRun run = run_segments({repeat(1, 16384)});
    EXPECT_EQ(run.statuses[0], 11);
    EXPECT_LT(run.track().size(), 20u << 20);

    // A run of empty samples costs nothing in the file.
    const RunSpec empty = {.trun_flags = 1, .sample_count = UINT32_MAX};
    EXPECT_EQ(run_segments({init_with_entry(box("wvtt", {})), media_segment({empty, empty})}).statuses[1], 11);
}

struct FragmentCase {
    const char* name;
    std::vector<RunSpec> runs;
    std::string written;
    int status = 0;
};

// A run without sizes of its own: tfhd with these flags and fields.
RunSpec sized_by_tfhd(const std::vector<Bytes>& samples, uint32_t tfhd_flags, std::initializer_list<uint64_t> fields) {
    return {.samples = samples, .trun_flags = 1, .tfhd_flags = tfhd_flags, .tfhd_fields = big_endian(4, fields)};
}

TEST(MovieFragments, RunsBecomeTheBytesOfTheTrack) {
    const std::vector<Bytes> abc = {text_bytes("aa"), text_bytes("bb"), text_bytes("cc")};
    RunSpec from_start = sized_by_tfhd({{1}, {2}}, 0x11, {0, 0, 2});
    from_start.data_offset = 4;
    const FragmentCase cases[] = {
        {"sizes", {{.samples = abc}}, "aabbcc"},
        {"all fields", {{.samples = abc, .trun_flags = 0xF05}}, "aabbcc"},
        {"default size", {sized_by_tfhd(abc, 0x20010, {2})}, "aabbcc"},
        {"all tfhd fields", {sized_by_tfhd(abc, 0x2003A, {1, 1024, 1, 0})}, "aab"},
        {"two runs", {{.samples = abc}, {.samples = {text_bytes("d")}}}, "aabbccd"},
        {"no samples", {{}, {.samples = {text_bytes("d")}}}, "d"},
        {"track that is not there", {{.track_ID = 9, .samples = abc}, {.samples = {text_bytes("d")}}}, "d"},
        {"data before the moof", {{.samples = abc, .data_offset = -5}}, "", 11},
        {"no data offset", {{.samples = {zero_bytes(8)}, .trun_flags = 0x200}}, std::string("\0\0\0Dmoof", 8)},
        {"base data offset", {from_start}, "moof"},
        {"base data offset of 4 GiB", {sized_by_tfhd(abc, 1, {1, 0})}, "", 1},
        {"count larger than the run", {{.samples = abc, .sample_count = 4}}, "", 1},
        {"count of all bits", {{.samples = abc, .sample_count = UINT32_MAX}}, "", 1},
        {"default size 0", {{.trun_flags = 1, .sample_count = 9}}, ""},
    };
    const Bytes init = init_with_entry(box("wvtt", {}));
    for (const FragmentCase& c : cases) {
        SCOPED_TRACE(c.name);
        const SegmentRun run = run_segments({init, media_segment(c.runs)});
        EXPECT_EQ(run.statuses[1], c.status);
        EXPECT_EQ(run.track(), c.written);
    }
}

TEST(MovieFragments, TablesGrowByTheirFields) {
    MediaContext context;
    const auto parse = [&context](const Bytes& file) {
        FileReader reader = open_bytes(file);
        context.file_size = file.size();
        EXPECT_EQ(parse_media(context, reader), 0);
    };
    parse(init_with_entry(box("wvtt", {})));
    parse(media_segment(
        {{.samples = {{1}, {2}}, .trun_flags = 0x205, .tfhd_flags = 8, .tfhd_fields = big_endian(4, {30})},
         {.samples = {{3}}, .trun_flags = 0xB05}}));
    const SampleTables& tables = context.tracks[0]->samples;
    EXPECT_EQ(tables.time_to_sample.size(), 2u);  // one for the run without durations
    EXPECT_EQ(tables.media_duration, 2u * 30 + 1024);
    EXPECT_EQ(tables.sync_samples, (std::vector<uint32_t>{1, 3}));
    EXPECT_EQ(tables.composition_offsets.size(), 1u);
    EXPECT_EQ(tables.chunk_offsets.size(), 2u);
    parse(media_segment({}));
    EXPECT_EQ(tables.sample_count, 0u) << "a segment begins with empty tables";
}

}  // namespace
