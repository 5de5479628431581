#pragma once

#include "isobmff/box_walk.h"

namespace quorlin {

// Handlers (see BoxHandler) of the boxes of a file and its movie, ISO/IEC 14496-12.

int read_ftyp(MediaContext& context, FileReader& reader, const Box& box);
int read_mvhd(MediaContext& context, FileReader& reader, const Box& box);
int read_trak(MediaContext& context, FileReader& reader, const Box& box);
int read_meta(MediaContext& context, FileReader& reader, const Box& box);
int read_uuid(MediaContext& context, FileReader& reader, const Box& box);

}  // namespace quorlin
