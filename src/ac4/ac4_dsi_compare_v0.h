#pragma once

#include <cstddef>

#include "ac4/ac4_dsi.h"
#include "ac4/ac4_toc_records.h"

namespace quorlin {

// Compares a version-0 entry with its counterpart, in the order of the fields. `index` is the entry's, for the
// findings. Returns 1 when it printed anything, else 0.
[[nodiscard]] int compare_presentation_v0(size_t index, const ac4_presentation_v0_dsi& dsi,
                                          const ac4_presentation_info& presentation, const ac4_toc& toc);

}  // namespace quorlin
