#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "isobmff/box_walk.h"
#include "isobmff/read_limits.h"
#include "isobmff/track_output.h"
#include "isobmff/track_record.h"
#include "playlist/playlist_attributes.h"

namespace quorlin {

// An init section and the segments that belong to it.
struct MediaContext {
    // Given by the playlist.
    OutputNaming output;
    PlaylistAttributes attrs;  // empty CODECS: there are none to compare with

    // Filled by the boxes, of the init section and of segments that hold such boxes too.
    std::array<uint8_t, 4> major_brand{};
    uint32_t movie_timescale = 0;
    uint64_t metadata_box_offset = 0;
    uint64_t metadata_length = 0;
    std::vector<std::unique_ptr<TrackRecord>> tracks;
    bool init_refused = false;  // the walk of the init section ended early: little is known of the tracks

    // Of the current segment.
    ReadLimits limits;
    BoxWalk walk;

    std::vector<uint8_t> sample_buffer;  // kept for its memory
};

}  // namespace quorlin
