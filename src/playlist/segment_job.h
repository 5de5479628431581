#pragma once

#include <optional>
#include <string>

#include "playlist/playlist_attributes.h"

namespace quorlin {

// What the validation of a segment is told besides the segment: where its elementary streams go, and what they are
// compared with.
struct SegmentJob {
    std::optional<std::string> output_dir = {};  // absent: nothing is written
    std::string stem = {};                       // of the names of the output files
    const PlaylistAttributes* attrs = nullptr;   // null without a master playlist
    bool first_segment = true;                   // creates the output files, which the others append to
};

}  // namespace quorlin
