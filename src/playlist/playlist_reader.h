#pragma once

#include <string>

#include "playlist/playlist.h"

namespace quorlin {

// Results of reading a playlist.
constexpr int PLAYLIST_READ = 0;
constexpr int PLAYLIST_REFUSED = 1;     // not opened, or of no kind
constexpr int PLAYLIST_CUT_SHORT = -1;  // a read failed

// Reads a local playlist. Returns PLAYLIST_READ; PLAYLIST_REFUSED when the file cannot be opened ("ERROR: Invalid
// manifest path: ..." is printed) or holds both variant streams and segments; PLAYLIST_CUT_SHORT after a read error.
[[nodiscard]] int read_playlist(const std::string& path, Playlist& playlist);

// Reports the parts of the playlist's text that were not read as they are meant.
void report_playlist_losses(const std::string& path, const PlaylistLosses& losses);

// The prefix that relative addresses of the playlist at `path` are joined to; may be empty.
std::string playlist_directory(const std::string& path);

}  // namespace quorlin
