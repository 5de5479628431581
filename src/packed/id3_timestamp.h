#pragma once

#include <cstdint>
#include <string>

#include "bits/file_reader.h"

namespace quorlin {

// Reads the ID3 tag at the reader's place, whose PRIV frame carries the presentation time of the segment's first sample
// in 90 kHz ticks (RFC 8216, 3.4), and leaves the reader after the tag. Returns 0, or -1 when the tag is missing or
// malformed (the reason goes to standard error under `path`).
[[nodiscard]] int read_id3_timestamp(FileReader& reader, const std::string& path, int64_t& timestamp);

}  // namespace quorlin
