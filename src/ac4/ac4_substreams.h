#pragma once

#include "ac4/ac4_toc_parser.h"

namespace quorlin {

// ETSI TS 103 190-1, ac4_substream_info.
void parse_substream_info(Ac4TocParser& parser, ac4_substream_info& substream);

// ETSI TS 103 190-2, ac4_substream_group_info; the substreams go to the end of the table's array.
void parse_substream_group_info(Ac4TocParser& parser, ac4_substream_group_info& group);

}  // namespace quorlin
