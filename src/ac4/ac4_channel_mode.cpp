#include "ac4/ac4_channel_mode.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quorlin {

namespace {

struct Layout {
    uint32_t mask;
    uint32_t channels;
    Ac4ChannelNumbers numbers;
};

// ETSI TS 103 190-2, channel_mode: the layouts by mode.
constexpr std::array<Layout, static_cast<size_t>(Ac4ChannelMode::RESERVED)> LAYOUTS = {{
    {0x000002, 1, {1, 0, 0}},     // 1.0
    {0x000001, 2, {2, 0, 0}},     // 2.0
    {0x000003, 3, {3, 0, 0}},     // 3.0
    {0x000007, 5, {5, 0, 0}},     // 5.0
    {0x000047, 6, {5, 1, 0}},     // 5.1
    {0x00000F, 7, {7, 0, 0}},     // 7.0 (3/4/0)
    {0x00004F, 8, {7, 1, 0}},     // 7.1 (3/4/0)
    {0x020007, 7, {7, 0, 1}},     // 7.0 (5/2/0)
    {0x020047, 8, {7, 1, 1}},     // 7.1 (5/2/0)
    {0x040007, 7, {7, 0, 2}},     // 7.0 (3/2/2)
    {0x040047, 8, {7, 1, 2}},     // 7.1 (3/2/2)
    {0x00003F, 11, {7, 0, 4}},    // 7.0.4
    {0x00007F, 12, {7, 1, 4}},    // 7.1.4
    {0x01003F, 13, {9, 0, 4}},    // 9.0.4
    {0x01007F, 14, {9, 1, 4}},    // 9.1.4
    {0x02FF7F, 24, {10, 2, 12}},  // 22.2
}};

// The bits of a mask that the layouts above are told apart by.
constexpr uint32_t LAYOUT_MASK = 0x7FFFF;

// NONE and the reserved modes have no channels that are known.
constexpr Layout layout(Ac4ChannelMode mode) {
    return mode == Ac4ChannelMode::NONE || mode >= Ac4ChannelMode::RESERVED ? Layout{}
                                                                            : LAYOUTS[static_cast<size_t>(mode)];
}

bool covers(const Ac4ChannelNumbers& a, const Ac4ChannelNumbers& b) {
    return a.ear_level >= b.ear_level && a.lfe >= b.lfe && a.height_or_wide >= b.height_or_wide;
}

}  // namespace

Ac4ChannelMode ac4_core_channel_mode(Ac4ChannelMode mode) {
    if (mode == Ac4ChannelMode::L7_0_4 || mode == Ac4ChannelMode::L9_0_4) return Ac4ChannelMode::L7_0_BACK;
    if (mode == Ac4ChannelMode::L7_1_4 || mode == Ac4ChannelMode::L9_1_4) return Ac4ChannelMode::L7_1_BACK;
    return mode;
}

void ac4_add_layout(Ac4LayoutSuperset& superset, Ac4ChannelMode mode) {
    ac4_add_layouts(superset, {.first = mode, .most = layout(mode).numbers});
}

void ac4_add_layouts(Ac4LayoutSuperset& superset, const Ac4LayoutSuperset& more) {
    if (more.first == Ac4ChannelMode::NONE) return;
    if (superset.first == Ac4ChannelMode::NONE) {
        superset = more;
        return;
    }
    superset.several = true;
    Ac4ChannelNumbers& most = superset.most;
    most.ear_level = std::max(most.ear_level, more.most.ear_level);
    most.lfe = std::max(most.lfe, more.most.lfe);
    most.height_or_wide = std::max(most.height_or_wide, more.most.height_or_wide);
}

Ac4ChannelMode ac4_superset_mode(const Ac4LayoutSuperset& superset) {
    if (!superset.several) return superset.first;
    const auto lowest = std::find_if(LAYOUTS.begin(), LAYOUTS.end(),
                                     [&](const Layout& known) { return covers(known.numbers, superset.most); });
    return static_cast<Ac4ChannelMode>(lowest - LAYOUTS.begin());  // 22.2 covers everything
}

uint32_t ac4_channel_mode_mask(Ac4ChannelMode mode) {
    return layout(mode).mask;
}

uint32_t ac4_channel_count(uint32_t channel_mask) {
    for (const Layout& known : LAYOUTS)
        if (known.mask == (channel_mask & LAYOUT_MASK)) return known.channels;
    return 0;
}

}  // namespace quorlin
