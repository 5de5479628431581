#include "ac4/ac4_codec_string.h"

#include <cstdio>

namespace quorlin {

std::string ac4_codec_string(uint32_t bitstream_version, uint32_t presentation_version, uint32_t mdcompat) {
    char text[32];
    std::snprintf(text, sizeof text, "ac-4.%02x.%02x.%02x", bitstream_version, presentation_version, mdcompat);
    return text;
}

}  // namespace quorlin
