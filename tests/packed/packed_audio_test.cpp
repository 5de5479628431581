#include "packed/packed_audio.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "bits/stream_clock.h"
#include "support/files.h"
#include "support/golden.h"
#include "support/id3_writer.h"
#include "support/place_recorder.h"
#include "ztpinfo/ztpinfo.h"

namespace quorlin {

// Stands in for the analyzer: a test sees how the payload was cut into timeslices and says what each call returns.
struct ZtpInfoContext {
    bool opens = true;
    std::vector<int> results = {};  // of the calls in turn, then 0
    std::vector<ZtpProgramSummary> programs = {{}};
    std::vector<size_t> calls = {};  // the sizes that were handed over
    bool contiguous = false;
};

static ZtpInfoContext fake;

ZtpInfoContext* ztpinfo_open() {
    return fake.opens ? &fake : nullptr;
}

void ztpinfo_close(ZtpInfoContext*) {}

void ztpinfo_configure(ZtpInfoContext*, const ZtpSettings& settings) {
    fake.contiguous = settings.contiguous;
}

// Timeslices of one tick.
int64_t ztpinfo_playing_time(const ZtpInfoContext*) {
    return static_cast<int64_t>(fake.calls.size());
}

Place ztpinfo_failure_place(const ZtpInfoContext*) {
    return current_place;
}

static int last_result() {
    if (fake.calls.empty()) return 0;
    return fake.calls.size() <= fake.results.size() ? fake.results[fake.calls.size() - 1] : 0;
}

int ztpinfo_analyse(std::span<const uint8_t> bytes, ZtpInfoContext*) {
    fake.calls.push_back(bytes.size());
    return last_result();
}

void ztpinfo_summarise(const ZtpInfoContext*, ZtpStreamSummary& summary) {
    summary = {};
    if (last_result() == ZTP_FATAL) return;
    summary.num_programs = static_cast<uint32_t>(fake.programs.size());
    std::copy(fake.programs.begin(), fake.programs.end(), summary.programs.begin());
}

namespace {

using Bytes = std::vector<uint8_t>;

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// The start of a syncframe, filled up to `size` bytes.
Bytes frame(uint8_t strmtyp, uint8_t substreamid, uint32_t size = 6, uint8_t bsid = 16) {
    BitWriter writer;
    writer.put(16, 0x0B77);
    writer.put(2, strmtyp);
    writer.put(3, substreamid);
    writer.put(11, size / 2 - 1);  // frmsiz
    writer.put(8, 0);
    writer.put(5, bsid);
    writer.bytes.resize(size);
    return writer.bytes;
}

// AC-4 sync frames whose table of contents has no presentation: "ac-4.02.01.00".
const Bytes AC4 = {0xAC, 0x40, 0, 4, 0x80, 0, 0x20, 0x80};
const Bytes AC4_LONG_SIZE = {0xAC, 0x40, 0xFF, 0xFF, 0, 0, 4, 0x80, 0, 0x20, 0x80};
const Bytes AC4_NO_IFRAME = {0xAC, 0x40, 0, 4, 0x80, 0, 0, 0x80};

struct Case {
    const char* name;
    Bytes payload;
    const char* codecs = nullptr;  // null: no attributes
    ZtpInfoContext analyzer = {};
    std::optional<std::array<uint32_t, 4>> programs = {};
    Id3Tag tag = {};
};

std::string output_directory() {
    const std::string directory = scratch_path("packed");
    std::filesystem::create_directory(directory);
    return directory;
}

// Through a buffer that puts a seam into every header.
int validate(const Bytes& segment, const PlaylistAttributes* attrs, bool first_segment = true) {
    FileReader reader = open_bytes(segment, "", 5);
    SegmentEntry entry;
    entry.path = "%d.aac";
    return validate_packed_audio(reader, entry, {output_directory(), "s", attrs, first_segment});
}

// What was written, in hexadecimal digits, or the size of a long file.
void print_files() {
    for (const auto& [name, content] : take_files(output_directory())) {
        std::printf("%s: ", name.c_str());
        if (content.size() > 64) std::printf("%zu bytes", content.size());
        for (size_t i = 0; content.size() <= 64 && i < content.size(); ++i)
            std::printf("%02x", static_cast<uint8_t>(content[i]));
        std::printf("\n");
    }
}

std::string report_of(const Case& test, const Bytes& segment) {
    fake = test.analyzer;
    PlaylistAttributes attrs;
    attrs.codecs = test.codecs != nullptr ? test.codecs : "";
    attrs.programs = test.programs;
    return transcript_entry(test.name, [&] {
        const int status = validate(segment, test.codecs != nullptr ? &attrs : nullptr);
        record_segment({});
        for (size_t size : fake.calls) std::printf("analysed: %zu\n", size);
        print_files();
        return status;
    });
}

void expect_report(const std::string& golden, const std::vector<Case>& cases) {
    std::string report;
    for (const Case& test : cases) report += report_of(test, packed_segment(test.tag, test.payload));
    reset_stream_clock();
    report += transcript_checksums("damaged", 640, [&](std::mt19937& random) {
        const Case& test = cases[random() % cases.size()];
        return report_of(test, with_faults(packed_segment(test.tag, test.payload), random));
    });
    expect_golden(golden, report);
}

TEST(PackedAudio, TagsFormatsAndCodecs) {
    const Bytes aac = {0xFF, 0xF1, 1};
    expect_report("golden/formats.txt",
                  {
                      {.name = "signed timestamp", .payload = aac, .codecs = "mp4a", .tag = {.timestamp = ~0ull}},
                      {.name = "more frames in the tag", .payload = aac, .codecs = "mp4a", .tag = {.padding = 9000}},
                      {.name = "one byte too long", .payload = aac, .tag = {.size = 67}},
                      {.name = "largest size", .payload = aac, .tag = {.size = 0xFFFFFFFF}},
                      {"AC-3, bsid 8", frame(0, 0, 6, 8), "mp4a,ac-3"},
                      {"AC-3 missing in CODECS", frame(0, 0, 6, 0), "ec-3"},
                      {"bsid 11 without attributes", frame(0, 0, 6, 11)},
                      {"bsid 17", frame(0, 0, 6, 17)},
                      {"AAC, every byte", aac + Bytes(40000, 7), "xmp4a"},
                      {"AC-4 without attributes", AC4},
                      {"AC-4", AC4 + AC4_NO_IFRAME + AC4_LONG_SIZE, "ac-4.02.01.00"},
                      {"other AC-4 codec", AC4 + AC4, "ac-4.02.01.01"},
                      {"first AC-4 frame dependent", AC4_NO_IFRAME + AC4_NO_IFRAME, "ac-4.02.01.00"},
                      {"AC-4 with CRC ends the walk", AC4 + Bytes{0xAC, 0x41} + AC4, "ac-4.02.01.00"},
                      {"AC-4 of size 0, then dependent", Bytes{0xAC, 0x40, 0, 0} + AC4_NO_IFRAME, "ac-4.02.01.00"},
                      {"AC-4 cut in its table", Bytes{0xAC, 0x40, 0, 4, 0x80, 0}, "ac-4.02.01.00"},
                      {"AC-4 cut in its header", AC4 + Bytes{0xAC, 0x40, 0xFF, 0xFF, 1}, "ac-4.02.01.00"},
                  });
}

TEST(PackedAudio, Timeslices) {
    Bytes large;
    for (int i = 0; i < 8; ++i) large = large + frame(1, 0, 4096);
    const Bytes small = frame(0, 0);
    expect_report("golden/timeslices.txt",
                  {
                      {"dependent substreams", small + frame(1, 0) + frame(1, 1) + small + frame(1, 0), "ec-3"},
                      {"four programs", small + frame(0, 1) + frame(1, 0) + frame(0, 2) + frame(0, 3) + small, "ec-3"},
                      {"the first independent id counts", frame(0, 2) + small + frame(0, 2), "ec-3"},
                      {"frames before the first independent one", frame(1, 0) + frame(2, 0) + small, "ec-3"},
                      {"odd gap: the search step misses the sync word", small + Bytes{1} + small + small, "ec-3"},
                      {"frame cut", small + Bytes{0x0B, 0x77, 0, 9, 5}, "ec-3"},
                      {"frame of two bytes", small + frame(0, 0, 2) + Bytes{0, 0} + small, "ec-3"},
                      {"full buffer", large, "ec-3"},
                      {"buffer too small", large + frame(1, 0) + small, "ec-3"},
                      {"failures", small + small + small, "mp4a", {.results = {1, 1, 0}}},
                      {"fatal at first", small + small, "mp4a", {.results = {2}}},
                      {"no analyzer", small + small, "mp4a", {.opens = false}},
                      {"no program", small, "mp4a", {.programs = {}}},
                  });
}

ZtpProgramSummary program(uint32_t bsmod, uint32_t acmod, uint32_t dependent = 0) {
    ZtpProgramSummary summary;
    summary.num_dep_substreams = dependent;
    summary.independent.bsmod = bsmod;
    summary.independent.acmod = acmod;
    return summary;
}

TEST(PackedAudio, ProgramAttributes) {
    const std::vector<ZtpProgramSummary> programs = {program(0, 7, 1), program(7, 1), program(5, 2), program(6, 7)};
    const auto first = [&](size_t count) -> ZtpInfoContext {
        return {.programs = {&programs[0], &programs[0] + count}};
    };
    const auto twice = [&](const ZtpProgramSummary& p) -> ZtpInfoContext { return {.programs = {p, p}}; };
    const Bytes small = frame(0, 0);
    expect_report("golden/programs.txt",
                  {
                      {"a single program is not compared", small, "ec-3", first(1), {{0, 0, 0, 0}}},
                      {"two programs", small, "ec-3", first(2), {{0xC5, 0xB8, 0, 0}}},
                      {"no values", small, "ec-3", first(4)},
                      {"first timeslice alone", small + small, "ec-3", first(2), {{0x85, 0xB9, 0, 0}}},
                      {"three programs", small, "ec-3", first(3), {{0xC5, 0xB8, 0xA8, 0}}},
                      {"the third program is wrong", small, "ec-3", first(3), {{0xC5, 0xB8, 0xA9, 0}}},
                      {"the fourth against the third's", small, "ec-3", first(4), {{0xC5, 0xB8, 0xB0, 0xA8}}},
                      {"everything wrong", small, "mp4a", first(4), {{0, 0, 0, 0}}},
                      {"stereo, service 7", small, "ec-3", twice(program(7, 2)), {{0xFA, 0xBA, 0, 0}}},
                      {"mono, service 7", small, "ec-3", twice(program(7, 1)), {{0xB8, 0xB8, 0, 0}}},
                      {"three channels, service 6", small, "ec-3", twice(program(6, 3)), {{0xF0, 0xB0, 0, 0}}},
                      {"four channels, service 1", small, "ec-3", twice(program(1, 6)), {{0x8C, 0x8C, 0, 0}}},
                      {"dual mono", small, "ec-3", twice(program(2, 0, 1)), {{0x97, 0x97, 0, 0}}},
                      {"five channels", small, "ec-3", twice(program(3, 7)), {{0x9C, 0x9C, 0, 0}}},
                  });
}

// The payload is at byte 73, the tag says 1; a timeslice takes a tick here, an AC-4 frame of 48 kHz and index 2 3600.
TEST(PackedAudio, PlacesAndFacts) {
    set_recorder(&PLACE_RECORDER);
    const Bytes small = frame(0, 0);
    const Bytes ac4 = {0xAC, 0x40, 0, 4, 0x80, 0x04, 0xA0, 0x80};
    reset_stream_clock();
    expect_report("golden/places.txt", {
                                           {"timeslices", small + frame(1, 0) + small, "mp4a", {.results = {1, 1}}},
                                           {"gaps", small + Bytes{0, 0} + small + Bytes{0, 0}, "ec-3"},
                                           {"AC-4", ac4 + ac4 + Bytes{0xAC, 0x41}, "ac-4.02.01.00"},
                                           {"AAC", {0xFF, 0xF1, 1}, "ec-3"},
                                           {"no format", {1}, "ec-3"},
                                           {"ADTS with a CRC", {0xFF, 0xF0}, "mp4a"},
                                           {"ADTS of MPEG-2", {0xFF, 0xF9}, "mp4a"},
                                           {"layer I", {0xFF, 0xF7}, "mp4a"},
                                           {"layer III", {0xFF, 0xFB}, "mp4a"},
                                           {"a reserved layer", {0xFF, 0xE0}, "mp4a"},
                                           {"no tag", {}, "ec-3", {}, {}, {.frame_id = "PRIW"}},
                                       });
    set_recorder(nullptr);
}

TEST(PackedAudio, SegmentsAppendAndPrefixesFail) {
    const Bytes segment = packed_segment({}, Bytes{0xFF, 0xF1});
    PlaylistAttributes attrs;
    attrs.codecs = "mp4a";
    for (const bool first_segment : {false, true, false, false}) EXPECT_EQ(validate(segment, &attrs, first_segment), 0);
    EXPECT_EQ(take_files(output_directory()).at("s.aac"), "\xFF\xF1\xFF\xF1\xFF\xF1");
    for (auto end = segment.end() - 2; --end != segment.begin();)
        EXPECT_EQ(validate(Bytes(segment.begin(), end), &attrs), -1);
}

}  // namespace

}  // namespace quorlin
