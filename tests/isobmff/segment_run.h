#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isobmff/segment_validation.h"
#include "support/box_writer.h"
#include "support/golden.h"

// A reader on `bytes` as on a file.
inline FileReader open_bytes(const Bytes& bytes, uint32_t chunk_size = READER_CHUNK_SIZE) {
    FileReader reader;
    reader.path = "segment";
    // The stream only reads.
    reader.file.reset(fmemopen(const_cast<uint8_t*>(bytes.data()), bytes.size(), "rb"));
    reader.chunk_size = chunk_size;
    reader_start(reader);
    return reader;
}

// Validates an init section and the segments that belong to it, in one context.
struct SegmentRun {
    std::vector<int> statuses;  // of each segment, and of the release
    std::string out;
    std::filesystem::path directory;

    // What was written for a track, as text.
    std::string track(const std::string& name = "track_id_1.data") const {
        std::ifstream file(directory / ("s_i_" + name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

struct SegmentRunOptions {
    const PlaylistAttributes* attrs = nullptr;
    uint32_t chunk_size = READER_CHUNK_SIZE;
    bool keep_files = false;
    std::vector<std::optional<ByteRange>> ranges = {};
};

inline SegmentRun run_segments(const std::vector<Bytes>& sections, const SegmentRunOptions& options = {}) {
    SegmentRun run;
    run.directory = std::filesystem::path(testing::TempDir()) / "isobmff_test_out";
    if (!options.keep_files) std::filesystem::remove_all(run.directory);
    std::filesystem::create_directories(run.directory);
    run.out = printed_by([&] {
        MediaContextPtr context = create_init_context(run.directory.string(), "s", "i", options.attrs);
        for (size_t i = 0; i < sections.size(); ++i) {
            FileReader reader = open_bytes(sections[i], options.chunk_size);
            SegmentEntry entry;
            if (i < options.ranges.size()) entry.byte_range = options.ranges[i];
            run.statuses.push_back(validate_mp4_segment(reader, entry, context.get()));
        }
        run.statuses.push_back(release_init_context(context));
    });
    return run;
}

// An init section with one track of this sample entry.
inline Bytes init_with_entry(const Bytes& entry) {
    return init_section({{.entry = entry}});
}
