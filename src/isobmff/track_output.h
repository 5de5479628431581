#pragma once

#include <cstdint>
#include <span>

#include "isobmff/media_context.h"

// The elementary-stream file of a track.

enum WriteResult {
    WRITE_DONE,         // also without an output directory
    WRITE_FAILED,       // for the first time: the caller prints what could not be written
    WRITE_FAILED_AGAIN  // the file failed before
};

// Opens the track's file on first use, anew. Returns 0, or 11 when it cannot be opened (the reason is on standard
// error). Without an output directory there is nothing to open.
[[nodiscard]] int open_track_output(const MediaContext& context, TrackRecord& track);

[[nodiscard]] WriteResult write_track_output(TrackOutput& output, std::span<const uint8_t> bytes);

// Writes sample data and prints when that fails; returns 0 or 11.
[[nodiscard]] int write_sample_data(TrackOutput& output, std::span<const uint8_t> bytes);

// Closes the file; 0, or 11 when data that was still buffered could not be written.
[[nodiscard]] int close_track_output(TrackOutput& output);
