#pragma once

#include <cstdint>

struct PesStream;

// Writes the time stamps of a PES packet that begins now to the stream's log, when one is attached, and watches whether
// they rise. One line a packet: "PTS;DTS;byte offset of the payload;hh:mm:ss:ms since the first", times in 90 kHz
// ticks. `packets_read` numbers the transport packet.
void log_timestamp(PesStream& stream, int64_t packets_read);
