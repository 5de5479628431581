#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "ac4/ac4_toc_records.h"

namespace quorlin {

// Parses the table of contents at bit `position` of the raw frame `buffer` (the frame without sync word, frame size and
// CRC) into `toc` and moves `position` past it, aligned to a whole byte counted from its first bit. What `toc` held
// before is replaced; its arrays keep their memory, so that the frames of one stream are parsed without allocation.
// Returns 0, or -1 when the table runs past the frame or counts more than AC4_MAX_ELEMENTS; the record is then not to
// be used. Nothing is printed.
[[nodiscard]] int32_t ac4_toc_parse(std::span<const uint8_t> buffer, uint32_t& position, ac4_toc& toc);

// Parses the table of contents at the start of a raw frame of which only the beginning may be there: bits past the end
// of `buffer` are zero. Returns 0 when the fields before the presentations and mdcompat of the first presentation lie
// inside and no count is above AC4_MAX_ELEMENTS, else -1. After 0 those fields, ac4_toc_mdcompat and
// ac4_toc_codec_string hold and nothing else of the record does, since the table may be cut. Nothing is printed.
[[nodiscard]] int32_t ac4_toc_parse_head(std::span<const uint8_t> buffer, ac4_toc& toc);

// mdcompat of the first presentation, 0 when there is none.
uint8_t ac4_toc_mdcompat(const ac4_toc& toc);

// The RFC 6381 codec string that CODECS attributes are compared with: "ac-4.", bitstream_version, 0 or 1 for the
// presentation version (0 when bitstream_version is 0 or 1) and mdcompat of the first presentation, two hex digits
// each.
std::string ac4_toc_codec_string(const ac4_toc& toc);

}  // namespace quorlin
