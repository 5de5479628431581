#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace quorlin {

// Writes transport streams field by field: the mirror of src/ts. Lengths and stuffing are filled in; an optional field
// that is set is written as it is, right or wrong. What no reader looks at is zero: continuity counters, versions,
// CRC_32.
using Bytes = std::vector<uint8_t>;

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// ISO/IEC 13818-1, 2.4.3.2. The adaptation field takes what the payload leaves of 184 bytes.
struct TsPacketSpec {
    uint16_t pid = 0;
    bool payload_unit_start_indicator = false;
    Bytes payload = {};
    std::optional<uint8_t> adaptation_field_length = {};
};

// ISO/IEC 13818-1, table 2-30: program_number and program_map_PID.
using PatPrograms = std::vector<std::pair<uint16_t, uint16_t>>;

// ISO/IEC 13818-1, table 2-33. Descriptors stand one after the other, as ts_descriptor writes them.
struct PmtSpec {
    struct Stream {
        uint8_t stream_type = 0;
        uint16_t elementary_PID = 0;
        Bytes descriptors = {};
    };
    std::vector<Stream> streams = {};
    Bytes program_info = {};
    uint16_t program_number = 1;
    uint16_t PCR_PID = 0x1FFF;
};
Bytes ts_descriptor(uint8_t tag, const Bytes& body, std::optional<uint8_t> length = {});

// ISO/IEC 13818-1, table 2-21, times in 90 kHz ticks. A length above 65535 is written as 0 (unbounded).
struct PesSpec {
    uint8_t stream_id = 0xBD;
    std::optional<uint64_t> pts = {};
    std::optional<uint64_t> dts = {};
    Bytes payload = {};
    std::optional<uint8_t> PES_header_data_length = {};
    std::optional<uint16_t> PES_packet_length = {};
};
Bytes pes_packet(const PesSpec& spec);

// Collects the packets of a segment.
struct TsWriter {
    Bytes bytes;

    void packet(const TsPacketSpec& spec);
    // Sections stand after as many stuffing bytes as pointer_field says.
    void pat(const PatPrograms& programs = {{1, 0x100}}, uint8_t pointer_field = 0);
    void pmt(const PmtSpec& spec, uint16_t pid = 0x100, uint8_t pointer_field = 0);
    void pes(uint16_t pid, const PesSpec& spec) { payload(pid, pes_packet(spec)); }

    // A unit that starts in a packet of its own and takes as many as it needs.
    void payload(uint16_t pid, const Bytes& unit);
};

}  // namespace quorlin
