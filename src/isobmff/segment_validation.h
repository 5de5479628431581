#pragma once

#include <memory>
#include <string>

#include "bits/file_reader.h"
#include "isobmff/segment_status.h"
#include "playlist/playlist.h"
#include "playlist/segment_job.h"

namespace quorlin {

// Lives from one EXT-X-MAP to the next: the tracks, their output files and what the playlist says about them.
struct MediaContext;

struct MediaContextDeleter {
    void operator()(MediaContext* context) const;
};
using MediaContextPtr = std::unique_ptr<MediaContext, MediaContextDeleter>;

// Makes the init context of an EXT-X-MAP. `init_stem` is that of the init section's name.
[[nodiscard]] MediaContextPtr create_init_context(const SegmentJob& job, const std::string& init_stem);

// Closes the output files and frees the context; null is allowed. Returns 0, or MP4_FINDING when data could not be
// written.
[[nodiscard]] int release_init_context(MediaContextPtr& context);

// Validates the init section or media segment `segment` that `reader` is started on and extracts its samples. `context`
// is null when no init section came first. Returns 0, MP4_FINDING, or MP4_REFUSED without an init section or
// when the boxes cannot be walked.
[[nodiscard]] int validate_mp4_segment(FileReader& reader, const SegmentEntry& segment, MediaContext* context);

}  // namespace quorlin
