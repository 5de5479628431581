#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <vector>

#include "bits/output_file.h"
#include "ts/program.h"
#include "ts/stream_table.h"
#include "ts/ts_packet.h"

// Payload bytes that a slot holds at most; also what a PES packet of unknown length may collect. A longer one is cut
// here, and the rest up to the next unit start is dropped.
constexpr uint32_t PES_MAX_PAYLOAD = 1000000;

// stream_id of private_stream_1, which carries AC-3, E-AC-3 and AC-4 (ISO/IEC 13818-1, table 2-22).
constexpr uint8_t STREAM_ID_PRIVATE_STREAM_1 = 0xBD;

// Values of PTS_DTS_flags (ISO/IEC 13818-1, 2.4.3.7); any other: no time stamps.
constexpr uint8_t PTS_ONLY = 2;
constexpr uint8_t PTS_AND_DTS = 3;

// What of a stream is not read or not checked in this segment, without a finding.
struct PesLosses {
    uint64_t bytes = 0;              // payload outside of PES packets, or behind what a packet may hold
    uint32_t short_lengths = 0;      // PES packets whose length ends inside their header: nothing is collected
    uint32_t unchecked_packets = 0;  // audio that would be checked, but for its length or stream_id
};

// One registered stream: the PES packet being collected and the file that its payload goes to.
struct PesStream {
    uint16_t pid = 0;
    TsAudioStream* audio = nullptr;  // its entry in the stream table; null for video
    OutputFile output;

    std::vector<uint8_t> data;  // storage of the payload; `length` bytes of it are used
    uint32_t length = 0;
    uint32_t expected = 0;  // payload bytes of the whole PES packet; 0 between packets
    bool refused = false;   // the packet is dropped for a reason of its own
    uint16_t PES_packet_length = 0;
    uint8_t stream_id = 0;
    uint8_t PES_header_data_length = 0;
    uint8_t PTS_DTS_flags = 0;
    int64_t pts = -1;
    int64_t dts = 0;

    int64_t last_timestamp = 0;          // 0 = unset
    int64_t initial_offset = 0;          // 0 = unset
    uint32_t bytes_total = 0;            // payload bytes of completed or cut packets in this segment
    std::FILE* timestamp_log = nullptr;  // a line for each time stamp; borrowed. No option attaches one yet
    PesLosses losses;
};

enum class PesState {
    OPEN,       // more packets are expected, or the packet is dropped (`expected` is 0 then)
    COMPLETE,   // the payload of a whole PES packet is held: check it, then flush it
    CUT_SHORT,  // a finding ended the packet: flush what is held
};

// Begins a PES packet with the bytes at its start code (ISO/IEC 13818-1, 2.4.3.6) and collects what `bytes` hold of its
// payload. Whatever an earlier PES packet left must have been flushed. ORs 11 into `status` after a finding (printed).
[[nodiscard]] PesState start_pes(PesStream& stream, std::span<const uint8_t> bytes,
                                 const std::vector<ProgramRecord>& programs, int64_t packets_read, int& status);

// Collects the payload of a packet that goes on with a PES packet.
[[nodiscard]] PesState continue_pes(PesStream& stream, std::span<const uint8_t> bytes);

// Writes the payload held to the stream's file, notes the packet's times in `table` and empties the slot. Returns 0, or
// 3 when the payload could not be written (printed once per file).
[[nodiscard]] int flush_pes(PesStream& stream, TsStreamTable& table);
