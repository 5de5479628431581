#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "bits/place.h"
#include "ztpinfo/compliance_flags.h"
#include "ztpinfo/fmi_api.h"
#include "ztpinfo/ztpinfo.h"

namespace quorlin {

// Timeslices: the frames that all substreams of a stream carry for the same span of audio. A program is one independent
// substream with its dependent ones.

struct ZtpSubstreamRecord {
    bool present = false;  // when false, nothing else in the record has a meaning
    // Frames since the last converter sync flag, before this frame itself was counted.
    uint16_t convsync_counter = CONVSYNC_ABSENT;
    ZtpFrameInfo frame;
    Place place;  // of the frame; set only while the rules' log is kept
};

struct ZtpProgramRecord {
    uint16_t num_dep_substreams = 0;
    uint16_t full_band_channels = 0;  // over all substreams, like the next two
    uint16_t lfe_channels = 0;
    uint16_t locations = 0;  // chanmap form
    uint16_t blocks_per_frame = 0;
    uint32_t words_between_syncs = 0;  // the program's frame lengths together
    float data_rate_kbps = 0;
    CrcStatus crc_status = CrcStatus::NO_ERROR;  // the first error of its substreams
    ZtpSubstreamRecord independent;
    std::array<ZtpSubstreamRecord, ZTP_MAX_DEPENDENT_SUBSTREAMS> dependent;  // by substreamid
};

struct TimesliceRecord {
    uint16_t num_programs = 0;
    uint16_t program_slots = 0;  // of `programs`, from the first one on, that may be in use
    ComplianceFlags compliance;
    std::array<ZtpProgramRecord, ZTP_MAX_PROGRAMS> programs;  // by program number; there when independent.present
};

// The programs of the timeslice and gaps between them, but not the many slots after the last one.
inline std::span<const ZtpProgramRecord> used_programs(const TimesliceRecord& timeslice) {
    return std::span(timeslice.programs).first(timeslice.program_slots);
}
inline std::span<ZtpProgramRecord> used_programs(TimesliceRecord& timeslice) {
    return std::span(timeslice.programs).first(timeslice.program_slots);
}

}  // namespace quorlin
