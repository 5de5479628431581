#pragma once

#include <cstdint>
#include <span>

#include "ac4/ac4_toc_records.h"

namespace quorlin {

// What a table of contents says of channels only through its substreams, ETSI TS 103 190-2.

// The presentation that a group is taken as a part of.
enum class Ac4PresentationKind { PLAIN, IMMERSIVE_STEREO };

constexpr Ac4PresentationKind ac4_presentation_kind(uint32_t presentation_version) {
    return presentation_version == AC4_IMS_PRESENTATION_VERSION ? Ac4PresentationKind::IMMERSIVE_STEREO
                                                                : Ac4PresentationKind::PLAIN;
}

// dsi_substream_channel_mask of a channel-coded substream in such a presentation.
uint32_t ac4_substream_channel_mask(const ac4_group_substream& substream, Ac4PresentationKind kind);

// Fills the derived values of a group from its substreams.
void ac4_derive_group(ac4_substream_group_info& group, std::span<const ac4_group_substream> substreams);

// Fills the derived values of a presentation from those of its groups. Every index lies within `groups`.
void ac4_derive_presentation(ac4_presentation_v1_info& presentation, std::span<const uint16_t> group_indices,
                             std::span<const ac4_substream_group_info> groups);

}  // namespace quorlin
