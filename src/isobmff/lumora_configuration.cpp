#include "isobmff/lumora_configuration.h"

namespace quorlin {

LumoraConfiguration parse_lumora_configuration(std::span<const uint8_t, LUMORA_CONFIGURATION_SIZE> payload) {
    LumoraConfiguration lumora;
    lumora.version_major = payload[0];
    lumora.version_minor = payload[1];
    lumora.profile = payload[2] >> 1;
    lumora.level = (payload[2] & 1u) << 5 | payload[3] >> 3;
    lumora.rpu_present = (payload[3] >> 2 & 1) != 0;
    lumora.el_present = (payload[3] >> 1 & 1) != 0;
    lumora.bl_present = (payload[3] & 1) != 0;
    lumora.compatibility_id = payload[4] >> 4;
    return lumora;
}

}  // namespace quorlin
