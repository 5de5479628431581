#pragma once

#include <cstdint>
#include <span>

namespace quorlin {

constexpr uint32_t TS_PACKET_SIZE = 188;
constexpr uint8_t TS_SYNC_BYTE = 0x47;
constexpr uint32_t TS_PID_COUNT = 8192;
constexpr uint16_t PAT_PID = 0;
constexpr uint8_t TS_ADAPTATION_FIELD_ONLY = 2;

// ISO/IEC 13818-1, table 2-2: the fields of a packet header that the demultiplexer goes by. The error indicator,
// priority, continuity counter and the clock reference of the adaptation field take part in no rule.
struct TsPacket {
    bool payload_unit_start_indicator = false;
    uint16_t pid = 0;
    uint8_t adaptation_field_control = 0;
    bool scrambled = false;            // transport_scrambling_control is not 0
    std::span<const uint8_t> payload;  // of the packet it was parsed from; empty when the header leaves none
};

// Parses the header of one packet of TS_PACKET_SIZE bytes. adaptation_field_control 0 is treated as payload only. An
// adaptation field that reaches past the packet leaves no payload.
TsPacket parse_ts_packet(std::span<const uint8_t> bytes);

}  // namespace quorlin
