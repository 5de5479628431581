#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <memory>
#include <span>

#include "ztpinfo/fmi_api.h"
#include "ztpinfo/ztpinfo.h"

// Timeslices: the frames that all substreams of a stream carry for the same span of audio. A program is one independent
// substream with its dependent ones.

constexpr uint32_t COMPLIANCE_NUMBERS = 192;

// Findings by message number. No number is in both sets.
struct ComplianceFlags {
    std::bitset<COMPLIANCE_NUMBERS> failures;
    std::bitset<COMPLIANCE_NUMBERS> warnings;
};

struct ZtpSubstreamRecord {
    bool present = false;  // when false, nothing else in the record has a meaning
    // Frames since the last converter sync flag, before this frame itself was counted.
    uint16_t convsync_counter = CONVSYNC_ABSENT;
    ZtpFrameInfo frame;
};

struct ZtpProgramRecord {
    uint16_t num_dep_substreams = 0;
    uint16_t full_band_channels = 0;  // over all substreams, like the next two
    uint16_t lfe_channels = 0;
    uint16_t locations = 0;  // chanmap form
    uint16_t blocks_per_frame = 0;
    uint32_t words_between_syncs = 0;  // the program's frame lengths together
    float data_rate_kbps = 0;
    uint16_t crc_status = CRC_NO_ERROR;  // the first error of its substreams
    ZtpSubstreamRecord independent;
    std::array<ZtpSubstreamRecord, ZTP_MAX_DEPENDENT_SUBSTREAMS> dependent;  // by substreamid
};

struct TimesliceRecord {
    uint16_t num_programs = 0;
    ComplianceFlags compliance;
    std::array<ZtpProgramRecord, ZTP_MAX_PROGRAMS> programs;  // by program number; there when independent.present
};

// Frame ends of one program; filled only when the options ask for auxiliary data or encoder information.
struct ProgramTails {
    FrameTail independent;
    std::array<FrameTail, ZTP_MAX_DEPENDENT_SUBSTREAMS> dependent;
};
using TimesliceTails = std::array<ProgramTails, ZTP_MAX_PROGRAMS>;

// All completed timeslices of a handle.
struct ZtpStreamTotals {
    uint64_t timeslices = 0;
    uint64_t frames = 0;
    uint64_t bits = 0;
    uint64_t playing_time = 0;           // of I0, in PLAYING_TIME_UNITS
    uint16_t crc_status = CRC_NO_ERROR;  // the first error of any program
};

// Units per second of ZtpStreamTotals::playing_time: the least common multiple of 48000, 44100 and 32000, so that the
// sum is exact.
constexpr uint64_t PLAYING_TIME_UNITS = 14112000;

double playing_time_seconds(const ZtpStreamTotals& totals);
double overall_data_rate_kbps(const ZtpStreamTotals& totals);

constexpr uint32_t NO_RECORD = 3;

// Timeslices of a handle: the one being assembled, the last completed one and the last reported one, which may be the
// completed one. Everything lasts for the life of the handle; an unfinished timeslice waits for the next buffer.
struct TimesliceAccumulator {
    ZtpStreamTotals totals;
    ComplianceFlags compliance;  // of all timeslices; never cleared
    std::array<TimesliceRecord, 3> records;
    uint32_t current = 0;
    uint32_t completed = NO_RECORD;
    uint32_t reported = NO_RECORD;
    uint32_t current_program = 0;  // which dependent frames belong to
    uint64_t current_bits = 0;
    uint32_t current_frames = 0;
    std::array<uint16_t, ZTP_MAX_PROGRAMS> convsync_counters;  // of I0 to I7; CONVSYNC_ABSENT at first
    // Frame ends beside the records; null unless they are wanted.
    std::unique_ptr<std::array<TimesliceTails, 3>> tails;
};

// What a frame brought to an end.
enum class TimesliceEvent { NONE, COMPLETED_UNCHANGED, COMPLETED_CHANGED };

// Code of the fatal errors in the order of a stream's frames.
constexpr int TIMESLICE_INVALID = 6913;

// Places a frame, whose words are `words`, in the timeslice being assembled. A frame that starts a new one closes the
// one before: it is checked against `rule_set` and becomes the last completed one. Returns 0, or the code of the fatal
// error that was reported; the frame is not taken then.
[[nodiscard]] int add_frame(TimesliceAccumulator& accumulator, const ZtpFrameInfo& frame,
                            std::span<const uint16_t> words, uint16_t rule_set, TimesliceEvent& event);

// Closes the timeslice being assembled, if there is one, at the end of a buffer. Returns like add_frame.
[[nodiscard]] int finish_timeslice(TimesliceAccumulator& accumulator, uint16_t rule_set);

// Only when completed is not NO_RECORD.
inline const TimesliceRecord& last_completed(const TimesliceAccumulator& accumulator) {
    return accumulator.records[accumulator.completed];
}
