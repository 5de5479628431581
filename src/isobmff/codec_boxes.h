#pragma once

#include "isobmff/box_walk.h"

namespace quorlin {

// Handlers (see TrackBoxHandler) of the codec configuration boxes inside a sample entry. They keep what the validation
// compares later; bytes past the end of a payload read as zero.

// dac3, dac4, dmlp, d263: the payload as it is.
int store_configuration(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
// ISO/IEC 14496-14, 5.6: any esds makes the track AAC.
int read_esds(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
// ETSI TS 102 366, F.6. Reserved bits that are set are printed, and change nothing.
int read_dec3(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
// ISO/IEC 14496-15, 5.3.3.1. avcE is the same for the enhancement layer and leaves the configuration of the base layer
// alone.
int read_avcC(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_avcE(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
// ISO/IEC 14496-15, 8.3.3.1. A parameter set that runs past the payload is printed and sets the walk's status. hvcE is
// to hvcC what avcE is to avcC.
int read_hvcC(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
int read_hvcE(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);
// lmcC, lmvC.
int read_lumora_configuration(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);

}  // namespace quorlin
