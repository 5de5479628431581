#pragma once

#include <map>
#include <string_view>

#include "playlist/playlist.h"

namespace quorlin {

// The first variant of every AUDIO or VIDEO group, by the group's name. Borrows from the playlist that it was made of.
// Ordered: names can be chosen so that they share one bucket of a hash table.
using GroupIndex = std::map<std::string_view, const VariantStream*>;

// Indexes the variants of a master playlist by `group`: &VariantStream::audio or &VariantStream::video. Variants
// without it are left out.
GroupIndex index_groups(const Playlist& playlist, Text VariantStream::*group);

// The first variant of a rendition's group; null when there is none or the rendition names no group.
const VariantStream* find_group(const GroupIndex& index, const Text& group_id);

}  // namespace quorlin
