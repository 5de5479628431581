#pragma once

#include <cstdint>

namespace quorlin {

// ETSI TS 103 190-2, channel_mode: a layout by its number.
enum class Ac4ChannelMode : int8_t {
    NONE = -1,
    MONO = 0,
    STEREO = 1,
    L3_0 = 2,
    L5_0 = 3,
    L5_1 = 4,
    L7_0_BACK = 5,  // 3/4/0
    L7_1_BACK = 6,
    L7_0_WIDE = 7,  // 5/2/0
    L7_1_WIDE = 8,
    L7_0_HEIGHT = 9,  // 3/2/2
    L7_1_HEIGHT = 10,
    L7_0_4 = 11,
    L7_1_4 = 12,
    L9_0_4 = 13,
    L9_1_4 = 14,
    L22_2 = 15,
    RESERVED = 16,  // the first of them
    MAX = 32,       // the DSI has five bits for a mode, so all above 31 count as one
};

constexpr int channel_mode_number(Ac4ChannelMode mode) {
    return static_cast<int>(mode);
}

// A number from the escape-coded field.
constexpr Ac4ChannelMode channel_mode_of(uint32_t number) {
    constexpr auto MAX = static_cast<uint32_t>(Ac4ChannelMode::MAX);
    return static_cast<Ac4ChannelMode>(number < MAX ? number : MAX);
}

// True for the modes whose layout is told by the flags for four back channels, centre and top channels.
constexpr bool ac4_is_immersive_mode(Ac4ChannelMode mode) {
    return mode >= Ac4ChannelMode::L7_0_4 && mode <= Ac4ChannelMode::L9_1_4;
}

// True for the modes that carry add_ch_base: the 7.X layouts other than 3/4/0.
constexpr bool ac4_has_add_ch_base(Ac4ChannelMode mode) {
    return mode >= Ac4ChannelMode::L7_0_WIDE && mode <= Ac4ChannelMode::L7_1_HEIGHT;
}

// True for the modes that stand for a stereo pair rendered for headphones in an immersive stereo presentation.
constexpr bool ac4_is_7_x_mode(Ac4ChannelMode mode) {
    return mode >= Ac4ChannelMode::L7_0_BACK && mode <= Ac4ChannelMode::L7_1_HEIGHT;
}

// The core of an immersive layout: the layout without its top and screen channels. Other modes are their own core.
Ac4ChannelMode ac4_core_channel_mode(Ac4ChannelMode mode);

// What layouts are compared by: how many channels they have at ear level, for low frequencies, and above or wide of the
// listener.
struct Ac4ChannelNumbers {
    uint8_t ear_level = 0;
    uint8_t lfe = 0;
    uint8_t height_or_wide = 0;
};

// Layouts taken together, ETSI TS 103 190-2, superset.
struct Ac4LayoutSuperset {
    Ac4ChannelMode first = Ac4ChannelMode::NONE;
    bool several = false;      // other layouts than the first were added
    Ac4ChannelNumbers most{};  // of each kind of channels; reserved modes have none that are known
};

// Adds a layout, or those of another superset; NONE adds nothing.
void ac4_add_layout(Ac4LayoutSuperset& superset, Ac4ChannelMode mode);
void ac4_add_layouts(Ac4LayoutSuperset& superset, const Ac4LayoutSuperset& more);

// The one layout that was added, or the lowest mode with as many channels of each kind as all of them. NONE for none.
Ac4ChannelMode ac4_superset_mode(const Ac4LayoutSuperset& superset);

// The bits of a 24-bit channel mask (ETSI TS 103 190-2, annex A) that the layouts of modes differ in beside their
// number of channels.
constexpr uint32_t AC4_MASK_STEREO = 1u << 0;
constexpr uint32_t AC4_MASK_CENTRE = 1u << 1;
constexpr uint32_t AC4_MASK_BACK = 1u << 3;
constexpr uint32_t AC4_MASK_TOP_FRONT = 1u << 4;
constexpr uint32_t AC4_MASK_TOP_BACK = 1u << 5;
constexpr uint32_t AC4_MASK_TOP = 1u << 7;

// 24-bit channel mask of a mode with all its channels; 0 for NONE and reserved modes.
uint32_t ac4_channel_mode_mask(Ac4ChannelMode mode);

// Channel count of a layout given by the low 19 bits of its mask; 0 when no mode has that mask.
uint32_t ac4_channel_count(uint32_t channel_mask);

}  // namespace quorlin
