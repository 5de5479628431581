#pragma once

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bits/recorder.h"
#include "isobmff/segment_validation.h"
#include "playlist/byte_range.h"
#include "support/box_writer.h"
#include "support/files.h"
#include "support/golden.h"
#include "support/named_texts.h"

namespace quorlin {

// An init section and the segments that belong to it, with their ranges, and what the playlist says.
struct SegmentCase {
    std::string name;
    std::vector<Bytes> sections;
    std::vector<std::optional<ByteRange>> ranges = {};
    std::optional<PlaylistAttributes> attrs = {};
};

struct SegmentRun {
    std::vector<int> statuses;  // of each section, and of the release
    std::string out;            // the findings; the reasons on standard error, where there are none
};

inline const std::string& output_directory() {
    static const std::string directory = scratch_path("isobmff");
    return directory;
}

// What was written for a track.
inline std::string track_file(const std::string& name) {
    return file_text(output_directory() + "/s_i_" + name);
}

// Validates the sections in one context; files of an earlier run stay.
inline SegmentRun run_over_files(const SegmentCase& c, uint32_t chunk_size = READER_CHUNK_SIZE) {
    std::filesystem::create_directories(output_directory());
    SegmentRun run;
    testing::internal::CaptureStderr();
    run.out = printed_by([&] {
        MediaContextPtr context = create_init_context({output_directory(), "s", c.attrs ? &*c.attrs : nullptr}, "i");
        ByteRangeEnds range_ends;
        for (size_t i = 0; i < c.sections.size(); ++i) {
            FileReader reader = open_bytes(c.sections[i], "segment", chunk_size);
            SegmentEntry entry;
            if (i < c.ranges.size()) entry.byte_range = c.ranges[i];
            ByteSpan range;
            (void)resolve_byte_range(entry, range_ends, range);
            start_on_range(reader, range);
            run.statuses.push_back(validate_mp4_segment(reader, entry, context.get()));
            record_segment({});
        }
        run.statuses.push_back(release_init_context(context));
    });
    const std::string reasons = testing::internal::GetCapturedStderr();
    if (run.out.empty()) run.out = reasons;
    return run;
}

inline SegmentRun run_segments(const SegmentCase& c, uint32_t chunk_size = READER_CHUNK_SIZE) {
    std::filesystem::remove_all(output_directory());
    return run_over_files(c, chunk_size);
}

// The bytes as text: "." for a zero, "?" for what cannot be printed; only their number when they are many.
inline std::string printable(std::string bytes) {
    if (bytes.size() > 200) return std::to_string(bytes.size()) + " bytes";
    std::replace(bytes.begin(), bytes.end(), '\0', '.');
    std::replace_if(
        bytes.begin(), bytes.end(), [](unsigned char c) { return std::isprint(c) == 0; }, '?');
    return bytes;
}

// Statuses, findings and files of a case.
inline std::string segment_report(const SegmentCase& c, uint32_t chunk_size = READER_CHUNK_SIZE) {
    const SegmentRun run = run_segments(c, chunk_size);
    std::string report = "== " + c.name + ":";
    for (const int status : run.statuses) report += " " + std::to_string(status);
    report += "\n" + run.out;
    std::set<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(output_directory()))
        names.insert(file.path().filename().string().substr(4));
    for (const std::string& name : names) report += name + ": " + printable(track_file(name)) + "\n";
    return report;
}

// The case with faults in one of its sections.
inline SegmentCase damaged(SegmentCase c, std::mt19937& random) {
    Bytes& section = c.sections[random() % c.sections.size()];
    section = with_faults(section, random);
    return c;
}

// Compares the reports of the cases, which are the same with a small buffer, and those of damaged ones with a golden
// file.
inline void expect_golden_cases(const std::string& path, const std::vector<SegmentCase>& cases) {
    std::string report;
    for (const SegmentCase& c : cases) {
        const std::string one = segment_report(c);
        for (const uint32_t chunk_size : {1u, 7u}) EXPECT_EQ(segment_report(c, chunk_size), one) << chunk_size;
        report += one;
    }
    report += transcript_checksums("damaged", 640, [&](std::mt19937& random) {
        return segment_report(damaged(cases[random() % cases.size()], random));
    });
    expect_golden(path, report);
}

// The cases of a file of texts.
template <class MakeCase>
std::vector<SegmentCase> cases_from(const std::string& path, MakeCase make_case) {
    std::vector<SegmentCase> cases;
    for (const auto& [name, text] : read_texts(path)) cases.push_back(make_case(name, text));
    return cases;
}

// tfhd and trun boxes from a text, and data.
inline Bytes fragment(const std::string& boxes, const std::string& data) {
    return join({box("moof", {box("traf", {text_boxes(boxes)})}), box("mdat", {text_bytes(data)})});
}

// An init section with one track of this sample entry.
inline Bytes init_with_entry(const Bytes& entry) {
    return init_section({{.entry = entry}});
}

}  // namespace quorlin
