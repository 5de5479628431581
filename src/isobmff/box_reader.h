#pragma once

#include <cstddef>

#include "bits/file_reader.h"
#include "isobmff/box_walk.h"

namespace quorlin {

// The walk over the boxes of ISO/IEC 14496-12, 4.2. No tree is kept: each box is handled as it is met.

// Walks the payload of a container, from the reader's position, with the context's table of boxes. Returns 0,
// MP4_REFUSED for a malformed box, or the first non-zero handler result.
[[nodiscard]] int walk_container(MediaContext& context, FileReader& reader, const Box& container);

// The part of a container that holds its children, after fields of `size` bytes that are read.
Box children_after(const Box& container, size_t size);

}  // namespace quorlin
