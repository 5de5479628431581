#include "ts/pmt.h"

#include <algorithm>
#include <utility>

#include "bits/byte_order.h"
#include "bits/finding.h"

namespace quorlin {

namespace {

constexpr size_t PMT_HEADER_SIZE = 12;
constexpr size_t ES_HEADER_SIZE = 5;

// The stream types that are met in HLS content; any other is recorded with a warning. MPEG audio (0x04) is deliberately
// none of them, although it is written to a file.
bool is_known_stream_type(uint8_t stream_type) {
    constexpr uint8_t KNOWN[] = {
        STREAM_TYPE_MPEG1_VIDEO, STREAM_TYPE_MPEG2_VIDEO, STREAM_TYPE_PES_PRIVATE_DATA,
        STREAM_TYPE_ADTS_AAC,    STREAM_TYPE_LATM_AAC,    STREAM_TYPE_AVC,
        STREAM_TYPE_HEVC,        STREAM_TYPE_RESERVED_40, STREAM_TYPE_ATSC_AC3,
        STREAM_TYPE_ATSC_EAC3,
    };
    return std::find(std::begin(KNOWN), std::end(KNOWN), stream_type) != std::end(KNOWN);
}

// Parses a loop of descriptors. Returns 0, or TS_CHECK_FAILED at the first finding.
int parse_descriptor_loop(std::span<const uint8_t> loop, std::vector<StreamDescriptor>& descriptors) {
    while (!loop.empty()) {
        uint32_t consumed = 0;
        const int status = parse_descriptor(loop, descriptors.emplace_back(), consumed);
        if (status != 0) return status;
        loop = loop.subspan(consumed);
    }
    return 0;
}

// ISO/IEC 13818-1, table 2-33, from stream_type to the end of the ES_info loop; `consumed` is its size in bytes.
int parse_es_record(std::span<const uint8_t> bytes, EsRecord& stream, size_t& consumed) {
    stream.stream_type = load_u8(bytes, 0);
    stream.elementary_PID = load_be16(bytes, 1) & 0x1FFF;
    stream.ES_info_length = load_be16(bytes, 3) & 0x0FFF;
    consumed = std::min(ES_HEADER_SIZE + stream.ES_info_length, bytes.size());
    if (!is_known_stream_type(stream.stream_type))
        note("ts-pmt-unknown-stream-type", "WARNING: Unknown stream type = 0x%x in PMT.\n", stream.stream_type);
    const auto loop = bytes.first(consumed).subspan(std::min(ES_HEADER_SIZE, consumed));
    return parse_descriptor_loop(loop, stream.descriptors);
}

int parse_streams(std::span<const uint8_t> bytes, std::vector<EsRecord>& streams) {
    while (!bytes.empty()) {
        size_t consumed = 0;
        const int status = parse_es_record(bytes, streams.emplace_back(), consumed);
        if (status != 0) return status;
        bytes = bytes.subspan(consumed);
    }
    return 0;
}

}  // namespace

int parse_pmt(PsiTables& tables, uint16_t pid, std::span<const uint8_t> section) {
    ProgramRecord program;
    program.section.assign(section.begin(), section.end());
    program.program_map_PID = pid;
    // The association table names the program, whatever number the section itself carries.
    const PatEntry* entry = find_pat_entry(tables, pid);
    program.program_number = entry != nullptr ? entry->program_number : load_be16(section, 3);
    program.version_number = load_u8(section, 5) >> 1 & 0x1F;
    program.current_next_indicator = (load_u8(section, 5) & 1) != 0;
    program.section_number = load_u8(section, 6);
    program.last_section_number = load_u8(section, 7);
    program.PCR_PID = load_be16(section, 8) & 0x1FFF;
    program.program_info_length = load_be16(section, 10) & 0x0FFF;

    const auto body = section_body(program.section);
    const auto loops = body.subspan(std::min(PMT_HEADER_SIZE, body.size()));
    const size_t program_info = std::min<size_t>(program.program_info_length, loops.size());
    int status = parse_descriptor_loop(loops.first(program_info), program.descriptors);
    if (status == 0) status = parse_streams(loops.subspan(program_info), program.streams);
    // A finding leaves the program unrecorded, so that the next occurrence of its PMT is parsed, and reported, again.
    if (status == 0) add_program(tables, pid, std::move(program));
    return status;
}

}  // namespace quorlin
