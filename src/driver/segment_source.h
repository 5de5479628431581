#pragma once

#include <string>

#include "bits/file_reader.h"
#include "driver/segment_format.h"
#include "playlist/playlist.h"

namespace quorlin {

// The file that the segments of a playlist are read from: consecutive byte ranges share it.
struct SegmentSource {
    FileReader reader;
    SegmentFormat format = SegmentFormat::UNKNOWN;  // of the file that the reader is open on
};

// Results of opening a segment.
constexpr int SEGMENT_READABLE = 0;
constexpr int SEGMENT_NOT_LOCAL = -1;
constexpr int SEGMENT_NOT_OPENED = 3;

// Hands `file`, opened from `path`, to the reader as a segment; the reader has still to be started. Returns
// SEGMENT_READABLE, or SEGMENT_NOT_OPENED after "ERROR: Invalid segment path: ..." when it is null: the path could not
// be opened just now.
[[nodiscard]] int set_segment(FileReader& reader, File file, const std::string& path);

// Opens the file of an entry, unless it is open already, and looks at its container; the reader has still to be started
// on the entry's byte range. `address` is the entry's as the playlist writes it. Returns SEGMENT_READABLE, or another
// result after "ERROR: Invalid segment path: ..." and a reason.
[[nodiscard]] int open_segment(SegmentSource& source, const Playlist& playlist, const SegmentEntry& entry,
                               const char* address);

}  // namespace quorlin
