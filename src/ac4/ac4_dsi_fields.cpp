#include "ac4/ac4_dsi_fields.h"

#include <algorithm>

#include "bits/finding.h"

namespace quorlin {

int compare_fields(const std::string& subject, std::span<const Ac4FieldRow> rows) {
    int status = 0;
    for (const Ac4FieldRow& row : rows) {
        if (!row.on_both_sides || row.in_dsi == row.in_toc) continue;
        status |=
            fail(1, row.id, "[SV]   : ERROR: %s of %s info in dsi %s\n", row.field, subject.c_str(), row.mismatch);
    }
    return status;
}

std::string subject_name(const char* kind, size_t index, const std::string& outer) {
    return std::string(kind) + " " + std::to_string(index) + " of " + outer;
}

int compare_emdf_substreams(const Ac4EmdfLabels& labels, const std::string& presentation_subject,
                            const Ac4EmdfSubstreams& in_dsi, const Ac4EmdfSubstreams& in_toc) {
    const auto n_in_dsi = static_cast<int64_t>(in_dsi.substreams.size());
    const auto n_in_toc = static_cast<int64_t>(in_toc.substreams.size());
    const bool both = in_dsi.b_add_emdf_substreams != 0 && in_toc.b_add_emdf_substreams != 0;
    const Ac4FieldRow counts[] = {
        {"ac4-dsi-b-add-emdf-substreams", "b_add_emdf_substreams", in_dsi.b_add_emdf_substreams,
         in_toc.b_add_emdf_substreams},
        {"ac4-dsi-n-add-emdf-substreams", "n_add_emdf_substreams", n_in_dsi, n_in_toc, both},
    };
    int status = compare_fields(presentation_subject, counts);
    for (size_t i = 0; i < std::min(in_dsi.substreams.size(), in_toc.substreams.size()); ++i) {
        const Ac4FieldRow rows[] = {
            {labels.emdf_version_id, labels.emdf_version, in_dsi.substreams[i].emdf_version,
             in_toc.substreams[i].emdf_version},
            {labels.key_id_id, labels.key_id, in_dsi.substreams[i].key_id, in_toc.substreams[i].key_id},
        };
        status |= compare_fields(subject_name(labels.kind, i, presentation_subject), rows);
    }
    return status;
}

bool language_on_both_sides(const ac4_content_type& in_dsi, const ac4_content_type& in_toc) {
    return in_dsi.b_language_indicator != 0 && in_toc.b_language_indicator != 0 &&
           in_toc.b_serialized_language_tag == 0;
}

bool language_tag_bytes_differ(const ac4_content_type& in_dsi, const ac4_content_type& in_toc) {
    if (!language_on_both_sides(in_dsi, in_toc)) return false;
    const size_t common = std::min(in_dsi.n_language_tag_bytes, in_toc.n_language_tag_bytes);
    const auto dsi_tag = std::span(in_dsi.language_tag_bytes).first(common);
    return !std::equal(dsi_tag.begin(), dsi_tag.end(), in_toc.language_tag_bytes.begin());
}

int64_t dsi_frame_rate_code(uint8_t factor) {
    return factor == 4 ? 2 : factor - 1;
}

int64_t dsi_sf_multiplier(uint8_t b_sf_multiplier, uint8_t sf_multiplier) {
    return b_sf_multiplier != 0 ? sf_multiplier + 1 : 0;
}

}  // namespace quorlin
