#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "bits/output_file.h"
#include "bits/place.h"
#include "ts/psi.h"
#include "ts/stream_table.h"
#include "ts/timestamp_log.h"

namespace quorlin {

// Payload bytes that a slot holds at most; also what a PES packet of unknown length may collect. A longer one is cut
// here, and the rest up to the next unit start is dropped.
constexpr uint32_t PES_MAX_PAYLOAD = 1000000;

// ISO/IEC 13818-1, table 2-21: the header up to PES_header_data_length, and the most bytes that this counts.
constexpr size_t PES_FIXED_HEADER_SIZE = 9;
constexpr size_t PES_MAX_HEADER_SIZE = PES_FIXED_HEADER_SIZE + 255;

// stream_id of private_stream_1, which carries AC-3, E-AC-3 and AC-4 (ISO/IEC 13818-1, table 2-22).
constexpr uint8_t STREAM_ID_PRIVATE_STREAM_1 = 0xBD;

// Something that is not read or not checked, without a finding.
struct Loss {
    uint64_t count = 0;
    int64_t offset = NO_OFFSET;  // in the file, where it happened first
};

// The parts of a stream that are lost in this segment.
struct PesLosses {
    Loss bytes;              // payload outside of PES packets, or after what a packet may hold
    Loss cut_headers;        // PES packets whose header ends with the stream or at the next unit start
    Loss short_lengths;      // PES packets whose length ends inside their header: nothing is collected
    Loss unchecked_packets;  // audio that would be checked, but for its length or stream_id
    Loss scrambled_packets;  // transport or PES packets that are scrambled; they are checked as they stand
};

// Counts `count` more at the current place.
void add_loss(Loss& loss, uint64_t count);

// One registered stream: the PES packet being collected and the file that its payload goes to.
struct PesStream {
    uint16_t pid = 0;
    const char* codec = "";                // as in StreamFacts
    TsAudioStream* audio = nullptr;        // its entry in the stream table; null for video
    const ListedStream* listed = nullptr;  // its entry in the program tables
    OutputFile output;

    bool in_header = false;  // the header is not complete
    uint32_t header_length = 0;
    std::array<uint8_t, PES_MAX_HEADER_SIZE> header;
    uint8_t stream_id = 0;
    PesTimestamps times;
    int64_t offset = NO_OFFSET;    // in the file, of the packet that began the PES packet
    int64_t place_time = NO_TIME;  // its PTS, unrolled
    std::vector<uint8_t> data;     // storage of the payload; `length` bytes of it are used
    uint32_t length = 0;
    uint32_t expected = 0;  // payload bytes of the whole PES packet; 0 between packets
    bool dropped = false;   // nothing of the packet is kept: a finding or an impossible length

    TimestampLog log;
    uint32_t bytes_total = 0;  // payload bytes of completed or cut packets in this segment
    PesLosses losses;
    uint64_t payload_bytes = 0;    // extracted
    int64_t first_time = NO_TIME;  // of its PES packets, as place_time
    int64_t last_time = NO_TIME;
};

enum class PesState {
    OPEN,       // more packets are expected, or the packet is dropped (`expected` is 0 then)
    COMPLETE,   // the payload of a whole PES packet is held: check it, then flush it
    CUT_SHORT,  // a finding ended the packet: flush what is held
};

// Ends a PES packet whose header is not complete, if there is one: nothing of it is read.
void drop_open_header(PesStream& stream);

// Begins a PES packet (ISO/IEC 13818-1, 2.4.3.6) at a unit start. What an earlier one left must have been flushed.
void start_pes(PesStream& stream);

// Collects what the payload of one transport packet holds of the PES packet: its header, whose checks are made when it
// is complete, then its payload. `packets_read` numbers the transport packet. ORs TS_CHECK_FAILED into `status` after a
// finding (printed).
[[nodiscard]] PesState collect_pes(PesStream& stream, std::span<const uint8_t> bytes, int64_t packets_read,
                                   int& status);

// The place of the PES packet that is held.
Place pes_place(const PesStream& stream);

// Writes the payload held to the stream's file, notes the packet's times in `table` and empties the slot. Returns 0, or
// TS_OUTPUT_FAILED when the payload could not be written (printed once per file).
[[nodiscard]] int flush_pes(PesStream& stream, TsStreamTable& table);

}  // namespace quorlin
