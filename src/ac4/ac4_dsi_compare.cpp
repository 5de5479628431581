#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "ac4/ac4_dsi.h"
#include "ac4/ac4_dsi_compare.h"

namespace {

// Equal in everything but the flag that tells the two entries of an immersive stereo presentation apart.
bool same_presentation(const ac4_presentation_v1_dsi& a, ac4_presentation_v1_dsi b) {
    b.b_pre_virtualized = a.b_pre_virtualized;
    return a == b;
}

// An immersive stereo presentation (version 2) has one entry in the table of contents and two in the DSI: itself and,
// for players that do not know it, a copy as version 1. The entry behind it is that copy when the DSI has an entry more
// than the table of contents from here on, or when it says the same.
bool is_version_1_copy(const Ac4Dsi& dsi, size_t index, size_t toc_index, uint32_t n_toc_presentations) {
    if (index == 0) return false;
    const Ac4DsiPresentation& entry = dsi.presentations[index];
    const Ac4DsiPresentation& before = dsi.presentations[index - 1];
    if (entry.presentation_version != 1 || before.presentation_version != AC4_IMS_PRESENTATION_VERSION) return false;
    if (dsi.n_presentations + toc_index > n_toc_presentations + index) return true;
    return entry.v1 && before.v1 && same_presentation(*before.v1, *entry.v1);
}

// The presentation of the table of contents that each DSI entry stands for.
std::vector<size_t> pair_presentations(const Ac4Dsi& dsi, const ac4_toc& toc) {
    std::vector<size_t> toc_indices;
    size_t next = 0;
    for (size_t i = 0; i < dsi.presentations.size(); ++i) {
        if (!is_version_1_copy(dsi, i, next, toc.n_presentations)) ++next;
        toc_indices.push_back(next - 1);
    }
    return toc_indices;
}

// The DSI's presentations without the copies.
size_t count_presentations(const Ac4Dsi& dsi, const std::vector<size_t>& toc_indices) {
    size_t copies = 0;
    for (size_t i = 1; i < toc_indices.size(); ++i)
        if (toc_indices[i] == toc_indices[i - 1]) ++copies;
    return dsi.n_presentations - copies;
}

int compare_program_id(const Ac4Dsi& dsi, const ac4_toc& toc) {
    int status = 0;
    if (dsi.short_program_id != toc.short_program_id) {
        std::printf("[SV]   : ERROR: short_program_id in dsi does not match in toc.\n");
        status = 1;
    }
    if (dsi.b_program_id == 0 || toc.b_program_id == 0) return status;
    if (dsi.b_uuid != toc.b_program_uuid_present) {
        std::printf("[SV]   : ERROR: b_uuid in dsi does not match in toc.\n");
        status = 1;
    }
    if (dsi.b_uuid != 0 && toc.b_program_uuid_present != 0 && dsi.program_uuid != toc.program_uuid) {
        std::printf("[SV]   : ERROR: program_uuid in dsi does not match in toc.\n");
        status = 1;
    }
    return status;
}

int compare_stream(const Ac4Dsi& dsi, const ac4_toc& toc, size_t n_dsi_presentations) {
    int status = 0;
    if (dsi.ac4_dsi_version != 1) {
        std::printf("[SV]   : ERROR: dsi_version in dsi should be 1 in toc.\n");
        status = 1;
    }
    if (dsi.frame_rate_index != toc.frame_rate_index) {
        // The text ends in a line end of its own; this is deliberate.
        std::printf("[SV]   : ERROR: frame_rate_index in dsi does not match in toc.\n\n");
        status = 1;
    }
    if (n_dsi_presentations != toc.n_presentations) {
        std::printf("[SV]   : ERROR: n_presentations in dsi does not match in toc.\n");
        status = 1;
    }
    return status | compare_program_id(dsi, toc);
}

int compare_version_0_entry(const Ac4Dsi& dsi, size_t index, size_t toc_index, const ac4_toc& toc) {
    const Ac4DsiPresentation& entry = dsi.presentations[index];
    if (toc.bitstream_version > 1) {
        std::printf("[SV]   : ERROR: presentation %zu version should be 1 or 2 while bitstream version is 1 or 2.\n",
                    index);
        return 1;
    }
    if (!entry.v0 || toc_index >= toc.presentations_v0.size()) return 0;
    return compare_presentation_v0(index, *entry.v0, toc.presentations_v0[toc_index], toc);
}

int compare_version_1_entry(const Ac4Dsi& dsi, size_t index, size_t toc_index, const ac4_toc& toc) {
    const Ac4DsiPresentation& entry = dsi.presentations[index];
    if (toc.bitstream_version <= 1) {
        std::printf(
            "[SV]   : ERROR: bitstream_version should be bigger than 1 while version of presentation %zu is 1.\n",
            index);
        return 1;
    }
    if (!entry.v1) {
        std::printf("[SV]   : ERROR: dsi of presentation version 1 is empty.\n");
        return 1;
    }
    if (toc.presentations_v1.empty()) {
        std::printf("[SV]   : ERROR: toc of presentation version 1 is empty.\n");
        return 1;
    }
    if (toc_index >= toc.presentations_v1.size()) return 0;
    return compare_presentation_v1(index, entry, toc.presentations_v1[toc_index], toc);
}

}  // namespace

int compare_dsi_with_toc(const Ac4Dsi& dsi, const ac4_toc& toc) {
    const std::vector<size_t> toc_indices = pair_presentations(dsi, toc);
    int status = compare_stream(dsi, toc, count_presentations(dsi, toc_indices));
    for (size_t i = 0; i < dsi.presentations.size(); ++i) {
        if (dsi.presentations[i].presentation_version == 0) {
            status |= compare_version_0_entry(dsi, i, toc_indices[i], toc);
        } else if (dsi.presentations[i].presentation_version <= 2) {
            status |= compare_version_1_entry(dsi, i, toc_indices[i], toc);
        }
    }
    return status;
}
