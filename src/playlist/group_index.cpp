#include "playlist/group_index.h"

namespace quorlin {

GroupIndex index_groups(const Playlist& playlist, Text VariantStream::*group) {
    GroupIndex index;
    for (const VariantStream& variant : playlist.variants) {
        if (variant.*group) index.try_emplace(*(variant.*group), &variant);
    }
    return index;
}

const VariantStream* find_group(const GroupIndex& index, const Text& group_id) {
    if (!group_id) return nullptr;
    const auto found = index.find(*group_id);
    return found != index.end() ? found->second : nullptr;
}

}  // namespace quorlin
