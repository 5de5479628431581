#pragma once

#include <cstdio>
#include <string>

#include "bits/file.h"
#include "playlist/playlist_reader.h"
#include "support/files.h"

namespace quorlin {

inline std::string test_playlist_path() {
    return scratch_path("test.m3u8");
}

// Reads `text` as a playlist that lies in the test's directory.
inline int read_playlist_text(const std::string& text, Playlist& playlist) {
    File file(std::fopen(test_playlist_path().c_str(), "wb"));
    std::fwrite(text.data(), 1, text.size(), file.get());
    file.reset();
    return read_playlist(test_playlist_path(), playlist);
}

}  // namespace quorlin
