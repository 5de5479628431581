#pragma once

#include <cstdint>

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

// Handlers (see BoxHandler) of the codec configuration boxes inside a sample entry. They keep what the validation
// compares later; bytes past the end of a payload read as zero.

// dac3, dac4, dmlp, d263: the payload as it is.
int store_configuration(MediaContext& context, FileReader& reader, int64_t payload_size);
// ISO/IEC 14496-14, 5.6: any esds makes the track AAC.
int read_esds(MediaContext& context, FileReader& reader, int64_t payload_size);
// ETSI TS 102 366, F.6.
int read_dec3(MediaContext& context, FileReader& reader, int64_t payload_size);
// ISO/IEC 14496-15, 5.3.3.1, or a payload that begins with "PIFF" and holds the parameter sets after start codes. avcE
// is the same for the enhancement layer and leaves the configuration of the base layer alone.
int read_avcC(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_avcE(MediaContext& context, FileReader& reader, int64_t payload_size);
// ISO/IEC 14496-15, 8.3.3.1. A parameter set that runs past the payload is printed and sets the context's status. hvcE
// is to hvcC what avcE is to avcC.
int read_hvcC(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_hvcE(MediaContext& context, FileReader& reader, int64_t payload_size);
// lmcC, lmvC.
int read_lumora_configuration(MediaContext& context, FileReader& reader, int64_t payload_size);

// An E-AC-3 custom channel map (ETSI TS 102 366, E.1.3.1.8, first location in the most significant of 16 bits) in the
// bit order of chan_loc (F.6.2.13).
uint32_t chanmap_to_chan_loc(uint32_t chanmap);

// The channels of an E-AC-3 program: those of an acmod, the LFE, and the locations of a chanmap.
uint32_t count_channels(uint32_t acmod, bool lfeon, uint32_t chanmap);
