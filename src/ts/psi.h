#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "ts/program.h"
#include "ts/ts_packet.h"

constexpr size_t TS_MAX_PSI_PIDS = 20;
constexpr size_t TS_MAX_PROGRAMS = 10;
constexpr size_t TS_MAX_STREAMS_OF_PROGRAM = 100;
constexpr size_t TS_MAX_DESCRIPTORS_OF_STREAM = 10;

// One section being collected (ISO/IEC 13818-1, 2.4.4). `data` begins with the table_id.
struct SectionBuffer {
    uint16_t pid = 0;
    uint16_t section_length = 0;
    std::vector<uint8_t> data;
    bool cut_reported = false;
};

// ISO/IEC 13818-1, table 2-30: one program of the program association table; program_number 0 is the network.
struct PatEntry {
    uint16_t program_number = 0;
    uint16_t pid = 0;
};

struct PatRecord {
    uint16_t transport_stream_id = 0;
    uint8_t version_number = 0;
    bool current_next_indicator = false;
    uint8_t section_number = 0;
    uint8_t last_section_number = 0;
    std::vector<PatEntry> entries;
};

// The program tables of one segment; nothing is kept from segment to segment.
struct PsiTables {
    std::string path;  // of the segment, for messages
    std::vector<SectionBuffer> sections;
    std::vector<uint8_t> completed;  // the section completed last
    std::vector<bool> refused_pids;  // beyond TS_MAX_PSI_PIDS, already reported
    PatRecord pat;
    std::vector<ProgramRecord> programs;
    int32_t selected_program = -1;  // program_number whose PMT is followed
    bool choice_reported = false;
    bool surplus_program_reported = false;
};

enum class SectionState { INCOMPLETE, COMPLETE, REFUSED };

// Says once for a PID on standard error what of its sections is not read as it is meant. In front of collect_section.
void report_cut_section(PsiTables& tables, const TsPacket& packet);

// Collects the section bytes of one packet of a PID that carries PSI. COMPLETE: `section` is the section without the
// last three bytes of its CRC_32, valid until the next call. REFUSED: one PID too many, said on standard error.
SectionState collect_section(PsiTables& tables, const TsPacket& packet, std::span<const uint8_t>& section);

// A completed section without its last byte, which is the first of the CRC_32.
std::span<const uint8_t> section_body(std::span<const uint8_t> section);

// Parses a program association section (ISO/IEC 13818-1, 2.4.4.3) into `tables.pat`.
void parse_pat(PsiTables& tables, std::span<const uint8_t> section);

// The PAT entry of a PID, the first in PAT order; null when the PAT does not list it.
const PatEntry* find_pat_entry(const PsiTables& tables, uint16_t pid);

// The program record whose PMT came on `pid`, null when there is none.
const ProgramRecord* find_program(const PsiTables& tables, uint16_t pid);

// Chooses the program to follow from the PAT: its only one, or the first of several (said on standard error).
void select_program(PsiTables& tables);
