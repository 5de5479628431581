#pragma once

#include <cstdint>

#include "ztpinfo/ztpinfo.h"

namespace quorlin {

// Channel locations in the form of a chanmap (ETSI TS 102 366, E.1.3.1.8): the first location in the most significant
// of 16 bits.

constexpr uint16_t CHANMAP_LFE = 0x0001;

// The locations that stand for two channels: Lc/Rc, Lrs/Rrs, Lsd/Rsd, Lw/Rw, Lvh/Rvh, Lts/Rts.
constexpr uint16_t CHANMAP_PAIRS = 0x0674;
// Rules 88 and 133 count Lts/Rts as one channel, deliberately.
constexpr uint16_t CHANMAP_PAIRS_OF_RULES = 0x0670;

// The locations of an acmod (ETSI TS 102 366, 4.4.2.3), without LFE. 1+1 counts as left and right.
uint16_t ztpinfo_acmod_locations(uint32_t acmod);

// Channels at these locations: those in `pairs` count twice.
uint32_t chanmap_channels(uint16_t chanmap, uint16_t pairs = CHANMAP_PAIRS);

// Channels that the substreams of a program present together, LFE included.
uint32_t ztpinfo_channel_count(const ZtpProgramSummary& program);

}  // namespace quorlin
