#pragma once

#include <cstdint>

#include "ztpinfo/fmi_api.h"

namespace quorlin {

// The short section on one substream, without its heading.
void print_substream_summary(const ZtpFrameInfo& frame);

// Auxiliary data and encoder information of a frame; `tail` may be null, which counts as a frame without either.
void print_auxdata(const ZtpFrameInfo& frame, const FrameTail* tail);
void print_encoder_info(const ZtpFrameInfo& frame, const FrameTail* tail);

}  // namespace quorlin
