#include "ts/pes_checks.h"

#include <algorithm>
#include <cstdio>

#include "ts/ts_status.h"

namespace {

bool selects_eac3(uint8_t stream_type, uint32_t tag) {
    return (stream_type == STREAM_TYPE_ATSC_EAC3 && tag == DESCRIPTOR_ATSC_EAC3) ||
           (stream_type == STREAM_TYPE_PES_PRIVATE_DATA && tag == DESCRIPTOR_DVB_EAC3);
}

bool selects_ac4(uint8_t stream_type, uint32_t tag) {
    return stream_type == STREAM_TYPE_PES_PRIVATE_DATA && tag == DESCRIPTOR_DVB_EXTENSION;
}

// The first descriptor that says what the payload is, or null.
const StreamDescriptor* select_descriptor(const EsRecord& es) {
    for (const StreamDescriptor& descriptor : es.descriptors)
        if (selects_eac3(es.stream_type, descriptor.tag) || selects_ac4(es.stream_type, descriptor.tag))
            return &descriptor;
    return nullptr;
}

// The stream of a program by its PID, the first of several; or null.
const EsRecord* find_stream(const ProgramRecord& program, uint16_t pid) {
    for (const EsRecord& es : program.streams)
        if (es.elementary_PID == pid) return &es;
    return nullptr;
}

int check_by_descriptors(const EsRecord& es, const PesCheckInput& pes, const TsStreamTable& table,
                         const PlaylistAttributes* attrs) {
    const StreamDescriptor* descriptor = select_descriptor(es);
    if (descriptor != nullptr && selects_ac4(es.stream_type, descriptor->tag)) {
        const int status = check_ac4_pes(pes, table, attrs);
        if (status == 0) return 0;
        std::printf("ERROR: Cannot get the ac4 descriptor.\n");
        return status | TS_CHECK_FAILED;
    }
    const int status = descriptor != nullptr ? check_eac3_pes(descriptor->eac3, pes) : 0;
    // A failed check counts as a descriptor that was not found, with the ATSC stream type only: deliberate.
    if (es.stream_type != STREAM_TYPE_ATSC_EAC3 || (descriptor != nullptr && status == 0)) return status;
    std::printf("ERROR: Cannot get the ec3 descriptor.\n");
    return status | TS_CHECK_FAILED;
}

}  // namespace

bool has_audio_check(uint16_t pid, const std::vector<ProgramRecord>& programs) {
    return std::any_of(programs.begin(), programs.end(), [pid](const ProgramRecord& program) {
        const EsRecord* es = find_stream(program, pid);
        return es != nullptr && (es->stream_type == STREAM_TYPE_ATSC_EAC3 || select_descriptor(*es) != nullptr);
    });
}

int check_audio_pes(const PesCheckInput& pes, const std::vector<ProgramRecord>& programs, const TsStreamTable& table,
                    const PlaylistAttributes* attrs) {
    int status = 0;
    for (const ProgramRecord& program : programs) {
        const EsRecord* es = find_stream(program, pes.stream.pid);
        if (es != nullptr) status |= check_by_descriptors(*es, pes, table, attrs);
    }
    return status;
}
