#pragma once

#include <cstdint>
#include <optional>

#include "ac4/ac4_reader.h"
#include "ac4/ac4_toc.h"

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
void check_count(Ac4TocParser& parser, uint32_t count);

// ETSI TS 103 190-1, n_language_tag_bytes and language_tag_bytes.
void read_language_tag(BitReader& reader, ac4_content_type& content);

// Number of a bitrate_indicator code, 0 to 19.
uint8_t read_bitrate_indicator(BitReader& reader);

// ETSI TS 103 190-1, ac4_substream_info.
void parse_substream_info(Ac4TocParser& parser, ac4_substream_info& substream);

// ETSI TS 103 190-2, ac4_substream_group_info; the substreams go to the end of the table's array.
void parse_substream_group_info(Ac4TocParser& parser, ac4_substream_group_info& group);
