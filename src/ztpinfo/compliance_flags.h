#pragma once

#include <bitset>
#include <cstdint>

namespace quorlin {

constexpr uint32_t COMPLIANCE_NUMBERS = 192;

// Broken rules by message number. No number is in both sets.
struct ComplianceFlags {
    std::bitset<COMPLIANCE_NUMBERS> failures;
    std::bitset<COMPLIANCE_NUMBERS> warnings;
};

}  // namespace quorlin
