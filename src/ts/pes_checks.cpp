#include "ts/pes_checks.h"

#include <algorithm>

#include "bits/finding.h"
#include "ts/ts_status.h"

namespace quorlin {

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

int check_by_descriptors(const EsRecord& es, const PesCheckInput& pes, const TsStreamTable& table,
                         const PlaylistAttributes* attrs) {
    const StreamDescriptor* descriptor = select_descriptor(es);
    if (descriptor != nullptr && selects_ac4(es.stream_type, descriptor->tag)) {
        const int status = check_ac4_pes(pes, table, attrs);
        if (status == 0) return 0;
        return status | fail(TS_CHECK_FAILED, "ts-ac4-pes", "ERROR: Cannot get the ac4 descriptor.\n");
    }
    const int status = descriptor != nullptr ? check_eac3_pes(read_eac3_descriptor(descriptor->raw), pes) : 0;
    // A failed check counts as a descriptor that was not found, with the ATSC stream type only: deliberate.
    if (es.stream_type != STREAM_TYPE_ATSC_EAC3 || (descriptor != nullptr && status == 0)) return status;
    // What follows from a failed analysis stands where that failed.
    const PlaceScope scope(status == TS_ANALYSIS_FAILED ? ztpinfo_failure_place(pes.stream.analyzer.get())
                                                        : current_place);
    return status | fail(TS_CHECK_FAILED, "ts-eac3-pes", "ERROR: Cannot get the ec3 descriptor.\n");
}

}  // namespace

bool has_audio_check(const ListedStream& listed) {
    return std::any_of(listed.records.begin(), listed.records.end(), [](const EsRecord* es) {
        return es->stream_type == STREAM_TYPE_ATSC_EAC3 || select_descriptor(*es) != nullptr;
    });
}

int check_audio_pes(const PesCheckInput& pes, const ListedStream& listed, const TsStreamTable& table,
                    const PlaylistAttributes* attrs) {
    int status = 0;
    for (const EsRecord* es : listed.records) status |= check_by_descriptors(*es, pes, table, attrs);
    return status;
}

}  // namespace quorlin
