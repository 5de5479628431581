#pragma once

#include "isobmff/box_walk.h"

namespace quorlin {

// Handlers (see TrackBoxHandler) of the sample description and its entries, ISO/IEC 14496-12, 8.5.2 and 12.

int read_stsd(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_visual_sample_entry(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_audio_sample_entry(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_frma(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_schm(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_metx(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);

}  // namespace quorlin
