#include <new>

#include "bits/recorder.h"
#include "ztpinfo/bsid_ztp.h"
#include "ztpinfo/fmi_api.h"
#include "ztpinfo/info_printer.h"
#include "ztpinfo/messages.h"
#include "ztpinfo/tsc_messages.h"
#include "ztpinfo/tsi.h"
#include "ztpinfo/tsi_compare.h"
#include "ztpinfo/zit_fio.h"
#include "ztpinfo/ztpinfo.h"

namespace quorlin {

namespace {

// How the walk over a buffer, or one step of it, came out.
enum class Walk { GO_ON, END, INCOMPLETE, FATAL };

}  // namespace

struct ZtpInfoContext {
    ZtpSettings settings;
    WordInput input;
    std::array<uint16_t, MAX_FRAME_WORDS> words{};  // the current frame, in stream order
    ZtpFrameInfo frame;
    TimesliceAccumulator timeslices;
    // Of the last call.
    Walk walk = Walk::END;
    uint64_t timeslices_before = 0;  // completed before it
    Place buffer_place;
    int64_t time_before_buffer = 0;  // playing time before it, 90 kHz
    Place failure_place;
};

namespace {

constexpr const char* SOURCE = "ztpinfo_api";

// Reads the words of the next frame into context.words; `frame_words` is its length.
Walk read_frame(ZtpInfoContext& context, uint32_t& frame_words) {
    WordInput& input = context.input;
    const std::span<uint16_t> words(context.words);
    if (detect_byte_order(input) != 0) return Walk::FATAL;
    if (input.end_of_input) return Walk::END;
    if (read_words(input, words.first(FRAME_HEADER_WORDS)) != 0) return Walk::FATAL;
    if (unpack_frame_words(words.first(FRAME_HEADER_WORDS), frame_words) != 0) return Walk::FATAL;
    if (frame_words <= FRAME_HEADER_WORDS) return Walk::GO_ON;
    const std::span<uint16_t> rest = words.subspan(FRAME_HEADER_WORDS, frame_words - FRAME_HEADER_WORDS);
    if (bytes_left(input) < rest.size_bytes()) {
        report_fatal("ztp-fatal-incomplete-frame", "Incomplete frame", SOURCE, __LINE__, ReasonEffect::UNVALIDATED);
        return Walk::INCOMPLETE;
    }
    return read_words(input, rest) == 0 ? Walk::GO_ON : Walk::FATAL;
}

// Reports the last completed timeslice as the options ask.
void print_report(ZtpInfoContext& context) {
    const uint16_t options = context.settings.options;
    TimesliceAccumulator& timeslices = context.timeslices;
    const TimesliceRecord& timeslice = last_completed(timeslices);
    const TimesliceTails* tails = timeslices.tails == nullptr ? nullptr : &(*timeslices.tails)[timeslices.completed];
    print_timeslice(timeslice, tails, options);
    if ((options & ZTP_OPTION_COMPLIANCE) != 0)
        print_compliance_list(timeslice.compliance, (options & ZTP_OPTION_WARNINGS) != 0, timeslices.rule_log);
}

// Reports the timeslice that a frame has completed when its layout is new; the first one of a handle is only kept.
void report_completed(ZtpInfoContext& context) {
    TimesliceAccumulator& timeslices = context.timeslices;
    if (timeslices.reported != NO_RECORD) {
        if (same_layout(last_completed(timeslices), timeslices.records[timeslices.reported])) return;
        print_report(context);
    }
    timeslices.reported = timeslices.completed;
}

// The place of the next frame, as far as that of the buffer tells.
void locate_frame(const ZtpInfoContext& context) {
    if (!context.timeslices.rule_log.kept) return;
    const Place& buffer = context.buffer_place;
    if (context.settings.contiguous && buffer.offset != NO_OFFSET)
        current_place.offset = buffer.offset + static_cast<int64_t>(context.input.position);
}

// A timeslice begins where the completed ones end.
void locate_timeslice(const ZtpInfoContext& context) {
    if (!context.timeslices.rule_log.kept || context.buffer_place.time == NO_TIME) return;
    current_place.time =
        context.buffer_place.time + playing_time_90khz(context.timeslices.totals) - context.time_before_buffer;
}

// Stores the unpacked frame in its timeslice; when it starts a new one, `changed` tells whether the one that it closes
// differs from the one before. Returns 0, or the code of a fatal error.
int store_in_timeslice(ZtpInfoContext& context, std::span<const uint16_t> words, bool& changed) {
    TimesliceAccumulator& timeslices = context.timeslices;
    if (starts_timeslice(timeslices, context.frame)) {
        const int status = close_timeslice(timeslices, context.settings.rule_set, changed);
        if (status != 0) return status;
        locate_timeslice(context);
    }
    return add_frame(timeslices, context.frame, words);
}

Walk process_frame(ZtpInfoContext& context) {
    locate_frame(context);
    uint32_t frame_words = 0;
    const Walk read = read_frame(context, frame_words);
    if (read != Walk::GO_ON) return read;
    const std::span<const uint16_t> words = std::span<const uint16_t>(context.words).first(frame_words);
    if (unpack_frame(words, context.frame) != 0) return Walk::FATAL;
    bool changed = false;
    if (store_in_timeslice(context, words, changed) != 0) {
        report_fatal("ztp-fatal-processing", "Processing error in ZIT subroutine", SOURCE, __LINE__);
        return Walk::FATAL;
    }
    // A timeslice equal to the one before has been reported, or found to need no report, with that one.
    if (changed) report_completed(context);
    const bool stop = context.settings.stop_on_failure && context.timeslices.compliance.failures.any();
    return stop ? Walk::END : Walk::GO_ON;
}

void fill_substream(ZtpSubstreamSummary& summary, const ZtpFrameInfo& frame) {
    const bool eac3 = is_eac3_bsid(frame.bsid);
    summary.bsid = frame.bsid;
    summary.bsmod = frame.bsmod;
    summary.fscod = frame.fscod;
    summary.acmod = frame.acmod;
    summary.lfeon = frame.lfeon;
    summary.chanmap = frame.chanmap;
    summary.strmtyp = frame.strmtyp;
    summary.substreamid = frame.substreamid;
    summary.addbsie = eac3 ? frame.eac3.addbsie : frame.ac3.addbsie;
    if (summary.addbsie == 0) return;
    summary.addbsi_bytes = (eac3 ? frame.eac3.addbsil : frame.ac3.addbsil) + 1u;
    summary.addbsi = eac3 ? frame.eac3.addbsi : frame.ac3.addbsi;
}

void fill_program(ZtpProgramSummary& summary, const ZtpProgramRecord& program) {
    summary.num_dep_substreams = program.num_dep_substreams;
    fill_substream(summary.independent, program.independent.frame);
    for (uint32_t i = 0; i < ZTP_MAX_DEPENDENT_SUBSTREAMS; ++i)
        if (program.dependent[i].present) fill_substream(summary.dependent[i], program.dependent[i].frame);
}

// Fills the cleared `summary` from the last completed timeslice.
void fill_summary(ZtpStreamSummary& summary, const ZtpInfoContext& context) {
    const ZtpStreamTotals& totals = context.timeslices.totals;
    if (context.timeslices.completed == NO_RECORD) return;
    const uint64_t completed = totals.timeslices - context.timeslices_before;
    const TimesliceRecord& timeslice = last_completed(context.timeslices);
    const uint64_t blocks = timeslice.programs[0].blocks_per_frame * completed;
    summary.byte_order_swapped = context.input.byte_order == BYTE_ORDER_LOW_FIRST ? 1 : 0;
    summary.data_rate_kbps = static_cast<uint32_t>(totals.bits * (PLAYING_TIME_UNITS / 1000) / totals.playing_time);
    summary.frameset_count = static_cast<uint32_t>(blocks / FRAMESET_BLOCKS);
    summary.num_programs = timeslice.num_programs;
    for (uint32_t i = 0; i < timeslice.program_slots; ++i)
        if (timeslice.programs[i].independent.present) fill_program(summary.programs[i], timeslice.programs[i]);
}

void print_end_of_call(ZtpInfoContext& context) {
    const uint16_t options = context.settings.options;
    TimesliceAccumulator& timeslices = context.timeslices;
    if (timeslices.completed != NO_RECORD) {
        print_report(context);
        timeslices.reported = timeslices.completed;
    }
    if ((options & ZTP_OPTION_TOTALS) != 0) print_totals(timeslices.totals);
    if ((options & ZTP_OPTION_ALL_COMPLIANCE) != 0)
        print_compliance_list(timeslices.compliance, (options & ZTP_OPTION_WARNINGS) != 0, timeslices.rule_log);
}

void start_buffer(ZtpInfoContext& context, std::span<const uint8_t> bytes) {
    context.input = {};
    context.input.bytes = bytes;
    context.timeslices_before = context.timeslices.totals.timeslices;
    RuleLog& log = context.timeslices.rule_log;
    log.timeslices_listed = context.settings.timeslices_listed;
    log.kept = current_recorder() != nullptr || log.timeslices_listed;
    if (!log.kept) return;
    log.failure_in_call.reset();
    context.buffer_place = current_place;
    context.time_before_buffer = playing_time_90khz(context.timeslices.totals);
}

// Processes the frames of the buffer and closes its last timeslice.
Walk walk_buffer(ZtpInfoContext& context) {
    Walk walk = Walk::GO_ON;
    while (walk == Walk::GO_ON) walk = process_frame(context);
    context.input.bytes = {};
    if (walk != Walk::END || finish_timeslice(context.timeslices, context.settings.rule_set) == 0) return walk;
    report_fatal("ztp-fatal-processing", "Processing error in ZIT subroutine", SOURCE, __LINE__);
    return Walk::FATAL;
}

}  // namespace

ZtpInfoContext* ztpinfo_open() {
    ZtpInfoPtr context(new (std::nothrow) ZtpInfoContext);
    if (context == nullptr) {
        report_fatal("ztp-fatal-memory", "Cannot allocate the necessary memory", SOURCE, __LINE__);
        return nullptr;
    }
    context->timeslices.convsync_counters.fill(CONVSYNC_ABSENT);
    return context.release();
}

void ztpinfo_close(ZtpInfoContext* handle) {
    delete handle;
}

void ztpinfo_configure(ZtpInfoContext* handle, const ZtpSettings& settings) {
    handle->settings = settings;
    const bool with_tails = (settings.options & (ZTP_OPTION_AUXDATA | ZTP_OPTION_ENCODER_INFO)) != 0;
    auto& tails = handle->timeslices.tails;
    if (!with_tails)
        tails.reset();
    else if (tails == nullptr)
        tails = std::make_unique<std::array<TimesliceTails, RECORD_COUNT>>();
}

int64_t ztpinfo_playing_time(const ZtpInfoContext* handle) {
    return playing_time_90khz(handle->timeslices.totals);
}

Place ztpinfo_failure_place(const ZtpInfoContext* handle) {
    return current_recorder() != nullptr && handle != nullptr ? handle->failure_place : current_place;
}

int ztpinfo_analyse(std::span<const uint8_t> bytes, ZtpInfoContext* handle) {
    ZtpInfoContext& context = *handle;
    const PlaceScope scope;
    start_buffer(context, bytes);
    context.walk = walk_buffer(context);
    const bool fatal = context.walk == Walk::FATAL;
    context.failure_place = fatal ? current_place : place_of_failure(context.timeslices.rule_log);
    if (fatal) return ZTP_FATAL;
    if (context.walk == Walk::END) print_end_of_call(context);
    return context.timeslices.compliance.failures.any() ? ZTP_FAILURES : ZTP_CLEAN;
}

void ztpinfo_summarise(const ZtpInfoContext* handle, ZtpStreamSummary& summary) {
    summary = {};
    if (handle->walk != Walk::FATAL) fill_summary(summary, *handle);
}

int ztpinfo_process(std::span<const uint8_t> bytes, ZtpStreamSummary& summary, ZtpInfoContext* handle) {
    const int result = ztpinfo_analyse(bytes, handle);
    ztpinfo_summarise(handle, summary);
    return result;
}

}  // namespace quorlin
