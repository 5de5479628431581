#pragma once

#include "playlist/playlist.h"

namespace quorlin {

// Checks the renditions and variants of a master playlist, prints the findings and marks what is to be validated
// (MediaEntry::selected, VariantStream::selected). Returns 0, or -1 when a check failed.
[[nodiscard]] int check_master_playlist(Playlist& playlist);

}  // namespace quorlin
