#include "ts/psi.h"

#include <algorithm>
#include <utility>

#include "bits/byte_order.h"
#include "bits/report.h"

namespace {

// Null when the PID would be one too many.
SectionBuffer* section_buffer(PsiTables& tables, uint16_t pid) {
    for (SectionBuffer& buffer : tables.sections)
        if (buffer.pid == pid) return &buffer;
    if (tables.sections.size() >= TS_MAX_PSI_PIDS) return nullptr;
    tables.sections.push_back({pid, 0, {}, false});
    return &tables.sections.back();
}

void report_refused_pid(PsiTables& tables, uint16_t pid) {
    if (tables.refused_pids.empty()) tables.refused_pids.resize(TS_PID_COUNT);
    if (tables.refused_pids[pid]) return;
    tables.refused_pids[pid] = true;
    report_reason(tables.path, "more than %zu PIDs carry program tables; PID %u is not followed", TS_MAX_PSI_PIDS, pid);
}

}  // namespace

void report_cut_section(PsiTables& tables, const TsPacket& packet) {
    SectionBuffer* buffer = section_buffer(tables, packet.pid);
    if (buffer == nullptr || buffer->cut_reported) return;
    const bool starts = packet.payload_unit_start_indicator;
    const bool goes_on = !starts && buffer->data.size() < buffer->section_length;
    const bool points_past = starts && load_u8(packet.payload, 0) + size_t{1} >= packet.payload.size();
    buffer->cut_reported = goes_on || points_past;
    if (goes_on)
        report_reason(tables.path,
                      "PID %u: a section goes on in a second packet: it is cut there, and what it lists may be wrong",
                      packet.pid);
    if (points_past)
        report_reason(tables.path, "PID %u: a pointer_field reaches past its packet: no section is read there",
                      packet.pid);
}

SectionState collect_section(PsiTables& tables, const TsPacket& packet, std::span<const uint8_t>& section) {
    SectionBuffer* buffer = section_buffer(tables, packet.pid);
    if (buffer == nullptr) {
        report_refused_pid(tables, packet.pid);
        return SectionState::REFUSED;
    }
    // Deliberately in every packet, with a unit start or without: sections are expected to fit into one packet, and one
    // that goes on in a second packet is cut there as if that began with a pointer_field.
    const size_t pointer_field = load_u8(packet.payload, 0);
    const std::span<const uint8_t> bytes = packet.payload.subspan(std::min(pointer_field + 1, packet.payload.size()));
    if (packet.payload_unit_start_indicator) {
        buffer->section_length = load_be16(bytes, 1) & 0x0FFF;
        buffer->data.clear();
    }
    // section_length counts from behind itself, so this leaves out the last three bytes of the CRC_32, which nothing
    // checks.
    const size_t missing = buffer->section_length - buffer->data.size();
    const auto part = bytes.first(std::min(missing, bytes.size()));
    buffer->data.insert(buffer->data.end(), part.begin(), part.end());
    if (buffer->section_length == 0 || buffer->data.size() < buffer->section_length) return SectionState::INCOMPLETE;
    // Emptied, so that a packet without a unit start adds nothing; the two buffers trade places and are reused.
    tables.completed.swap(buffer->data);
    buffer->data.clear();
    buffer->section_length = 0;
    section = tables.completed;
    return SectionState::COMPLETE;
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

const ProgramRecord* find_program(const PsiTables& tables, uint16_t pid) {
    for (const ProgramRecord& program : tables.programs)
        if (program.program_map_PID == pid) return &program;
    return nullptr;
}

void select_program(PsiTables& tables) {
    size_t count = 0;
    for (const PatEntry& entry : tables.pat.entries) {
        if (entry.program_number == 0) continue;
        if (count++ == 0) tables.selected_program = entry.program_number;
    }
    if (count > 1 && !std::exchange(tables.choice_reported, true))
        report_reason(tables.path, "%zu programs; the first, number %d, is followed", count, tables.selected_program);
}
