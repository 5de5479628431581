#include "ts/ts_packet.h"

#include <algorithm>

#include "bits/byte_order.h"

namespace quorlin {

namespace {

constexpr uint8_t ADAPTATION_FIELD_AND_PAYLOAD = 3;

}  // namespace

TsPacket parse_ts_packet(std::span<const uint8_t> bytes) {
    TsPacket packet;
    packet.payload_unit_start_indicator = (load_u8(bytes, 1) & 0x40) != 0;
    packet.pid = load_be16(bytes, 1) & 0x1FFF;
    packet.scrambled = (load_u8(bytes, 3) & 0xC0) != 0;
    packet.adaptation_field_control = load_u8(bytes, 3) >> 4 & 3;
    if (packet.adaptation_field_control == TS_ADAPTATION_FIELD_ONLY) return packet;
    size_t start = 4;
    if (packet.adaptation_field_control == ADAPTATION_FIELD_AND_PAYLOAD) start = 5 + size_t{load_u8(bytes, 4)};
    packet.payload = bytes.subspan(std::min(start, bytes.size()));
    return packet;
}

}  // namespace quorlin
