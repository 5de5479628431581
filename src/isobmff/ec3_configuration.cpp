#include "isobmff/ec3_configuration.h"

#include "bits/byte_order.h"
#include "ztpinfo/channel_locations.h"

namespace quorlin {

namespace {

constexpr uint32_t CHAN_LOC_BITS = 9;

// chan_loc counts from the least significant bit and leaves out Lts/Rts: bits 0 to 7 are locations 5 to 12, bit 8 is
// LFE2 (location 14).
uint32_t chan_loc_location(uint32_t bit) {
    return bit < 8 ? 0x0400u >> bit : 0x0002u;
}

uint32_t chan_loc_to_chanmap(uint32_t chan_loc) {
    uint32_t chanmap = 0;
    for (uint32_t bit = 0; bit < CHAN_LOC_BITS; ++bit)
        if ((chan_loc >> bit & 1) != 0) chanmap |= chan_loc_location(bit);
    return chanmap;
}

// ETSI TS 102 366, F.6.1: one independent substream at `position`, which moves past it.
Ec3IndependentSubstream parse_independent_substream(std::span<const uint8_t> payload, size_t& position,
                                                    uint32_t& reserved_bits_set) {
    Ec3IndependentSubstream substream;
    const uint32_t a = load_u8(payload, position++);
    substream.fscod = a >> 6;
    substream.bsid = a >> 1 & 31;
    reserved_bits_set += a & 1;
    const uint32_t b = load_u8(payload, position++);
    substream.asvc = b >> 7;
    substream.bsmod = b >> 4 & 7;
    substream.acmod = b >> 1 & 7;
    substream.lfeon = b & 1;
    const uint32_t c = load_u8(payload, position++);
    reserved_bits_set += c >> 5 & 1;  // of the three reserved bits only this one, deliberately
    substream.num_dep_sub = c >> 1 & 15;
    if (substream.num_dep_sub != 0) substream.chan_loc = (c & 1) << 8 | load_u8(payload, position++);
    return substream;
}

}  // namespace

Ec3Configuration parse_dec3(std::span<const uint8_t> payload) {
    Ec3Configuration ec3;
    ec3.data_rate = load_u8(payload, 0) * 32u + (load_u8(payload, 1) >> 3);
    ec3.num_ind_sub = (load_u8(payload, 1) & 7u) + 1;
    size_t position = 2;
    for (uint32_t i = 0; i < ec3.num_ind_sub; ++i)
        ec3.substreams[i] = parse_independent_substream(payload, position, ec3.reserved_bits_set);
    if (position < payload.size()) {
        ec3.flag_ec3_extension_type_a = load_u8(payload, position) & 1;
        if (ec3.flag_ec3_extension_type_a == 1) ec3.complexity_index_type_a = load_u8(payload, position + 1);
    }
    return ec3;
}

uint32_t chanmap_to_chan_loc(uint32_t chanmap) {
    uint32_t chan_loc = 0;
    for (uint32_t bit = 0; bit < CHAN_LOC_BITS; ++bit)
        if ((chanmap & chan_loc_location(bit)) != 0) chan_loc |= 1u << bit;
    return chan_loc;
}

uint32_t count_channels(const Ec3IndependentSubstream& substream) {
    const uint32_t locations = ztpinfo_acmod_locations(substream.acmod) | chan_loc_to_chanmap(substream.chan_loc) |
                               (substream.lfeon != 0 ? CHANMAP_LFE : 0u);
    return chanmap_channels(static_cast<uint16_t>(locations));
}

}  // namespace quorlin
