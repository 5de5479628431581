#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "ac4/ac4_content_type.h"
#include "ac4/ac4_toc_records.h"

namespace quorlin {

// What the comparison of decoder-specific information with a table of contents is made of.

// One test: the finding's id, the field as the finding names it, both values, whether both sides carry the field (a
// value after a presence flag is compared only then), and the words after the subject.
struct Ac4FieldRow {
    const char* id;
    const char* field;
    int64_t in_dsi;
    int64_t in_toc;
    bool on_both_sides = true;
    const char* mismatch = "does not match in toc.";
};

// Prints "ERROR: <field> of <subject> info in dsi <mismatch>" for every row whose values differ. Returns 1 when it
// printed, else 0.
[[nodiscard]] int compare_fields(const std::string& subject, std::span<const Ac4FieldRow> rows);

// "<kind> <index> of <outer>": names a substream, group or EMDF substream in a finding.
std::string subject_name(const char* kind, size_t index, const std::string& outer);

// The additional EMDF substreams of a presentation: the flag that announces them, their number, and the ones that both
// sides have. Returns like compare_fields.
struct Ac4EmdfLabels {
    const char* emdf_version_id;
    const char* emdf_version;
    const char* key_id_id;
    const char* key_id;
    const char* kind;  // for subject_name
};
struct Ac4EmdfSubstreams {
    uint8_t b_add_emdf_substreams;
    std::span<const ac4_emdf_info> substreams;
};
[[nodiscard]] int compare_emdf_substreams(const Ac4EmdfLabels& labels, const std::string& presentation_subject,
                                          const Ac4EmdfSubstreams& in_dsi, const Ac4EmdfSubstreams& in_toc);

// The whole tag is there on both sides (one that is spread over frames cannot be compared).
bool language_on_both_sides(const ac4_content_type& in_dsi, const ac4_content_type& in_toc);

// The bytes that both tags have differ; one may be longer.
bool language_tag_bytes_differ(const ac4_content_type& in_dsi, const ac4_content_type& in_toc);

// dsi_frame_rate_multiply_info and dsi_frame_rate_fraction_info of a factor or fraction: 1, 2, 4 as 0, 1, 2.
int64_t dsi_frame_rate_code(uint8_t factor);

// dsi_sf_multiplier: base, double and quadruple rate as 0, 1, 2.
int64_t dsi_sf_multiplier(uint8_t b_sf_multiplier, uint8_t sf_multiplier);

}  // namespace quorlin
