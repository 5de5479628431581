#pragma once

#include <cstdint>

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

// Handlers (see BoxHandler) of movie fragments, ISO/IEC 14496-12, 8.8. The samples of a fragment are appended to the
// sample tables of their track.

int read_moof(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_mfhd(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_trex(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_tfhd(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_tfdt(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_trun(MediaContext& context, FileReader& reader, int64_t payload_size);
