#include "ac4/ac4_dsi_compare.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ac4/ac4_dsi_compare_v0.h"
#include "ac4/ac4_dsi_compare_v1.h"
#include "bits/finding.h"

namespace quorlin {

namespace {

// Equal in everything but the flag that tells the two entries of an immersive stereo presentation apart.
bool same_presentation(const ac4_presentation_v1_dsi& a, ac4_presentation_v1_dsi b) {
    b.b_pre_virtualized = a.b_pre_virtualized;
    return a == b;
}

uint32_t toc_presentation_version(const ac4_toc& toc, size_t index) {
    return toc.bitstream_version > 1 ? toc.presentations_v1[index].presentation_version
                                     : toc.presentations_v0[index].presentation_version;
}

// An immersive stereo presentation (version 2) has one entry in the table of contents and two in the DSI: itself and,
// for players that do not know it, a copy as version 1. A version-1 entry after it is that copy when the DSI has more
// entries from here on than the table of contents has presentations; or when it says the same and the presentation that
// it would stand for otherwise is not of version 1.
bool is_version_1_copy(const Ac4Dsi& dsi, size_t index, const ac4_toc& toc, size_t toc_index) {
    if (index == 0) return false;
    const Ac4DsiPresentation& entry = dsi.presentations[index];
    const Ac4DsiPresentation& before = dsi.presentations[index - 1];
    if (entry.presentation_version != 1 || before.presentation_version != AC4_IMS_PRESENTATION_VERSION) return false;
    if (dsi.n_presentations + toc_index > toc.n_presentations + index) return true;
    if (toc_presentation_version(toc, toc_index) == 1) return false;
    return entry.v1 && before.v1 && same_presentation(*before.v1, *entry.v1);
}

// The presentation of the table of contents that each DSI entry stands for. Entries that were not read are no copies.
std::vector<size_t> pair_presentations(const Ac4Dsi& dsi, const ac4_toc& toc) {
    std::vector<size_t> toc_indices;
    size_t next = 0;
    for (size_t i = 0; i < dsi.n_presentations; ++i) {
        if (i >= dsi.presentations.size() || !is_version_1_copy(dsi, i, toc, next)) ++next;
        toc_indices.push_back(next - 1);
    }
    return toc_indices;
}

int compare_program_id(const Ac4Dsi& dsi, const ac4_toc& toc) {
    int status = 0;
    if (dsi.short_program_id != toc.short_program_id)
        status |=
            fail(1, "ac4-dsi-short-program-id", "[SV]   : ERROR: short_program_id in dsi does not match in toc.\n");
    if (dsi.b_uuid != toc.b_program_uuid_present)
        status |= fail(1, "ac4-dsi-b-uuid", "[SV]   : ERROR: b_uuid in dsi does not match in toc.\n");
    if (dsi.b_uuid != 0 && toc.b_program_uuid_present != 0 && dsi.program_uuid != toc.program_uuid)
        status |= fail(1, "ac4-dsi-program-uuid", "[SV]   : ERROR: program_uuid in dsi does not match in toc.\n");
    return status;
}

int compare_stream(const Ac4Dsi& dsi, const ac4_toc& toc, size_t n_dsi_presentations) {
    int status = 0;
    if (dsi.ac4_dsi_version != 1)
        status |= fail(1, "ac4-dsi-version", "[SV]   : ERROR: dsi_version in dsi should be 1 in toc.\n");
    if (dsi.frame_rate_index != toc.frame_rate_index) {
        // The text ends in a line end of its own; this is deliberate.
        status |=
            fail(1, "ac4-dsi-frame-rate-index", "[SV]   : ERROR: frame_rate_index in dsi does not match in toc.\n\n");
    }
    if (n_dsi_presentations != toc.n_presentations)
        status |= fail(1, "ac4-dsi-n-presentations", "[SV]   : ERROR: n_presentations in dsi does not match in toc.\n");
    return status | compare_program_id(dsi, toc);
}

int compare_version_0_entry(const Ac4DsiPresentation& entry, size_t index, const ac4_toc& toc, size_t toc_index) {
    if (toc.bitstream_version > 1) {
        return fail(1, "ac4-dsi-version-0-entry",
                    "[SV]   : ERROR: presentation %zu version should be 1 or 2 while bitstream version is 1 or 2.\n",
                    index);
    }
    if (toc_index >= toc.presentations_v0.size()) return 0;
    const ac4_presentation_v0_dsi unread;
    return compare_presentation_v0(index, entry.v0 ? *entry.v0 : unread, toc.presentations_v0[toc_index], toc);
}

int compare_version_1_entry(const Ac4DsiPresentation& entry, size_t index, const ac4_toc& toc, size_t toc_index) {
    if (toc.bitstream_version <= 1) {
        return fail(
            1, "ac4-dsi-version-1-entry",
            "[SV]   : ERROR: bitstream_version should be bigger than 1 while version of presentation %zu is 1.\n",
            index);
    }
    int status = 0;
    if (!entry.v1) status |= fail(1, "ac4-dsi-empty", "[SV]   : ERROR: dsi of presentation version 1 is empty.\n");
    if (toc_index >= toc.presentations_v1.size())
        status |= fail(1, "ac4-dsi-beyond-toc", "[SV]   : ERROR: toc of presentation version 1 is empty.\n");
    if (status != 0) return status;
    return compare_presentation_v1(index, entry, toc.presentations_v1[toc_index], toc);
}

}  // namespace

int compare_dsi_with_toc(const Ac4Dsi& dsi, const ac4_toc& toc) {
    const std::vector<size_t> toc_indices = pair_presentations(dsi, toc);
    // A copy is no presentation of its own.
    const size_t n_dsi_presentations = toc_indices.empty() ? 0 : toc_indices.back() + 1;
    int status = compare_stream(dsi, toc, n_dsi_presentations);
    for (size_t i = 0; i < dsi.presentations.size(); ++i) {
        const Ac4DsiPresentation& entry = dsi.presentations[i];
        if (entry.presentation_version == 0) {
            status |= compare_version_0_entry(entry, i, toc, toc_indices[i]);
        } else if (entry.presentation_version <= AC4_DSI_NEWEST_VERSION) {
            status |= compare_version_1_entry(entry, i, toc, toc_indices[i]);
        }
    }
    // The entries after the one where the reading stopped: zeros, as far as they have a counterpart.
    const Ac4DsiPresentation unread;
    for (size_t i = dsi.presentations.size(); i < toc_indices.size() && toc_indices[i] < toc.n_presentations; ++i)
        status |= compare_version_0_entry(unread, i, toc, toc_indices[i]);
    return status;
}

}  // namespace quorlin
