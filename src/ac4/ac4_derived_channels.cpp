#include "ac4/ac4_derived_channels.h"

#include <algorithm>

namespace quorlin {

namespace {

// The 7.X modes of an immersive stereo presentation stand for a stereo pair that is rendered for headphones.
bool is_rendered_stereo(const ac4_group_substream& substream, Ac4PresentationKind kind) {
    return kind == Ac4PresentationKind::IMMERSIVE_STEREO && ac4_is_7_x_mode(substream.channel_mode);
}

uint8_t top_channel_pairs(uint8_t top_channels_present) {
    if (top_channels_present == 3) return 2;
    return top_channels_present == 0 ? 0 : 1;
}

void add_channel_substream(ac4_group_channels& channels, const ac4_group_substream& substream,
                           Ac4PresentationKind kind) {
    const Ac4ChannelMode mode = is_rendered_stereo(substream, kind) ? Ac4ChannelMode::STEREO : substream.channel_mode;
    ac4_add_layout(channels.layouts, mode);
    ac4_add_layout(channels.core_layouts, ac4_core_channel_mode(mode));
    channels.channel_mask |= ac4_substream_channel_mask(substream, kind);
    if (!ac4_is_immersive_mode(mode)) return;
    channels.b_4_back_channels_present |= substream.b_4_back_channels_present;
    channels.top_channel_pairs =
        std::max(channels.top_channel_pairs, top_channel_pairs(substream.top_channels_present));
}

void add_object_substream(ac4_group_channels& channels, const ac4_group_substream& substream) {
    if (substream.b_ajoc != 0 && substream.b_static_dmx != 0) {
        ac4_add_layout(channels.core_layouts, substream.b_lfe != 0 ? Ac4ChannelMode::L5_1 : Ac4ChannelMode::L5_0);
    } else {
        channels.adaptive = true;
    }
}

ac4_group_channels derive_channels(bool channel_coded, std::span<const ac4_group_substream> substreams,
                                   Ac4PresentationKind kind) {
    ac4_group_channels channels;
    for (const ac4_group_substream& substream : substreams) {
        if (channel_coded) {
            add_channel_substream(channels, substream, kind);
        } else {
            add_object_substream(channels, substream);
        }
    }
    return channels;
}

}  // namespace

uint32_t ac4_substream_channel_mask(const ac4_group_substream& substream, Ac4PresentationKind kind) {
    if (is_rendered_stereo(substream, kind)) return AC4_MASK_STEREO;
    uint32_t mask = ac4_channel_mode_mask(substream.channel_mode);
    if (!ac4_is_immersive_mode(substream.channel_mode)) return mask;
    if (substream.b_4_back_channels_present == 0) mask &= ~AC4_MASK_BACK;
    if (substream.b_centre_present == 0) mask &= ~AC4_MASK_CENTRE;
    if (substream.top_channels_present != 3) mask &= ~(AC4_MASK_TOP_FRONT | AC4_MASK_TOP_BACK);
    if (top_channel_pairs(substream.top_channels_present) == 1) mask |= AC4_MASK_TOP;
    return mask;
}

void ac4_derive_group(ac4_substream_group_info& group, std::span<const ac4_group_substream> substreams) {
    group.channels = derive_channels(group.b_channel_coded != 0, substreams, Ac4PresentationKind::PLAIN);
    group.ims_channels = derive_channels(group.b_channel_coded != 0, substreams, Ac4PresentationKind::IMMERSIVE_STEREO);
}

void ac4_derive_presentation(ac4_presentation_v1_info& presentation, std::span<const uint16_t> group_indices,
                             std::span<const ac4_substream_group_info> groups) {
    const Ac4PresentationKind kind = ac4_presentation_kind(presentation.presentation_version);
    Ac4LayoutSuperset layouts;
    Ac4LayoutSuperset core_layouts;
    bool objects = false;
    bool adaptive = false;
    for (const uint16_t index : group_indices) {
        const ac4_substream_group_info& group = groups[index];
        const ac4_group_channels& channels =
            kind == Ac4PresentationKind::IMMERSIVE_STEREO ? group.ims_channels : group.channels;
        ac4_add_layouts(layouts, channels.layouts);
        ac4_add_layouts(core_layouts, channels.core_layouts);
        objects = objects || group.b_channel_coded == 0;
        adaptive = adaptive || channels.adaptive;
        presentation.presentation_channel_mask |= channels.channel_mask;
        presentation.pres_b_4_back_channels_present |= channels.b_4_back_channels_present;
        presentation.pres_top_channel_pairs = std::max(presentation.pres_top_channel_pairs, channels.top_channel_pairs);
    }
    presentation.presentation_ch_mode = objects ? Ac4ChannelMode::NONE : ac4_superset_mode(layouts);
    presentation.b_presentation_channel_coded = presentation.presentation_ch_mode != Ac4ChannelMode::NONE;
    const Ac4ChannelMode core = ac4_superset_mode(core_layouts);
    const bool no_core = adaptive || core == presentation.presentation_ch_mode;
    presentation.pres_ch_mode_core = no_core ? Ac4ChannelMode::NONE : core;
}

}  // namespace quorlin
