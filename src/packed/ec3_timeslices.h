#pragma once

#include "bits/file_reader.h"
#include "bits/output_file.h"
#include "playlist/playlist_attributes.h"

namespace quorlin {

// Hands the E-AC-3 frames from the reader's place on to the analyzer, timeslice by timeslice, compares the first one
// with the playlist's CODECS and ZTP_PROGRAM attributes and writes what was analysed to `output`. The current time is
// to be that of the first frame. Returns 0, or -1 when a check, the analyzer or a write failed.
[[nodiscard]] int check_ec3_timeslices(OutputFile& output, FileReader& reader, const PlaylistAttributes* attrs);

}  // namespace quorlin
