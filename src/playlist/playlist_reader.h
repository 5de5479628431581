#pragma once

#include <string>

#include "playlist/playlist.h"

// Reads a local playlist. Returns 0, or 1 when the file cannot be opened ("ERROR: Invalid manifest path: ..." is
// printed) or holds both variant streams and segments; -1 after a read error.
[[nodiscard]] int read_playlist(const std::string& path, Playlist& playlist);

// Says on standard error what of the playlist's text was not read as it is meant.
void report_playlist_losses(const std::string& path, const PlaylistLosses& losses);

// The prefix that relative addresses of the playlist at `path` are joined to; may be empty.
std::string playlist_directory(const std::string& path);
