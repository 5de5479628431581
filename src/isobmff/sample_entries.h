#pragma once

#include <cstdint>

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

// Handlers (see BoxHandler) of the sample description and its entries, ISO/IEC 14496-12, 8.5.2 and 12.

int read_stsd(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_visual_sample_entry(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_audio_sample_entry(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_frma(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_schm(MediaContext& context, FileReader& reader, int64_t payload_size);
int read_metx(MediaContext& context, FileReader& reader, int64_t payload_size);
