#pragma once

#include <cstdint>
#include <string>

namespace quorlin {

// The RFC 6381 codec string of AC-4: "ac-4." and the three numbers, two hex digits each.
std::string ac4_codec_string(uint32_t bitstream_version, uint32_t presentation_version, uint32_t mdcompat);

}  // namespace quorlin
