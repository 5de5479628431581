#pragma once

#include <cstdint>
#include <span>

namespace quorlin {

// lmcC and lmvC.
struct LumoraConfiguration {
    uint32_t version_major = 0;
    uint32_t version_minor = 0;
    uint32_t profile = 0;
    uint32_t level = 0;
    bool rpu_present = false;
    bool el_present = false;
    bool bl_present = false;
    uint32_t compatibility_id = 0;
};

// The bytes that a payload of these boxes begins with.
constexpr size_t LUMORA_CONFIGURATION_SIZE = 5;

LumoraConfiguration parse_lumora_configuration(std::span<const uint8_t, LUMORA_CONFIGURATION_SIZE> payload);

}  // namespace quorlin
