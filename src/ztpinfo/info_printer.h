#pragma once

#include <cstdint>

#include "ztpinfo/tsi.h"

namespace quorlin {

// The readable report of a stream on standard output, as the bits of the options word (ZtpOption) ask.

// Program summaries and substream sections of a timeslice: ZTP_OPTION_PROGRAMS, _INDEPENDENT, _DEPENDENT, _BSI,
// _AUXDATA and _ENCODER_INFO. `tails` is looked at for the last two only; null counts as frames without such data.
void print_timeslice(const TimesliceRecord& timeslice, const TimesliceTails* tails, uint16_t options);

// The totals of a handle, which end a call under ZTP_OPTION_TOTALS.
void print_totals(const ZtpStreamTotals& totals);

}  // namespace quorlin
