#include "ts/ts_segment.h"

#include <cinttypes>
#include <memory>
#include <utility>

#include "bits/finding.h"
#include "bits/recorder.h"
#include "bits/report.h"
#include "ts/pes_checks.h"
#include "ts/pmt.h"
#include "ts/pmt_checks.h"
#include "ts/stream_registration.h"
#include "ts/ts_status.h"
#include "ts/unread_content.h"

namespace quorlin {

namespace {

// Routes the PIDs that a program association section lists to section handling, those of the earlier one back to their
// streams.
void handle_pat(TsDemuxContext& context, std::span<const uint8_t> section) {
    auto& entries = context.psi.pat.entries;
    for (const PatEntry& entry : entries) {
        PidRoute& route = context.routes[entry.pid];
        route.kind = route.slot != TS_NO_SLOT ? PidKind::PES : PidKind::OTHER;
    }
    parse_pat(context.psi, section);
    // Backwards, so that of several entries with one PID the first in PAT order decides.
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
        context.routes[entry->pid].kind = entry->program_number != 0 ? PidKind::PMT : PidKind::NETWORK;
    context.routes[PAT_PID].kind = PidKind::PAT;
}

// A completed PMT of the followed program: its streams are registered, and it is compared with the playlist when it is
// followed for the first time.
int handle_pmt(TsDemuxContext& context, uint16_t pid, std::span<const uint8_t> section) {
    int status = 0;
    if (find_program(context.psi, pid) == nullptr) status |= parse_pmt(context.psi, pid, section);
    if (status != 0) context.psi.sections[pid].refused_at = current_place.offset;
    select_program(context.psi);
    ProgramRecord* program = find_program(context.psi, pid);
    if (program == nullptr || program->program_number != context.psi.selected_program) return status;
    status |= register_streams(context, *program);
    if (!std::exchange(program->compared, true)) status |= check_pmt_against_playlist(*program, context.job.attrs);
    return status;
}

int handle_section(TsDemuxContext& context, PidKind kind, const TsPacket& packet) {
    const PlaceScope scope;
    current_place.stream = packet.pid;
    if (kind != PidKind::NETWORK) report_cut_section(context.psi, packet);
    std::span<const uint8_t> section;
    if (!collect_section(context.psi, packet, section)) return 0;
    current_place.offset = context.psi.sections[packet.pid].offset;
    if (kind == PidKind::PMT) return handle_pmt(context, packet.pid, section);
    if (kind == PidKind::PAT) handle_pat(context, section);
    // A network table is collected and dropped.
    return 0;
}

void count_pes(TsStreamTable& table, size_t slot) {
    if (slot == TS_VIDEO_SLOT)
        ++table.video_pes_count;
    else
        ++table.audio[slot].audio_pes_count;
}

// An audio PES packet goes to its file without the checks that are made for its kind of stream.
void count_unchecked(PesStream& stream) {
    if (stream.audio != nullptr && stream.length > 0 && has_audio_check(*stream.listed))
        add_loss(stream.losses.unchecked_packets, 1);
}

int handle_complete_pes(TsDemuxContext& context, PesStream& stream) {
    const PlaceScope scope(pes_place(stream));
    int status = 0;
    if (stream.audio != nullptr && stream.stream_id == STREAM_ID_PRIVATE_STREAM_1) {
        const auto payload = std::span<const uint8_t>(stream.data).first(stream.length);
        status = check_audio_pes({*stream.audio, payload}, *stream.listed, context.stream_table, context.job.attrs);
    } else {
        count_unchecked(stream);
    }
    return status | flush_pes(stream, context.stream_table);
}

// The stream goes on with another PES packet, or ends: what is held has an unknown length, or was cut short.
int end_open_pes(TsDemuxContext& context, PesStream& stream) {
    const PlaceScope scope(pes_place(stream));
    count_unchecked(stream);
    stream.bytes_total += stream.length;
    return flush_pes(stream, context.stream_table);
}

int handle_pes_packet(TsDemuxContext& context, size_t slot, const TsPacket& packet) {
    PesStream& stream = context.pes[slot];
    int status = 0;
    if (packet.scrambled) add_loss(stream.losses.scrambled_packets, 1);
    if (packet.payload_unit_start_indicator) {
        count_pes(context.stream_table, slot);
        drop_open_header(stream);
        if (stream.length > 0) status |= end_open_pes(context, stream);
        start_pes(stream);
    }
    switch (collect_pes(stream, packet.payload, context.packets_read, status)) {
        case PesState::OPEN:
            break;
        case PesState::COMPLETE:
            status |= handle_complete_pes(context, stream);
            break;
        case PesState::CUT_SHORT:
            status |= flush_pes(stream, context.stream_table);
            break;
    }
    return status;
}

int handle_packet(TsDemuxContext& context, std::span<const uint8_t> bytes) {
    const TsPacket packet = parse_ts_packet(bytes);
    PidRoute& route = context.routes[packet.pid];
    // A packet without payload (adaptation field only) begins and ends nothing.
    if (packet.adaptation_field_control == TS_ADAPTATION_FIELD_ONLY) return 0;
    if (route.kind == PidKind::OTHER) {
        route.early_units += packet.payload_unit_start_indicator ? 1 : 0;
        return 0;
    }
    if (route.kind == PidKind::PES) return handle_pes_packet(context, route.slot, packet);
    return handle_section(context, route.kind, packet);
}

int flush_all(TsDemuxContext& context) {
    int status = 0;
    for_each_stream(context, [&](PesStream& stream) {
        drop_open_header(stream);
        status |= end_open_pes(context, stream);
    });
    return status;
}

void report_tail(const FileReader& reader, size_t size) {
    if (size > 0 && !reader.read_error)
        report_reason(ReasonEffect::UNVALIDATED, "reason-ts-partial-packet", reader.path,
                      "the last %zu bytes are not a whole packet: not read", size);
}

// One bad packet is tolerated, two in a row end the segment: nothing searches for a later sync byte.
int run_packet_loop(TsDemuxContext& context, FileReader& reader) {
    const PlaceScope scope;
    std::array<uint8_t, TS_PACKET_SIZE> scratch;
    int status = 0;
    bool in_sync = false;
    while (true) {
        current_place.offset = static_cast<int64_t>(reader.position);
        const auto bytes = reader_view(reader, TS_PACKET_SIZE, scratch);
        const bool whole = bytes.size() == TS_PACKET_SIZE;
        const bool has_sync = whole && bytes[0] == TS_SYNC_BYTE;
        if (!in_sync && !has_sync)
            return status | fail(TS_LOST_SYNC_OR_SECOND_VIDEO, "ts-lost-sync",
                                 "ERROR: Lost sync, or did not find sync frame where expected.\n");
        if (!whole) {
            report_tail(reader, bytes.size());
            break;
        }
        ++context.packets_read;
        status |= handle_packet(context, bytes);
        in_sync = has_sync;
    }
    return status | flush_all(context);
}

int report_read_error(const FileReader& reader) {
    if (!reader.read_error) return 0;
    const PlaceScope scope;
    current_place.offset = static_cast<int64_t>(reader.error_offset);
    report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-ts-read-error", reader.path, "read error at byte %" PRIu64,
                  reader.error_offset);
    return TS_CHECK_FAILED;
}

void fill_timing(const TsStreamTable& table, TsSegmentTiming& timing) {
    timing.audio_count = table.audio_count;
    for (size_t i = 0; i < table.audio_count; ++i)
        timing.streams[i] = {table.audio[i].stream_type, table.audio[i].first_pts, table.audio[i].end_pts,
                             table.audio[i].pid};
    if (table.video_pes_count <= 1) return;
    // The mean distance of the pictures after the last one.
    const int64_t span = table.video_last_pts - table.video_first_pts;
    timing.video_end_pts = table.video_last_pts + span / (int64_t{table.video_pes_count} - 1);
    timing.video_first_pts = table.video_first_pts;
}

void record_streams(TsDemuxContext& context) {
    if (current_recorder() == nullptr) return;
    for_each_stream(context, [&](const PesStream& stream) {
        StreamFacts facts = {.id = stream.pid, .codec = stream.codec};
        facts.first_time = stream.first_time;
        facts.last_time = stream.last_time;
        facts.units = context.stream_table.video_pes_count;
        facts.payload_bytes = stream.payload_bytes;
        if (const TsAudioStream* audio = stream.audio) {
            facts.units = audio->audio_pes_count;
            facts.channels = audio->channels;
            facts.data_rate_kbps = audio->data_rate_kbps;
            if (audio->frame_ticks > 0 && stream.last_time != NO_TIME)
                facts.end_time = stream.last_time + int64_t{audio->frames_in_pes} * audio->frame_ticks;
        }
        record_stream(facts);
    });
}

int close_outputs(TsDemuxContext& context) {
    int status = 0;
    for (PesStream& stream : context.pes)
        if (elementary_stream_close(stream.output) != 0) status |= TS_OUTPUT_FAILED;
    return status;
}

}  // namespace

int ts_process_segment(FileReader& reader, const SegmentJob& job, TsSegmentTiming* timing) {
    const auto context = std::make_unique<TsDemuxContext>(job);
    context->psi.path = reader.path;
    context->stream_table.path = reader.path;
    context->routes[PAT_PID].kind = PidKind::PAT;

    int status = run_packet_loop(*context, reader);
    status |= report_read_error(reader);
    report_unread_content(*context, status);
    if (status == 0 && timing != nullptr) fill_timing(context->stream_table, *timing);
    record_streams(*context);
    status |= close_outputs(*context);
    return status;
}

}  // namespace quorlin
