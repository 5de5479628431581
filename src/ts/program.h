#pragma once

#include <cstdint>
#include <vector>

#include "ts/descriptors.h"

namespace quorlin {

// ISO/IEC 13818-1, table 2-34: values of stream_type that the reader treats by themselves.
enum StreamType : uint8_t {
    STREAM_TYPE_MPEG1_VIDEO = 0x01,
    STREAM_TYPE_MPEG2_VIDEO = 0x02,
    STREAM_TYPE_MPEG2_AUDIO = 0x04,
    STREAM_TYPE_PRIVATE_SECTIONS = 0x05,
    STREAM_TYPE_PES_PRIVATE_DATA = 0x06,
    STREAM_TYPE_ADTS_AAC = 0x0F,
    STREAM_TYPE_LATM_AAC = 0x11,
    STREAM_TYPE_PES_METADATA = 0x15,
    STREAM_TYPE_AVC = 0x1B,
    STREAM_TYPE_HEVC = 0x24,
    STREAM_TYPE_RESERVED_40 = 0x40,  // reserved in the standard, yet met
    STREAM_TYPE_ATSC_AC3 = 0x81,
    STREAM_TYPE_SPLICE_INFO = 0x86,  // SCTE 35
    STREAM_TYPE_ATSC_EAC3 = 0x87,
};

// Duration of an E-AC-3 frameset (1536 samples) at 48 kHz, in 90 kHz ticks.
constexpr uint32_t EAC3_FRAMESET_TICKS = 2880;

// One elementary stream of a PMT (ISO/IEC 13818-1, table 2-33).
struct EsRecord {
    uint8_t stream_type = 0;
    uint16_t elementary_PID = 0;
    uint16_t ES_info_length = 0;
    std::vector<StreamDescriptor> descriptors;
};

// What the records of one PID ask of the stream_id of its PES packets.
struct PrivateStreamRule {
    enum class Wanted : uint8_t { ANY, EAC3, AC4 };
    Wanted wanted = Wanted::ANY;     // the codec that requires private_stream_1, of the first record that does
    bool private_forbidden = false;  // a record has a codec that is never carried in private_stream_1
};

// One program: its PMT section, parsed. Its descriptors borrow from `section`, so it is moved and never copied.
struct ProgramRecord {
    ProgramRecord() = default;
    ProgramRecord(ProgramRecord&&) = default;
    ProgramRecord& operator=(ProgramRecord&&) = default;

    uint16_t program_map_PID = 0;
    uint16_t program_number = 0;
    uint8_t version_number = 0;
    bool current_next_indicator = false;
    uint8_t section_number = 0;
    uint8_t last_section_number = 0;
    uint16_t PCR_PID = 0;
    uint16_t program_info_length = 0;
    std::vector<uint8_t> section;
    std::vector<StreamDescriptor> descriptors;
    std::vector<EsRecord> streams;
    bool compared = false;  // with the playlist
};

}  // namespace quorlin
