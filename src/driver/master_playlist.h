#pragma once

#include <optional>
#include <string>

#include "playlist/playlist.h"

// Checks a master playlist and validates the media playlists of its audio renditions and variants. Returns the ORed
// results.
[[nodiscard]] int validate_master_playlist(Playlist& playlist, const std::optional<std::string>& output_dir);
