#pragma once

#include <string>

#include "bits/facts.h"
#include "playlist/playlist.h"
#include "playlist/segment_job.h"

namespace quorlin {

// A media playlist to be validated.
struct MediaPlaylistJob {
    const std::string& path;
    SegmentJob segments;       // of each of its segments
    PlaylistFacts facts = {};  // what the master playlist says of it
};

// Validates one media playlist and all its segments. Returns the ORed results of the segments, or -1 when the playlist
// cannot be read.
[[nodiscard]] int validate_media_playlist(const MediaPlaylistJob& job);

// The same for a playlist that has been read already.
[[nodiscard]] int validate_read_playlist(const MediaPlaylistJob& job, const Playlist& playlist);

}  // namespace quorlin
