#pragma once

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

namespace quorlin {

// Walks the range or file that `reader` was started on as one container, with the sample tables of all tracks emptied
// before. Returns 0, or what ended the walk: MP4_REFUSED for a malformed box, MP4_FINDING for the limit of
// work; the reason is on standard error then.
[[nodiscard]] int parse_media(MediaContext& context, FileReader& reader);

}  // namespace quorlin
