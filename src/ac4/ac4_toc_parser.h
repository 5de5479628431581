#pragma once

#include <cstdint>
#include <optional>

#include "ac4/ac4_reader.h"
#include "ac4/ac4_toc_records.h"

namespace quorlin {

// One table of contents being parsed. Every loop with a count from the input ends when `stopped`.
struct Ac4TocParser {
    BitReader reader;
    ac4_toc& toc;
    uint8_t frame_rate_factor = 1;                    // as the last frame_rate_multiply_info set it
    uint32_t nesting = 0;                             // presentations inside presentations
    std::optional<uint32_t> first_mdcompat_end = {};  // the bit after mdcompat of the first presentation
    bool too_many = false;  // a count above AC4_MAX_ELEMENTS, or presentations nested too deep
};

inline bool stopped(const Ac4TocParser& parser) {
    return parser.too_many || overrun(parser.reader);
}

// Marks the table as unreadable when `count` is above AC4_MAX_ELEMENTS.
inline void check_count(Ac4TocParser& parser, uint32_t count) {
    if (count > AC4_MAX_ELEMENTS) parser.too_many = true;
}

}  // namespace quorlin
