#pragma once

#include "bits/file_reader.h"
#include "isobmff/box_walk.h"

namespace quorlin {

// Which box breaks which rule, on standard error. `rule` is a plain text.

// Where the walk goes on and leaves something out.
void report_box(const FileReader& reader, const Box& box, const char* id, const char* rule);

// Where the walk ends: returns MP4_REFUSED.
[[nodiscard]] int refuse_box(const FileReader& reader, const Box& box, const char* id, const char* rule);

// Where the limit of work ends it: returns MP4_FINDING.
[[nodiscard]] int end_work_at_box(const FileReader& reader, const Box& box, const char* id, const char* rule);

}  // namespace quorlin
