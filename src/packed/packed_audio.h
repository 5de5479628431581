#pragma once

#include <optional>
#include <string>

#include "bits/file_reader.h"
#include "playlist/playlist.h"
#include "playlist/playlist_attributes.h"

namespace quorlin {

// Validates one packed audio segment (an elementary stream after an ID3 timestamp) and appends its audio to
// "<output_dir>/<stem><extension>", which the first segment of a playlist creates. `attrs` may be null. Returns 0, or
// -1 when a check failed or the tag is missing or malformed.
[[nodiscard]] int validate_packed_audio(FileReader& reader, const SegmentEntry& entry,
                                        const std::optional<std::string>& output_dir, const std::string& stem,
                                        bool first_segment, const PlaylistAttributes* attrs);

}  // namespace quorlin
