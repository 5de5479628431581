#pragma once

#include <cstdint>

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

namespace quorlin {

// Copies the track's samples of this segment to its file, video as a byte stream, and hands audio to the analyzers.
// Returns 0, or MP4_FINDING; a sample outside the file or range ends it.
[[nodiscard]] int extract_samples(MediaContext& context, FileReader& reader, TrackRecord& track);

}  // namespace quorlin
