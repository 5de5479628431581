#pragma once

#include "isobmff/box_walk.h"

namespace quorlin {

// Handlers (see BoxHandler) of movie fragments, ISO/IEC 14496-12, 8.8. The samples of a fragment are appended to the
// sample tables of their track.

int read_moof(MediaContext& context, FileReader& reader, const Box& box);
int read_mfhd(MediaContext& context, FileReader& reader, const Box& box);
int read_trex(MediaContext& context, FileReader& reader, const Box& box);
int read_tfhd(MediaContext& context, FileReader& reader, const Box& box);
int read_tfdt(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_trun(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);

}  // namespace quorlin
