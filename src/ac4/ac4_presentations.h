#pragma once

#include "ac4/ac4_toc_parser.h"

namespace quorlin {

// ETSI TS 103 190-1, ac4_presentation_info.
void parse_presentation_info(Ac4TocParser& parser, ac4_presentation_info& presentation);

// ETSI TS 103 190-2, ac4_presentation_v1_info.
void parse_presentation_v1_info(Ac4TocParser& parser, ac4_presentation_v1_info& presentation);

}  // namespace quorlin
