#include "ts/psi.h"

#include <algorithm>
#include <utility>

#include "bits/byte_order.h"
#include "bits/place.h"
#include "bits/report.h"

namespace quorlin {

namespace {

// A record adds what it asks of the stream_id.
void add_record(PrivateStreamRule& rule, const EsRecord& es) {
    using Wanted = PrivateStreamRule::Wanted;
    const bool is_eac3 = es.stream_type == STREAM_TYPE_ATSC_EAC3;
    const bool is_private_data = es.stream_type == STREAM_TYPE_PES_PRIVATE_DATA;
    const bool is_ac4 = is_private_data && std::any_of(es.descriptors.begin(), es.descriptors.end(),
                                                       [](const auto& d) { return d.tag == DESCRIPTOR_DVB_EXTENSION; });
    if (rule.wanted == Wanted::ANY && (is_eac3 || is_ac4)) rule.wanted = is_eac3 ? Wanted::EAC3 : Wanted::AC4;
    if (!is_eac3 && !is_private_data && es.stream_type != STREAM_TYPE_ATSC_AC3) rule.private_forbidden = true;
}

}  // namespace

void report_cut_section(PsiTables& tables, const TsPacket& packet) {
    SectionBuffer& buffer = tables.sections[packet.pid];
    if (buffer.cut_reported) return;
    const bool starts = packet.payload_unit_start_indicator;
    const bool goes_on = !starts && buffer.data.size() < buffer.section_length;
    const bool points_past = starts && load_u8(packet.payload, 0) + size_t{1} >= packet.payload.size();
    buffer.cut_reported = goes_on || points_past;
    if (goes_on)
        report_reason(ReasonEffect::UNVALIDATED, "reason-ts-section-cut", tables.path,
                      "PID %u: a section goes on in a second packet: it is cut there, and what it lists may be wrong",
                      packet.pid);
    if (points_past)
        report_reason(ReasonEffect::UNVALIDATED, "reason-ts-pointer-field", tables.path,
                      "PID %u: a pointer_field reaches past its packet: no section is read there", packet.pid);
}

bool collect_section(PsiTables& tables, const TsPacket& packet, std::span<const uint8_t>& section) {
    SectionBuffer& buffer = tables.sections[packet.pid];
    // Deliberately in every packet, with a unit start or without: sections are expected to fit into one packet, and one
    // that goes on in a second packet is cut there as if that began with a pointer_field.
    const size_t pointer_field = load_u8(packet.payload, 0);
    const std::span<const uint8_t> bytes = packet.payload.subspan(std::min(pointer_field + 1, packet.payload.size()));
    if (packet.payload_unit_start_indicator) {
        buffer.section_length = load_be16(bytes, 1) & 0x0FFF;
        buffer.data.clear();
        buffer.offset = current_place.offset;
    }
    // section_length counts from after itself, so this leaves out the last three bytes of the CRC_32, which nothing
    // checks.
    const size_t missing = buffer.section_length - buffer.data.size();
    const auto part = bytes.first(std::min(missing, bytes.size()));
    buffer.data.insert(buffer.data.end(), part.begin(), part.end());
    if (buffer.section_length == 0 || buffer.data.size() < buffer.section_length) return false;
    // Emptied, so that a packet without a unit start adds nothing; the two buffers trade places and are reused.
    tables.completed.swap(buffer.data);
    buffer.data.clear();
    buffer.section_length = 0;
    section = tables.completed;
    return true;
}

std::span<const uint8_t> section_body(std::span<const uint8_t> section) {
    return section.first(section.size() - std::min<size_t>(section.size(), 1));
}

void parse_pat(PsiTables& tables, std::span<const uint8_t> section) {
    PatRecord& pat = tables.pat;
    pat = {};
    pat.transport_stream_id = load_be16(section, 3);
    pat.version_number = load_u8(section, 5) >> 1 & 0x1F;
    pat.current_next_indicator = (load_u8(section, 5) & 1) != 0;
    pat.section_number = load_u8(section, 6);
    pat.last_section_number = load_u8(section, 7);
    for (size_t at = 8; at + 4 <= section_body(section).size(); at += 4)
        pat.entries.push_back({load_be16(section, at), static_cast<uint16_t>(load_be16(section, at + 2) & 0x1FFF)});
}

const PatEntry* find_pat_entry(const PsiTables& tables, uint16_t pid) {
    for (const PatEntry& entry : tables.pat.entries)
        if (entry.pid == pid) return &entry;
    return nullptr;
}

ProgramRecord* find_program(PsiTables& tables, uint16_t pid) {
    const auto found = tables.sections.find(pid);
    const bool known = found != tables.sections.end() && found->second.program;
    return known ? &tables.programs[*found->second.program] : nullptr;
}

void add_program(PsiTables& tables, uint16_t pid, ProgramRecord program) {
    const size_t index = tables.programs.size();
    tables.sections[pid].program = index;
    tables.programs.push_back(std::move(program));
    for (const EsRecord& es : tables.programs.back().streams) {
        ListedStream& listed = tables.streams[es.elementary_PID];
        add_record(listed.rule, es);
        if (!listed.records.empty() && listed.program == index) continue;
        listed.records.push_back(&es);
        listed.program = index;
    }
}

void select_program(PsiTables& tables) {
    size_t count = 0;
    for (const PatEntry& entry : tables.pat.entries) {
        if (entry.program_number == 0) continue;
        if (count++ == 0) tables.selected_program = entry.program_number;
    }
    if (count > 1 && !std::exchange(tables.choice_reported, true))
        report_reason(ReasonEffect::UNVALIDATED, "reason-ts-several-programs", tables.path,
                      "%zu programs; the first, number %d, is followed", count, tables.selected_program);
}

}  // namespace quorlin
