#pragma once

#include <cstdint>
#include <span>

namespace quorlin {

// Lumora HDR video, descriptor tag 0xB0.
struct LmraDescriptorFields {
    uint8_t version_major = 0;
    uint8_t version_minor = 0;
    uint8_t profile = 0;
    uint8_t level = 0;
    uint8_t rpu_present_flag = 0;
    uint8_t el_present_flag = 0;
    uint8_t bl_present_flag = 0;
    uint32_t dependency_pid = 0;             // only without a base layer
    uint8_t bl_signal_compatibility_id = 0;  // only when one byte is left for it
    int32_t bytes_left = 0;                  // before bl_signal_compatibility_id; below 0 in a cut descriptor
};

// The fields of a Lumora descriptor, tag and length byte included; what lies after its end is 0.
LmraDescriptorFields read_lumora_descriptor(std::span<const uint8_t> raw);

// Prints what the descriptor announces. Returns 0, or TS_CHECK_FAILED after a finding (printed).
[[nodiscard]] int list_lumora_descriptor(const LmraDescriptorFields& fields);

}  // namespace quorlin
