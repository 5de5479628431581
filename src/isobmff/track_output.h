#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "bits/output_file.h"
#include "isobmff/track_kinds.h"
#include "ztpinfo/ztpinfo.h"

namespace quorlin {

// The elementary-stream file of a track.

// What the files of all tracks of an init section are named by.
struct OutputNaming {
    std::optional<std::string> dir;  // absent: nothing is written
    std::string stem;
    std::string init_stem;
};

// Where a track's samples go; lives as long as the init section, over all its segments.
struct TrackOutput {
    OutputFile file;
    bool opened = false;
    bool parameter_sets_written = false;
    bool unvalidated_reported = false;  // by report_unvalidated_samples
    ZtpInfoPtr analyzer;
};

enum WriteResult {
    WRITE_DONE,         // also without an output directory
    WRITE_FAILED,       // for the first time: the caller prints what could not be written
    WRITE_FAILED_AGAIN  // the file failed before
};

// Opens the track's file on first use, anew. Returns 0, or MP4_FINDING when it cannot be opened (the reason is on
// standard error). Without an output directory there is nothing to open.
[[nodiscard]] int open_track_output(TrackOutput& output, const OutputNaming& naming, uint32_t track_ID, CodecKind kind);

// Appends `bytes` to the track's file. A first failure has its reason on standard error.
[[nodiscard]] WriteResult write_track_output(TrackOutput& output, std::span<const uint8_t> bytes);

// Writes sample data and prints when that fails; returns 0 or MP4_FINDING.
[[nodiscard]] int write_sample_data(TrackOutput& output, std::span<const uint8_t> bytes);

// Closes the file; 0, or MP4_FINDING when data that was still buffered could not be written.
[[nodiscard]] int close_track_output(TrackOutput& output);

}  // namespace quorlin
