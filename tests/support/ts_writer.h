#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

// Writes transport streams field by field: the mirror of src/ts. Lengths, stuffing, CRC and continuity counters are
// filled in; an optional field that is set is written as it is, right or wrong.
using Bytes = std::vector<uint8_t>;

// ISO/IEC 13818-1, 2.4.3.2 and 2.4.3.4. A payload below 184 bytes is filled up by the adaptation field.
struct TsPacketSpec {
    uint16_t pid = 0x1FFF;
    bool payload_unit_start_indicator = false;
    Bytes payload = {};
    uint8_t sync_byte = 0x47;
    bool transport_error_indicator = false;
    bool transport_priority = false;
    std::optional<uint8_t> adaptation_field_control = {};
    uint8_t continuity_counter = 0;
    std::optional<uint8_t> adaptation_field_length = {};
    std::optional<uint64_t> pcr_base = {};
    uint16_t pcr_extension = 0;
};
Bytes ts_packet(const TsPacketSpec& spec);

// ISO/IEC 13818-1, table 2-30.
struct PatSpec {
    struct Program {
        uint16_t program_number = 1;
        uint16_t program_map_PID = 0x100;
    };
    std::vector<Program> programs = {{}};
    uint16_t transport_stream_id = 1;
    uint8_t version_number = 0;
    bool current_next_indicator = true;
    uint8_t section_number = 0;
    uint8_t last_section_number = 0;
    std::optional<uint16_t> section_length = {};
    std::optional<uint32_t> CRC_32 = {};
};
Bytes pat_section(const PatSpec& spec);

// ISO/IEC 13818-1, table 2-33. Descriptors stand one behind the other, as ts_descriptor writes them.
struct PmtSpec {
    struct Stream {
        uint8_t stream_type = 0;
        uint16_t elementary_PID = 0;
        Bytes descriptors = {};
        std::optional<uint16_t> ES_info_length = {};
    };
    std::vector<Stream> streams = {};
    Bytes program_info = {};
    uint16_t program_number = 1;
    uint8_t version_number = 0;
    bool current_next_indicator = true;
    uint8_t section_number = 0;
    uint8_t last_section_number = 0;
    uint16_t PCR_PID = 0x1FFF;
    std::optional<uint16_t> program_info_length = {};
    std::optional<uint16_t> section_length = {};
    std::optional<uint32_t> CRC_32 = {};
};
Bytes pmt_section(const PmtSpec& spec);
Bytes ts_descriptor(uint8_t tag, const Bytes& body, std::optional<uint8_t> length = {});

// ISO/IEC 13818-1, table 2-21, times in 90 kHz ticks. A length above 65535 is written as 0 (unbounded).
struct PesSpec {
    uint8_t stream_id = 0xBD;
    std::optional<uint64_t> pts = {};
    std::optional<uint64_t> dts = {};
    Bytes payload = {};
    std::optional<uint8_t> PTS_DTS_flags = {};
    std::optional<uint8_t> PES_header_data_length = {};
    std::optional<uint16_t> PES_packet_length = {};
};
Bytes pes_packet(const PesSpec& spec);

// Collects the packets of a segment.
struct TsWriter {
    Bytes bytes;
    std::map<uint16_t, uint8_t> continuity;

    void packet(TsPacketSpec spec);  // sets its continuity_counter
    // One section, pointer_field 0, the last packet filled with 0xFF; behind the first packet come plain bytes.
    void section(uint16_t pid, const Bytes& section_bytes);
    void pat(const PatSpec& spec) { section(0, pat_section(spec)); }
    void pmt(const PmtSpec& spec, uint16_t pid = 0x100) { section(pid, pmt_section(spec)); }
    void pes(uint16_t pid, const PesSpec& spec);
};
