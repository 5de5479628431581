#pragma once

#include <cstdint>
#include <cstdio>

namespace quorlin {

// Values of PTS_DTS_flags (ISO/IEC 13818-1, 2.4.3.7); any other: no time stamps.
constexpr uint8_t PTS_ONLY = 2;
constexpr uint8_t PTS_AND_DTS = 3;

constexpr int64_t NO_PTS = -1;

// The time stamps of a PES packet, in 90 kHz ticks.
struct PesTimestamps {
    uint8_t PTS_DTS_flags = 0;
    int64_t pts = NO_PTS;
    int64_t dts = 0;  // kept from the last packet that carried one
};

// The time stamps of one stream so far. No option attaches a file: a developer who looks for a jump in them does.
struct TimestampLog {
    std::FILE* file = nullptr;   // a line for each time stamp; borrowed, null for none
    bool starts_at_dts = false;  // the times of the lines count from the first DTS, else from the first PTS
    int64_t initial_offset = 0;  // 0 = unset
    int64_t last_timestamp = 0;  // 0 = unset
};

// Writes the time stamps of a PES packet that begins now to the log's file, when there is one, and watches whether they
// rise. One line a packet: "PTS;DTS;byte offset of the payload;hh:mm:ss:ms since the first", times in 90 kHz ticks.
// `packets_read` numbers the transport packet.
void log_timestamps(TimestampLog& log, const PesTimestamps& times, uint32_t payload_offset, int64_t packets_read);

}  // namespace quorlin
