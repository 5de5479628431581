#pragma once

#include <cstdint>
#include <optional>

namespace quorlin {

// What movie fragments say about a track, ISO/IEC 14496-12, 8.8: the values of trex, overridden by those of tfhd, also
// for the fragments that follow.
struct FragmentState {
    uint32_t default_sample_duration = 0;
    uint32_t default_sample_size = 0;
    uint32_t default_sample_description_index = 0;
    uint64_t base_data_offset = 0;
    std::optional<uint64_t> decode_time;  // tfdt of the current traf, until its first run
};

}  // namespace quorlin
