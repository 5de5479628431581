#pragma once

#include <optional>
#include <string>

#include "bits/file_reader.h"
#include "playlist/playlist_attributes.h"

// Hands `file`, opened from `path`, to the reader as a segment; the reader has still to be started. Returns 0, or 3
// after "ERROR: Invalid segment path: ..." when it is null: the path could not be opened just now.
[[nodiscard]] int set_segment(FileReader& reader, File file, const std::string& path);

// Validates one media playlist and all its segments. `attrs` is null for a playlist that no master playlist refers to.
// ORs -1 or the results of the segments into `error_flag`.
void validate_media_playlist(const std::string& path, const std::string& stem,
                             const std::optional<std::string>& output_dir, const PlaylistAttributes* attrs,
                             int& error_flag);
