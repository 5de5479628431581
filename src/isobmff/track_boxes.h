#pragma once

#include "isobmff/box_walk.h"

namespace quorlin {

// Handlers (see TrackBoxHandler) of the boxes of a track but for its sample table, ISO/IEC 14496-12.

int read_tkhd(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_mdhd(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_edts(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_hdlr(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);

}  // namespace quorlin
