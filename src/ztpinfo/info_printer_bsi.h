#pragma once

#include "ztpinfo/fmi_api.h"

namespace quorlin {

// The full listing of a frame's bit stream information: a heading, one line per field that the frame carries, and the
// defaults of fields that it does not carry.
void print_bsi_listing(const ZtpFrameInfo& frame);

}  // namespace quorlin
