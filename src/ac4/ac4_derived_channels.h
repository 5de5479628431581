#pragma once

#include <cstdint>
#include <span>

#include "ac4/ac4_toc_records.h"

namespace quorlin {

// What a table of contents says of channels only through its substreams, ETSI TS 103 190-2.

// dsi_substream_channel_mask of a channel-coded substream; `ims`: as part of an immersive stereo presentation.
uint32_t ac4_substream_channel_mask(const ac4_group_substream& substream, bool ims);

// Fills the derived values of a group from its substreams.
void ac4_derive_group(ac4_substream_group_info& group, std::span<const ac4_group_substream> substreams);

// Fills the derived values of a presentation from those of its groups. Every index lies within `groups`.
void ac4_derive_presentation(ac4_presentation_v1_info& presentation, std::span<const uint16_t> group_indices,
                             std::span<const ac4_substream_group_info> groups);

}  // namespace quorlin
