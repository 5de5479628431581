#include "ts/unread_content.h"

#include <cinttypes>
#include <utility>

#include "bits/place.h"
#include "bits/report.h"

namespace quorlin {

namespace {

// Everything that the checks of a stream have passed over. The reasons have the place where it happened first.
void report_losses(const std::string& path, const PesStream& stream, uint32_t early_units) {
    using enum ReasonEffect;
    const PesLosses& losses = stream.losses;
    const PlaceScope scope;
    current_place.stream = stream.pid;
    if (early_units > 0)
        report_reason(UNVALIDATED, "reason-ts-early-pes", path,
                      "PID %u: %" PRIu32 " PES packets before the program tables: not read", stream.pid, early_units);
    current_place.offset = losses.scrambled_packets.offset;
    if (losses.scrambled_packets.count > 0)
        report_reason(UNVALIDATED, "reason-ts-scrambled", path,
                      "PID %u: scrambled: its content is not validated, and findings about it may be wrong",
                      stream.pid);
    current_place.offset = losses.bytes.offset;
    if (losses.bytes.count > 0)
        report_reason(UNVALIDATED, "reason-ts-bytes-outside-pes", path,
                      "PID %u: %" PRIu64
                      " bytes are in no PES packet, or after the %u bytes that one may hold: not read",
                      stream.pid, losses.bytes.count, PES_MAX_PAYLOAD);
    current_place.offset = losses.cut_headers.offset;
    if (losses.cut_headers.count > 0)
        report_reason(UNVALIDATED, "reason-ts-pes-header-incomplete", path,
                      "PID %u: %" PRIu64 " PES packets end inside their header: not read", stream.pid,
                      losses.cut_headers.count);
    current_place.offset = losses.short_lengths.offset;
    if (losses.short_lengths.count > 0)
        report_reason(UNVALIDATED, "reason-ts-pes-length", path,
                      "PID %u: %" PRIu64 " PES packets have a length that ends inside their header: not read",
                      stream.pid, losses.short_lengths.count);
    current_place.offset = losses.unchecked_packets.offset;
    if (losses.unchecked_packets.count > 0)
        report_reason(UNVALIDATED, "reason-ts-pes-not-checked", path,
                      "PID %u: %" PRIu64
                      " audio PES packets are cut short, have no length or are not of stream_id 0xBD: not checked",
                      stream.pid, losses.unchecked_packets.count);
}

// Whether something of the stream came, read or not: what was not read has a reason of its own.
bool has_packets(TsDemuxContext& context, const PesStream& stream) {
    const TsStreamTable& table = context.stream_table;
    const uint32_t begun = stream.audio != nullptr ? stream.audio->audio_pes_count : table.video_pes_count;
    return begun > 0 || context.routes[stream.pid].early_units > 0 || stream.losses.bytes.count > 0;
}

void report_missing_packets(TsDemuxContext& context) {
    bool any = false;
    for_each_stream(context, [&](const PesStream& stream) { any |= has_packets(context, stream); });
    if (!any) {
        report_reason(ReasonEffect::UNVALIDATED, "reason-ts-no-pes", context.psi.path,
                      "no stream of the program has a PES packet: beyond its tables nothing is checked");
        return;
    }
    for_each_stream(context, [&](const PesStream& stream) {
        if (has_packets(context, stream)) return;
        const PlaceScope scope;
        current_place.stream = stream.pid;
        report_reason(ReasonEffect::REMARK, "reason-ts-stream-without-pes", context.psi.path,
                      "PID %u: the program lists it, but the segment has no PES packet of it", stream.pid);
    });
}

// Once for a PID that several entries of the association table name.
void report_refused_programs(PsiTables& tables) {
    for (const PatEntry& entry : tables.pat.entries) {
        if (entry.program_number != tables.selected_program || find_program(tables, entry.pid) != nullptr) continue;
        const PlaceScope scope;
        current_place.stream = entry.pid;
        current_place.offset = std::exchange(tables.sections[entry.pid].refused_at, NO_OFFSET);
        if (current_place.offset == NO_OFFSET) continue;
        report_reason(ReasonEffect::UNVALIDATED, "reason-ts-program-map-refused", tables.path,
                      "PID %u: a descriptor in the program map table has a finding: none of the program's streams is "
                      "validated",
                      entry.pid);
    }
}

void report_nothing_followed(const PsiTables& tables) {
    using enum ReasonEffect;
    if (tables.pat.entries.empty())
        report_reason(UNVALIDATED, "reason-ts-no-program", tables.path,
                      "no program association table lists a program: nothing is checked");
    else if (tables.programs.empty())
        report_reason(UNVALIDATED, "reason-ts-no-program-map", tables.path,
                      "no program map table is complete: nothing is checked");
    else
        report_reason(UNVALIDATED, "reason-ts-no-stream", tables.path,
                      "no stream of the program is followed: beyond its tables nothing is checked");
}

}  // namespace

void report_unread_content(TsDemuxContext& context, int status) {
    for_each_stream(context, [&](const PesStream& stream) {
        report_losses(context.psi.path, stream, context.routes[stream.pid].early_units);
    });
    report_refused_programs(context.psi);
    if (status != 0) return;
    if (context.stream_table.audio_count > 0 || context.video_pid)
        report_missing_packets(context);
    else
        report_nothing_followed(context.psi);
}

}  // namespace quorlin
