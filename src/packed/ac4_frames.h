#pragma once

#include "bits/file_reader.h"
#include "bits/output_file.h"
#include "playlist/playlist_attributes.h"

namespace quorlin {

// Walks the AC-4 sync frames from the reader's place up to the first one without sync word 0xAC40, checks their tables
// of contents against the playlist's CODECS attribute and writes the frames to `output`. The current time is to be that
// of the first frame. Returns 0, or -1 when a check or a write failed.
[[nodiscard]] int check_ac4_frames(OutputFile& output, FileReader& reader, const PlaylistAttributes* attrs);

}  // namespace quorlin
