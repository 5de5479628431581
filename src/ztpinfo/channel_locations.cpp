#include "ztpinfo/channel_locations.h"

#include <bit>

namespace quorlin {

namespace {

uint32_t substream_locations(const ZtpSubstreamSummary& substream) {
    if (substream.chanmap != 0) return substream.chanmap;
    return ztpinfo_acmod_locations(substream.acmod) | (substream.lfeon != 0 ? CHANMAP_LFE : 0u);
}

}  // namespace

uint16_t ztpinfo_acmod_locations(uint32_t acmod) {
    constexpr uint16_t LOCATIONS[8] = {
        0xA000,  // 1+1
        0x4000,  // C
        0xA000,  // L R
        0xE000,  // L C R
        0xA100,  // L R Cs
        0xE100,  // L C R Cs
        0xB800,  // L R Ls Rs
        0xF800,  // L C R Ls Rs
    };
    return LOCATIONS[acmod & 7];
}

uint32_t chanmap_channels(uint16_t chanmap, uint16_t pairs) {
    return static_cast<uint32_t>(std::popcount(chanmap) + std::popcount(uint32_t{chanmap} & pairs));
}

uint32_t ztpinfo_channel_count(const ZtpProgramSummary& program) {
    uint32_t locations = substream_locations(program.independent);
    for (const ZtpSubstreamSummary& dependent : program.dependent)
        if (dependent.bsid != 0) locations |= substream_locations(dependent);
    return chanmap_channels(static_cast<uint16_t>(locations));
}

}  // namespace quorlin
