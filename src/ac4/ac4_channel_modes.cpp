#include "ac4/ac4_channel_modes.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

struct ChannelMode {
    uint32_t mask;
    uint32_t channels;
};

// ETSI TS 103 190-2, channel_mode: mask and channel count by mode.
constexpr std::array<ChannelMode, AC4_RESERVED_CHANNEL_MODE> CHANNEL_MODES = {{
    {0x000002, 1},   // 1.0
    {0x000001, 2},   // 2.0
    {0x000003, 3},   // 3.0
    {0x000007, 5},   // 5.0
    {0x000047, 6},   // 5.1
    {0x00000F, 7},   // 7.0 (3/4/0)
    {0x00004F, 8},   // 7.1 (3/4/0)
    {0x020007, 7},   // 7.0 (5/2/0)
    {0x020047, 8},   // 7.1 (5/2/0)
    {0x040007, 7},   // 7.0 (3/2/2)
    {0x040047, 8},   // 7.1 (3/2/2)
    {0x00003F, 11},  // 7.0.4
    {0x00007F, 12},  // 7.1.4
    {0x01003F, 13},  // 9.0.4
    {0x01007F, 14},  // 9.1.4
    {0x02FF7F, 24},  // 22.2
}};

// The bits of a mask that the layouts above are told apart by.
constexpr uint32_t LAYOUT_MASK = 0x7FFFF;

constexpr uint32_t MASK_CENTRE = 1u << 1;
constexpr uint32_t MASK_BACK = 1u << 3;
constexpr uint32_t MASK_TOP_FRONT = 1u << 4;
constexpr uint32_t MASK_TOP_BACK = 1u << 5;
constexpr uint32_t MASK_TOP = 1u << 7;
constexpr uint32_t MASK_STEREO = 1u << 0;

constexpr size_t MODE_STATES = std::tuple_size_v<Ac4ModeMap>;

constexpr size_t state(int8_t mode) {
    return static_cast<size_t>(mode + 1);
}

// What two channel modes are compared by: how many channels they have at ear level, for low frequencies, and above or
// wide of the listener.
struct ChannelNumbers {
    uint8_t ear_level;
    uint8_t lfe;
    uint8_t height_or_wide;
};

// By mode. 22.2 is missing: it has everything.
constexpr int8_t MODE_22_2 = 15;
constexpr std::array<ChannelNumbers, MODE_22_2> CHANNEL_NUMBERS = {{
    {1, 0, 0},
    {2, 0, 0},
    {3, 0, 0},
    {5, 0, 0},
    {5, 1, 0},
    {7, 0, 0},
    {7, 1, 0},
    {7, 0, 1},
    {7, 1, 1},
    {7, 0, 2},
    {7, 1, 2},
    {7, 0, 4},
    {7, 1, 4},
    {9, 0, 4},
    {9, 1, 4},
}};

// A reserved mode has no channels that are known.
constexpr ChannelNumbers channel_numbers(int8_t mode) {
    return mode > MODE_22_2 ? ChannelNumbers{} : CHANNEL_NUMBERS[static_cast<size_t>(mode)];
}

constexpr bool covers(ChannelNumbers a, ChannelNumbers b) {
    return a.ear_level >= b.ear_level && a.lfe >= b.lfe && a.height_or_wide >= b.height_or_wide;
}

// ETSI TS 103 190-2, superset: the lowest mode with as many channels of each kind as both have; no mode (-1) adds
// nothing to another one.
constexpr int8_t superset(int8_t a, int8_t b) {
    if (a == -1) return b;
    if (b == -1) return a;
    if (a == MODE_22_2 || b == MODE_22_2) return MODE_22_2;
    int8_t mode = 0;
    while (!covers(channel_numbers(mode), channel_numbers(a)) || !covers(channel_numbers(mode), channel_numbers(b)))
        ++mode;
    return mode;
}

constexpr std::array<Ac4ModeMap, MODE_STATES> make_superset_table() {
    std::array<Ac4ModeMap, MODE_STATES> table{};
    for (size_t a = 0; a < MODE_STATES; ++a)
        for (size_t b = 0; b < MODE_STATES; ++b)
            table[a][b] =
                superset(static_cast<int8_t>(static_cast<int>(a) - 1), static_cast<int8_t>(static_cast<int>(b) - 1));
    return table;
}

constexpr std::array<Ac4ModeMap, MODE_STATES> SUPERSET = make_superset_table();

static_assert(superset(0, 1) == 1 && superset(3, 4) == 4 && superset(4, 5) == 6 && superset(5, 7) == 7 &&
              superset(6, 7) == 8 && superset(9, 11) == 11 && superset(6, 12) == 12 && superset(12, 11) == 12 &&
              superset(13, 12) == 14 && superset(0, 15) == 15);

// The 7.X modes of an immersive stereo presentation stand for a stereo pair that is rendered for headphones.
bool is_rendered_stereo(uint32_t channel_mode, bool ims) {
    return ims && channel_mode >= 5 && channel_mode <= 10;
}

int8_t effective_mode(const ac4_group_substream& substream, bool ims) {
    if (is_rendered_stereo(substream.channel_mode, ims)) return 1;
    return static_cast<int8_t>(std::min(substream.channel_mode, AC4_MAX_DERIVED_CHANNEL_MODE));
}

// The core of an immersive layout is the layout without its top and screen channels.
int8_t core_mode(int8_t mode) {
    if (mode == 11 || mode == 13) return 5;
    if (mode == 12 || mode == 14) return 6;
    return mode;
}

uint8_t top_channel_pairs(uint8_t top_channels_present) {
    if (top_channels_present == 3) return 2;
    return top_channels_present == 0 ? 0 : 1;
}

Ac4ModeMap unchanged() {
    Ac4ModeMap map{};
    for (size_t i = 0; i < MODE_STATES; ++i) map[i] = static_cast<int8_t>(static_cast<int>(i) - 1);
    return map;
}

// Presentations may name a large group over and over: what its substreams make of every mode so far is worked out
// once, so that naming it costs a look-up.
void add_mode(Ac4ModeMap& map, int8_t mode) {
    for (int8_t& after : map) after = SUPERSET[state(after)][state(mode)];
}

void add_channel_substream(ac4_group_channels& channels, const ac4_group_substream& substream, bool ims) {
    const int8_t mode = effective_mode(substream, ims);
    add_mode(channels.ch_mode_after, mode);
    add_mode(channels.core_ch_mode_after, core_mode(mode));
    channels.channel_mask |= ac4_substream_channel_mask(substream, ims);
    if (!ac4_is_immersive_mode(substream.channel_mode)) return;
    channels.b_4_back_channels_present |= substream.b_4_back_channels_present;
    channels.top_channel_pairs =
        std::max(channels.top_channel_pairs, top_channel_pairs(substream.top_channels_present));
}

void add_object_substream(ac4_group_channels& channels, const ac4_group_substream& substream) {
    if (substream.b_ajoc != 0 && substream.b_static_dmx != 0) {
        add_mode(channels.core_ch_mode_after, static_cast<int8_t>(3 + substream.b_lfe));
    } else {
        channels.adaptive = true;
    }
}

ac4_group_channels derive_channels(bool channel_coded, std::span<const ac4_group_substream> substreams, bool ims) {
    ac4_group_channels channels;
    channels.ch_mode_after = unchanged();
    channels.core_ch_mode_after = unchanged();
    for (const ac4_group_substream& substream : substreams) {
        if (channel_coded) {
            add_channel_substream(channels, substream, ims);
        } else {
            add_object_substream(channels, substream);
        }
    }
    return channels;
}

}  // namespace

uint32_t ac4_channel_mode_mask(uint32_t channel_mode) {
    return channel_mode < CHANNEL_MODES.size() ? CHANNEL_MODES[channel_mode].mask : 0;
}

uint32_t ac4_channel_count(uint32_t channel_mask) {
    for (const ChannelMode& mode : CHANNEL_MODES)
        if (mode.mask == (channel_mask & LAYOUT_MASK)) return mode.channels;
    return 0;
}

uint32_t ac4_substream_channel_mask(const ac4_group_substream& substream, bool ims) {
    if (is_rendered_stereo(substream.channel_mode, ims)) return MASK_STEREO;
    uint32_t mask = ac4_channel_mode_mask(substream.channel_mode);
    if (!ac4_is_immersive_mode(substream.channel_mode)) return mask;
    if (substream.b_4_back_channels_present == 0) mask &= ~MASK_BACK;
    if (substream.b_centre_present == 0) mask &= ~MASK_CENTRE;
    if (substream.top_channels_present != 3) mask &= ~(MASK_TOP_FRONT | MASK_TOP_BACK);
    if (top_channel_pairs(substream.top_channels_present) == 1) mask |= MASK_TOP;
    return mask;
}

void ac4_derive_group(ac4_substream_group_info& group, std::span<const ac4_group_substream> substreams) {
    group.channels = derive_channels(group.b_channel_coded != 0, substreams, false);
    group.ims_channels = derive_channels(group.b_channel_coded != 0, substreams, true);
}

void ac4_derive_presentation(ac4_presentation_v1_info& presentation, std::span<const uint16_t> group_indices,
                             std::span<const ac4_substream_group_info> groups) {
    const bool ims = presentation.presentation_version == AC4_IMS_PRESENTATION_VERSION;
    int8_t ch_mode = -1;
    int8_t core_ch_mode = -1;
    bool objects = false;
    bool adaptive = false;
    for (const uint16_t index : group_indices) {
        const ac4_substream_group_info& group = groups[index];
        const ac4_group_channels& channels = ims ? group.ims_channels : group.channels;
        ch_mode = channels.ch_mode_after[state(ch_mode)];
        core_ch_mode = channels.core_ch_mode_after[state(core_ch_mode)];
        objects = objects || group.b_channel_coded == 0;
        adaptive = adaptive || channels.adaptive;
        presentation.presentation_channel_mask |= channels.channel_mask;
        presentation.pres_b_4_back_channels_present |= channels.b_4_back_channels_present;
        presentation.pres_top_channel_pairs = std::max(presentation.pres_top_channel_pairs, channels.top_channel_pairs);
    }
    presentation.presentation_ch_mode = objects ? int8_t{-1} : ch_mode;
    presentation.b_presentation_channel_coded = presentation.presentation_ch_mode != -1;
    const bool no_core = adaptive || core_ch_mode == presentation.presentation_ch_mode;
    presentation.pres_ch_mode_core = no_core ? int8_t{-1} : core_ch_mode;
}
