#pragma once

#include "playlist/playlist_attributes.h"
#include "ts/program.h"

namespace quorlin {

// Compares the elementary streams of a program with each other and with what the playlist entry says of them; without a
// playlist (`attrs` null) only the rules of the descriptors run. Returns 0, or TS_CHECK_FAILED after a finding
// (printed).
[[nodiscard]] int check_pmt_against_playlist(const ProgramRecord& program, const PlaylistAttributes* attrs);

}  // namespace quorlin
