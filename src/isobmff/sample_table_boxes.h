#pragma once

#include "isobmff/box_walk.h"

namespace quorlin {

// Handlers (see TrackBoxHandler) of the sample tables of a track, ISO/IEC 14496-12, 8.6 and 8.7. A table replaces the
// one that the track had.

int read_stsz(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_stts(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_stss(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_ctts(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_stsc(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_stco(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_co64(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);

}  // namespace quorlin
