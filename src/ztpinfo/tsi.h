#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "ztpinfo/rule_log.h"
#include "ztpinfo/timeslice.h"

namespace quorlin {

// The timeslices of a stream: assembled from its frames, checked, counted.

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
    uint64_t playing_time = 0;                   // of I0, in PLAYING_TIME_UNITS
    CrcStatus crc_status = CrcStatus::NO_ERROR;  // the first error of any program
};

// Units per second of ZtpStreamTotals::playing_time: the least common multiple of 48000, 44100 and 32000, so that the
// sum is exact.
constexpr uint64_t PLAYING_TIME_UNITS = 14112000;

double playing_time_seconds(const ZtpStreamTotals& totals);
int64_t playing_time_90khz(const ZtpStreamTotals& totals);
double overall_data_rate_kbps(const ZtpStreamTotals& totals);

constexpr uint32_t RECORD_COUNT = 3;
constexpr uint32_t NO_RECORD = RECORD_COUNT;

// Timeslices of a handle: the one being assembled, the last completed one and the last reported one, which may be the
// completed one. Everything lasts for the life of the handle; an unfinished timeslice waits for the next buffer.
struct TimesliceAccumulator {
    ZtpStreamTotals totals;
    ComplianceFlags compliance;  // of all timeslices; never cleared
    RuleLog rule_log;
    std::array<TimesliceRecord, RECORD_COUNT> records;
    uint32_t current = 0;
    uint32_t completed = NO_RECORD;
    uint32_t reported = NO_RECORD;
    uint32_t current_program = 0;  // which dependent frames belong to
    uint64_t current_bits = 0;
    uint32_t current_frames = 0;
    std::array<uint16_t, ZTP_MAX_PROGRAMS> convsync_counters;  // of I0 to I7; CONVSYNC_ABSENT at first
    // Frame ends beside the records; null unless they are wanted.
    std::unique_ptr<std::array<TimesliceTails, RECORD_COUNT>> tails;
};

// Code of the fatal errors in the order of a stream's frames.
constexpr int TIMESLICE_INVALID = 6913;

// True when `frame` starts a new timeslice, so that the one being assembled is to be closed first.
bool starts_timeslice(const TimesliceAccumulator& accumulator, const ZtpFrameInfo& frame);

// Closes the timeslice being assembled before the first frame of the next one: it is checked against `rule_set` and
// becomes the last completed one. `changed` is set when it differs from the completed one before. Returns 0, or the
// code of the fatal error that was reported.
[[nodiscard]] int close_timeslice(TimesliceAccumulator& accumulator, ZtpRuleSet rule_set, bool& changed);

// Stores a frame, whose words are `words`, in the timeslice being assembled. Returns 0, or the code of the fatal error
// that was reported; the frame is not taken then.
[[nodiscard]] int add_frame(TimesliceAccumulator& accumulator, const ZtpFrameInfo& frame,
                            std::span<const uint16_t> words);

// Closes the timeslice being assembled, if there is one, at the end of a buffer. Returns like close_timeslice.
[[nodiscard]] int finish_timeslice(TimesliceAccumulator& accumulator, ZtpRuleSet rule_set);

// Only when completed is not NO_RECORD.
inline const TimesliceRecord& last_completed(const TimesliceAccumulator& accumulator) {
    return accumulator.records[accumulator.completed];
}

}  // namespace quorlin
