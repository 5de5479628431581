#pragma once

#include "ac4/ac4_dsi.h"
#include "ac4/ac4_toc_records.h"

namespace quorlin {

// Compares decoder-specific information with a table of contents field by field and prints every mismatch. Returns 1
// when it printed anything, else 0.
[[nodiscard]] int compare_dsi_with_toc(const Ac4Dsi& dsi, const ac4_toc& toc);

}  // namespace quorlin
