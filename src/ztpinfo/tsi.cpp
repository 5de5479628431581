#include "ztpinfo/tsi.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "bits/stream_clock.h"
#include "ztpinfo/messages.h"
#include "ztpinfo/tsc.h"
#include "ztpinfo/tsi_compare.h"

namespace quorlin {

namespace {

constexpr const char* SOURCE = "tsi";

TimesliceRecord& current_record(TimesliceAccumulator& accumulator) {
    return accumulator.records[accumulator.current];
}

void clear_record(TimesliceRecord& record) {
    for (ZtpProgramRecord& program : used_programs(record)) {
        program.independent.present = false;
        if (program.num_dep_substreams == 0) continue;
        program.num_dep_substreams = 0;
        for (ZtpSubstreamRecord& dependent : program.dependent) dependent.present = false;
    }
    record.num_programs = 0;
    record.program_slots = 0;
}

// The counter of a frame is the one before it was counted itself.
uint16_t count_convsync(uint16_t& counter, uint16_t convsync) {
    const uint16_t before = counter;
    if (convsync == 0)
        ++counter;  // 16 bits wide: 65535 goes on at 0
    else
        counter = convsync;  // 1, or 65535 when the frame does not carry the flag
    return before;
}

void add_substream(ZtpProgramRecord& program, const ZtpSubstreamRecord& substream) {
    const ZtpFrameInfo& frame = substream.frame;
    program.full_band_channels = static_cast<uint16_t>(program.full_band_channels + frame.full_band_channels);
    program.lfe_channels = static_cast<uint16_t>(program.lfe_channels + frame.lfeon);
    program.locations |= frame.locations;
    program.words_between_syncs += frame.frame_words;
    program.data_rate_kbps += frame.data_rate_kbps;
    if (program.crc_status == CrcStatus::NO_ERROR) program.crc_status = frame.crc_status;
}

void summarise_program(ZtpProgramRecord& program) {
    program.full_band_channels = 0;
    program.lfe_channels = 0;
    program.locations = 0;
    program.words_between_syncs = 0;
    program.data_rate_kbps = 0;
    program.crc_status = CrcStatus::NO_ERROR;
    program.blocks_per_frame = program.independent.frame.blocks_per_frame;
    add_substream(program, program.independent);
    if (program.num_dep_substreams == 0) return;
    for (const ZtpSubstreamRecord& dependent : program.dependent)
        if (dependent.present) add_substream(program, dependent);
}

void summarise_programs(TimesliceRecord& record) {
    for (ZtpProgramRecord& program : used_programs(record))
        if (program.independent.present) summarise_program(program);
}

// A failure stays a failure, and a warning becomes one.
void merge_flags(ComplianceFlags& accumulated, const ComplianceFlags& timeslice) {
    accumulated.failures |= timeslice.failures;
    accumulated.warnings = (accumulated.warnings | timeslice.warnings) & ~accumulated.failures;
}

uint32_t free_record(const TimesliceAccumulator& accumulator) {
    uint32_t index = 0;
    while (index == accumulator.completed || index == accumulator.reported) ++index;
    return index;
}

// The checked current record becomes the last completed one.
void keep_current(TimesliceAccumulator& accumulator) {
    const TimesliceRecord& record = current_record(accumulator);
    merge_flags(accumulator.compliance, record.compliance);
    for (const ZtpProgramRecord& program : used_programs(record)) {
        if (program.independent.present && accumulator.totals.crc_status == CrcStatus::NO_ERROR)
            accumulator.totals.crc_status = program.crc_status;
    }
    accumulator.completed = accumulator.current;
    accumulator.current = free_record(accumulator);
}

// Adds the record that is done to the totals and starts an empty one.
void count_timeslice(TimesliceAccumulator& accumulator) {
    const ZtpFrameInfo& first = last_completed(accumulator).programs[0].independent.frame;
    ZtpStreamTotals& totals = accumulator.totals;
    ++totals.timeslices;
    totals.frames += accumulator.current_frames;
    totals.bits += accumulator.current_bits;
    totals.playing_time +=
        uint64_t{first.blocks_per_frame} * SAMPLES_PER_BLOCK * (PLAYING_TIME_UNITS / first.sample_rate);
    accumulator.current_frames = 0;
    accumulator.current_bits = 0;
    clear_record(current_record(accumulator));
}

// The slot of an independent frame in `record`, or null after a fatal block.
ZtpSubstreamRecord* independent_slot(TimesliceRecord& record, uint32_t number) {
    if (record.programs[number].independent.present) {
        report_fatal("ztp-fatal-independent-twice",
                     "Invalid bitstream detected.  Multiple independent frames exist for the same program.", SOURCE,
                     __LINE__);
        return nullptr;
    }
    if (number > 0 && !record.programs[0].independent.present) {
        report_fatal("ztp-fatal-first-not-i0", "Invalid bitstream detected.  First independent frame is not I0.",
                     SOURCE, __LINE__);
        return nullptr;
    }
    if (number > 0 && !record.programs[number - 1].independent.present)
        report_warning("ztp-warning-independent-order",
                       "Invalid bitstream detected.  Indpendent frames are out of order.");
    return &record.programs[number].independent;
}

// The slot of a dependent frame in `program`, or null after a fatal block.
ZtpSubstreamRecord* dependent_slot(const TimesliceRecord& record, ZtpProgramRecord& program, uint32_t number) {
    if (program.dependent[number].present) {
        report_fatal("ztp-fatal-dependent-twice",
                     "Invalid bitstream detected.  Multiple dependent frames exist with same substream ID.", SOURCE,
                     __LINE__);
        return nullptr;
    }
    if (!record.programs[0].independent.present)
        report_warning("ztp-warning-dependent-without-i0",
                       "Invalid bitstream detected.  No I0 frame detected for dependent frame.");
    if (number > 0 && !program.dependent[number - 1].present)
        report_warning("ztp-warning-dependent-order",
                       "Invalid bitstream detected.  Dependent frames are out of order.");
    return &program.dependent[number];
}

// A length that the compiler does not know makes this a library call, which is several times as fast as the string
// instruction that it would put in place of an assignment.
void copy_frame(ZtpFrameInfo& to, const ZtpFrameInfo& from) {
    static_assert(std::is_trivially_copyable_v<ZtpFrameInfo>);
    constexpr size_t SIZES[2] = {offsetof(ZtpFrameInfo, ac3), sizeof(ZtpFrameInfo)};
    std::memcpy(&to, &from, SIZES[is_ac3_bsid(from.bsid)]);
}

void store_frame(TimesliceAccumulator& accumulator, ZtpSubstreamRecord& slot, const ZtpFrameInfo& frame) {
    slot.present = true;
    copy_frame(slot.frame, frame);
    if (accumulator.rule_log.kept) slot.place = current_place;
    accumulator.current_bits += frame.bytes_per_frame * uint64_t{8};
    ++accumulator.current_frames;
}

void store_tail(TimesliceAccumulator& accumulator, std::span<const uint16_t> words, const ZtpFrameInfo& frame) {
    if (accumulator.tails == nullptr) return;
    ProgramTails& tails = (*accumulator.tails)[accumulator.current][accumulator.current_program];
    FrameTail& tail = frame.strmtyp == STRMTYP_DEPENDENT ? tails.dependent[frame.substreamid] : tails.independent;
    unpack_frame_tail(words, frame.bsid, tail);
}

int add_independent_frame(TimesliceAccumulator& accumulator, const ZtpFrameInfo& frame) {
    TimesliceRecord& record = current_record(accumulator);
    ZtpSubstreamRecord* slot = independent_slot(record, frame.substreamid);
    if (slot == nullptr) return TIMESLICE_INVALID;
    ++record.num_programs;
    record.program_slots = std::max(record.program_slots, static_cast<uint16_t>(frame.substreamid + 1));
    accumulator.current_program = frame.substreamid;
    slot->convsync_counter = count_convsync(accumulator.convsync_counters[frame.substreamid], frame.convsync);
    store_frame(accumulator, *slot, frame);
    return 0;
}

int add_dependent_frame(TimesliceAccumulator& accumulator, const ZtpFrameInfo& frame) {
    TimesliceRecord& record = current_record(accumulator);
    if (record.num_programs == 0) {
        report_fatal("ztp-fatal-dependent-alone",
                     "Invalid bitstream detected.  Dependent stream type has no associated independent frames.", SOURCE,
                     __LINE__);
        return TIMESLICE_INVALID;
    }
    ZtpProgramRecord& program = record.programs[accumulator.current_program];
    ZtpSubstreamRecord* slot = dependent_slot(record, program, frame.substreamid);
    if (slot == nullptr) return TIMESLICE_INVALID;
    ++program.num_dep_substreams;
    slot->convsync_counter = CONVSYNC_ABSENT;  // dependent frames never carry the flag
    store_frame(accumulator, *slot, frame);
    return 0;
}

int check_timeslice_substreams(TimesliceAccumulator& accumulator, ZtpRuleSet rule_set) {
    TimesliceRecord& record = current_record(accumulator);
    summarise_programs(record);
    accumulator.rule_log.timeslice = accumulator.totals.timeslices + 1;
    return check_substreams(record, rule_set, accumulator.rule_log);
}

}  // namespace

double playing_time_seconds(const ZtpStreamTotals& totals) {
    return static_cast<double>(totals.playing_time) / static_cast<double>(PLAYING_TIME_UNITS);
}

int64_t playing_time_90khz(const ZtpStreamTotals& totals) {
    constexpr uint64_t COMMON_FACTOR = 18000;  // of both clocks
    return static_cast<int64_t>(totals.playing_time * (TICKS_PER_SECOND / COMMON_FACTOR) /
                                (PLAYING_TIME_UNITS / COMMON_FACTOR));
}

double overall_data_rate_kbps(const ZtpStreamTotals& totals) {
    if (totals.playing_time == 0) return 0;
    return static_cast<double>(totals.bits) / playing_time_seconds(totals) / 1000;
}

bool starts_timeslice(const TimesliceAccumulator& accumulator, const ZtpFrameInfo& frame) {
    const bool i0 = frame.strmtyp == STRMTYP_INDEPENDENT || frame.strmtyp == STRMTYP_TRANSCODED;
    return i0 && frame.substreamid == 0 && accumulator.records[accumulator.current].num_programs > 0;
}

int close_timeslice(TimesliceAccumulator& accumulator, ZtpRuleSet rule_set, bool& changed) {
    TimesliceRecord& record = current_record(accumulator);
    const bool first = accumulator.totals.timeslices == 0;
    changed = first || !same_timeslice(record, last_completed(accumulator));
    if (changed) {
        const int status = check_timeslice_substreams(accumulator, rule_set);
        if (status != 0) return status;
        // The first timeslice is compared with itself: only rules that look at one timeslice can fail.
        check_programs(record, first ? record : last_completed(accumulator), rule_set, accumulator.rule_log);
        keep_current(accumulator);
    }
    count_timeslice(accumulator);
    return 0;
}

int add_frame(TimesliceAccumulator& accumulator, const ZtpFrameInfo& frame, std::span<const uint16_t> words) {
    if (frame.strmtyp > STRMTYP_TRANSCODED) {
        report_fatal("ztp-fatal-stream-type", "Invalid bitstream detected.  Streamtype is not supported.", SOURCE,
                     __LINE__);
        return TIMESLICE_INVALID;
    }
    const int status = frame.strmtyp == STRMTYP_DEPENDENT ? add_dependent_frame(accumulator, frame)
                                                          : add_independent_frame(accumulator, frame);
    if (status != 0) return status;
    store_tail(accumulator, words, frame);
    return 0;
}

int finish_timeslice(TimesliceAccumulator& accumulator, ZtpRuleSet rule_set) {
    TimesliceRecord& record = current_record(accumulator);
    if (record.num_programs == 0) return 0;
    const int status = check_timeslice_substreams(accumulator, rule_set);
    if (status != 0) return status;
    if (accumulator.totals.timeslices > 0) {
        check_programs(record, last_completed(accumulator), rule_set, accumulator.rule_log);
        check_end_of_data(record, rule_set, accumulator.rule_log);
    }
    keep_current(accumulator);
    count_timeslice(accumulator);
    return 0;
}

}  // namespace quorlin
