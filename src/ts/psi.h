#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "bits/place.h"
#include "ts/program.h"
#include "ts/ts_packet.h"

namespace quorlin {

// One section being collected (ISO/IEC 13818-1, 2.4.4). `data` begins with the table_id.
struct SectionBuffer {
    uint16_t section_length = 0;
    std::vector<uint8_t> data;
    int64_t offset = 0;  // in the file, of the packet that began it
    bool cut_reported = false;
    int64_t refused_at = NO_OFFSET;  // offset of the PMT that a finding in its descriptors ended last
    std::optional<size_t> program;   // whose PMT the PID carried, in PsiTables::programs
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

// What the programs list under one elementary PID.
struct ListedStream {
    std::vector<const EsRecord*> records;  // of each program the first with the PID, in the order of the programs
    size_t program = 0;                    // of the last of them, in PsiTables::programs
    PrivateStreamRule rule;
};

// The program tables of one segment; nothing is kept from segment to segment. They have no limits but those of a
// section, so what every packet asks for is found by its PID.
struct PsiTables {
    std::string path;                                      // of the segment, for messages
    std::unordered_map<uint16_t, SectionBuffer> sections;  // by PID
    std::vector<uint8_t> completed;                        // the section completed last
    PatRecord pat;
    std::vector<ProgramRecord> programs;
    std::unordered_map<uint16_t, ListedStream> streams;  // by PID
    int32_t selected_program = -1;                       // program_number whose PMT is followed
    bool choice_reported = false;
};

// Reports, once for a PID, the parts of its sections that are not read as they are meant. To be called before
// collect_section.
void report_cut_section(PsiTables& tables, const TsPacket& packet);

// Collects the section bytes of one packet of a PID that carries PSI. True when a section is complete: `section` is
// that section without the last three bytes of its CRC_32, valid until the next call.
bool collect_section(PsiTables& tables, const TsPacket& packet, std::span<const uint8_t>& section);

// A completed section without its last byte, which is the first of the CRC_32.
std::span<const uint8_t> section_body(std::span<const uint8_t> section);

// Parses a program association section (ISO/IEC 13818-1, 2.4.4.3) into `tables.pat`.
void parse_pat(PsiTables& tables, std::span<const uint8_t> section);

// The PAT entry of a PID, the first in PAT order; null when the PAT does not list it.
const PatEntry* find_pat_entry(const PsiTables& tables, uint16_t pid);

// The program record whose PMT came on `pid`, null when there is none. Valid until the next program is added.
ProgramRecord* find_program(PsiTables& tables, uint16_t pid);

// Keeps the program whose PMT came on `pid`.
void add_program(PsiTables& tables, uint16_t pid, ProgramRecord program);

// Chooses the program to follow from the PAT: its only one, or the first of several (said on standard error).
void select_program(PsiTables& tables);

}  // namespace quorlin
