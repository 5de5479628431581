#pragma once

#include <string>

#include "playlist/playlist.h"

// Reads a local playlist. Returns 0, or 1 when the file cannot be opened ("ERROR: Invalid manifest path: ..." is
// printed) or holds both variant streams and segments; -1 after a read error (its reason goes to standard error).
[[nodiscard]] int read_playlist(const std::string& path, Playlist& playlist);

// The prefix that relative addresses of the playlist at `path` are joined to; may be empty.
std::string playlist_directory(const std::string& path);
