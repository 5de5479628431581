#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace quorlin {

// ETSI TS 102 366, F.6: one independent substream of a dec3 box.
struct Ec3IndependentSubstream {
    uint32_t fscod = 0;
    uint32_t bsid = 0;
    uint32_t asvc = 0;
    uint32_t bsmod = 0;
    uint32_t acmod = 0;
    uint32_t lfeon = 0;
    uint32_t num_dep_sub = 0;
    uint32_t chan_loc = 0;
};

// ETSI TS 102 366, F.6: EC3SpecificBox. All zero without one.
struct Ec3Configuration {
    uint32_t data_rate = 0;    // kbit/s
    uint32_t num_ind_sub = 0;  // the number, not the field that is one less
    std::array<Ec3IndependentSubstream, 8> substreams;
    uint32_t reserved_bits_set = 0;          // reserved fields that are looked at and are not zero
    uint32_t flag_ec3_extension_type_a = 0;  // object audio
    uint32_t complexity_index_type_a = 0;
};

// The payload of a dec3 box (ETSI TS 102 366, F.6.1); what lies past its end reads as zero.
Ec3Configuration parse_dec3(std::span<const uint8_t> payload);

// An E-AC-3 custom channel map (ETSI TS 102 366, E.1.3.1.8, first location in the most significant of 16 bits) in the
// bit order of chan_loc (F.6.2.13).
uint32_t chanmap_to_chan_loc(uint32_t chanmap);

// The channels of an independent substream together with its dependent ones.
uint32_t count_channels(const Ec3IndependentSubstream& substream);

}  // namespace quorlin
