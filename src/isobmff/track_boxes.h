#pragma once

#include <cstdint>

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

// Handlers (see BoxHandler) of the boxes of a movie and its tracks, ISO/IEC 14496-12. Those of a track do nothing where
// no track is current, as in the hdlr of a movie's metadata.

int read_ftyp(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_mvhd(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_trak(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_tkhd(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_mdhd(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_edts(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_hdlr(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_meta(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_uuid(MediaContext& context, FileReader& reader, int64_t payload_size);
