#pragma once

#include "bits/file_reader.h"
#include "playlist/playlist.h"
#include "playlist/segment_job.h"

namespace quorlin {

// Validates one packed audio segment (an elementary stream after an ID3 timestamp) and appends its audio to
// "<output_dir>/<stem><extension>". Returns 0, or -1 when a check failed or the tag is missing or malformed.
[[nodiscard]] int validate_packed_audio(FileReader& reader, const SegmentEntry& entry, const SegmentJob& job);

}  // namespace quorlin
