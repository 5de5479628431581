#pragma once

#include <optional>
#include <string>

#include "playlist/playlist.h"

namespace quorlin {

// Checks the master playlist that was read from `path` and validates the media playlists of its audio renditions and
// variants. Returns the ORed results; what is not validated has its reason on standard error.
[[nodiscard]] int validate_master_playlist(const std::string& path, Playlist& playlist,
                                           const std::optional<std::string>& output_dir);

}  // namespace quorlin
