#pragma once

#include <cstdint>
#include <span>

#include "ts/descriptors.h"

// Decodes a Lumora descriptor (tag and length byte included) and prints what it announces. Returns 0, or 11 after a
// finding (printed).
[[nodiscard]] int parse_lumora_descriptor(std::span<const uint8_t> bytes, LmraDescriptorFields& fields);
