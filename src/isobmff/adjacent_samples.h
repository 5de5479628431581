#pragma once

#include <cstdint>
#include <span>

namespace quorlin {

// Samples that lie one after another in their file, from `offset` on.
struct AdjacentSamples {
    uint64_t offset = 0;
    std::span<uint8_t> bytes;
    std::span<const uint32_t> sizes;
};

}  // namespace quorlin
