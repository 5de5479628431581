#pragma once

#include <cstdint>
#include <span>

#include "ac4/ac4_toc.h"

// Channel modes and what is derived from them, ETSI TS 103 190-2.

// Channel modes from this one on are reserved.
constexpr uint32_t AC4_RESERVED_CHANNEL_MODE = 16;

// True for the modes whose layout is told by the flags for four back channels, centre and top channels.
constexpr bool ac4_is_immersive_mode(uint32_t channel_mode) {
    return channel_mode >= 11 && channel_mode <= 14;
}

// True for the modes that carry add_ch_base: the 7.X layouts other than 3/4/0.
constexpr bool ac4_has_add_ch_base(uint32_t channel_mode) {
    return channel_mode >= 7 && channel_mode <= 10;
}

// 24-bit channel mask of a mode with all its channels; 0 for a reserved mode.
uint32_t ac4_channel_mode_mask(uint32_t channel_mode);

// Channel count of a layout given by the low 19 bits of its mask; 0 when no mode has that mask.
uint32_t ac4_channel_count(uint32_t channel_mask);

// dsi_substream_channel_mask of a channel-coded substream; `ims`: as part of an immersive stereo presentation.
uint32_t ac4_substream_channel_mask(const ac4_group_substream& substream, bool ims);

// Fills the derived values of a group from its substreams.
void ac4_derive_group(ac4_substream_group_info& group, std::span<const ac4_group_substream> substreams);

// Fills the derived values of a presentation from those of its groups. Every index lies within `groups`.
void ac4_derive_presentation(ac4_presentation_v1_info& presentation, std::span<const uint16_t> group_indices,
                             std::span<const ac4_substream_group_info> groups);
