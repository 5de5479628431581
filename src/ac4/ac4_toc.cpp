#include "ac4/ac4_toc.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "ac4/ac4_codec_string.h"
#include "ac4/ac4_derived_channels.h"
#include "ac4/ac4_presentations.h"
#include "ac4/ac4_substreams.h"

namespace quorlin {

namespace {

// The bit position counts to 32 bits; no frame is as long (its size has at most 24 bits).
constexpr size_t MAX_FRAME_BYTES = size_t{1} << 28;

template <class Element>
std::vector<Element> emptied(std::vector<Element>& elements) {
    elements.clear();
    return std::move(elements);
}

// Clears the record; the arrays keep their memory.
void clear_toc(ac4_toc& toc) {
    ac4_toc cleared;
    cleared.presentations_v0 = emptied(toc.presentations_v0);
    cleared.presentations_v1 = emptied(toc.presentations_v1);
    cleared.substream_groups = emptied(toc.substream_groups);
    cleared.group_substreams = emptied(toc.group_substreams);
    cleared.group_indices = emptied(toc.group_indices);
    cleared.emdf_substreams = emptied(toc.emdf_substreams);
    toc = std::move(cleared);
}

void parse_presentations(Ac4TocParser& parser) {
    ac4_toc& toc = parser.toc;
    for (uint32_t i = 0; i < toc.n_presentations && !stopped(parser); ++i) {
        if (toc.bitstream_version > 1) {
            parse_presentation_v1_info(parser, toc.presentations_v1.emplace_back());
        } else {
            parse_presentation_info(parser, toc.presentations_v0.emplace_back());
        }
    }
}

void parse_program_id(Ac4TocParser& parser) {
    ac4_toc& toc = parser.toc;
    if (!read_flag(parser.reader)) return;  // b_program_id
    toc.short_program_id = read_u16(parser.reader);
    toc.b_program_uuid_present = read_u8(parser.reader, 1);
    if (toc.b_program_uuid_present == 0) return;
    for (uint16_t& value : toc.program_uuid) value = read_u16(parser.reader);
}

void skip_substream_index_table(Ac4TocParser& parser) {
    BitReader& reader = parser.reader;
    uint32_t n_substreams = read_u32(reader, 2);
    if (n_substreams == 0) n_substreams = read_variable_bits(reader, 2) + 4;
    check_count(parser, n_substreams);
    const bool b_size_present = n_substreams > 1 || read_flag(reader);
    if (!b_size_present) return;
    for (uint32_t i = 0; i < n_substreams && !stopped(parser); ++i) {
        const bool b_more_bits = read_flag(reader);
        skip_bits(reader, 10);  // substream_size
        if (b_more_bits) read_variable_bits(reader, 2);
    }
}

// The fields before the presentations.
void parse_toc_header(Ac4TocParser& parser) {
    BitReader& reader = parser.reader;
    ac4_toc& toc = parser.toc;
    toc.bitstream_version = static_cast<uint8_t>(std::min(read_escaped(reader, 2, 2), 255u));
    skip_bits(reader, 10);                                  // sequence_counter
    if (read_flag(reader)) {                                // b_wait_frames
        if (read_u32(reader, 3) > 0) skip_bits(reader, 2);  // wait_frames, br_code
    }
    toc.fs_index = read_u8(reader, 1);
    toc.frame_rate_index = read_u8(reader, 4);
    toc.b_iframe_global = read_u8(reader, 1);
    toc.b_single_presentation = read_u8(reader, 1);
    if (toc.b_single_presentation != 0) {
        toc.n_presentations = 1;
    } else if (read_flag(reader)) {  // b_more_presentations
        toc.n_presentations = read_variable_bits(reader, 2) + 2;
    }
    check_count(parser, toc.n_presentations);
    if (read_flag(reader)) {                                           // b_payload_base
        if (read_u32(reader, 5) == 31) read_variable_bits(reader, 3);  // payload_base_minus1
    }
}

void parse_substream_groups(Ac4TocParser& parser) {
    ac4_toc& toc = parser.toc;
    for (uint32_t i = 0; i < toc.n_substream_groups && !stopped(parser); ++i)
        parse_substream_group_info(parser, toc.substream_groups.emplace_back());
}

std::span<const uint8_t> countable(std::span<const uint8_t> frame) {
    return frame.first(std::min(frame.size(), MAX_FRAME_BYTES));
}

// Reads the whole table. Returns the bit position after mdcompat of the first presentation, or where the presentations
// would begin when there is none.
uint32_t parse_toc(Ac4TocParser& parser) {
    const uint32_t start = parser.reader.position;
    parse_toc_header(parser);
    if (parser.toc.bitstream_version > 1) parse_program_id(parser);
    parse_presentations(parser);
    const uint32_t head_end = parser.first_mdcompat_end.value_or(parser.reader.position);
    parse_substream_groups(parser);
    skip_substream_index_table(parser);
    align(parser.reader, start);
    return head_end;
}

}  // namespace

int32_t ac4_toc_parse(std::span<const uint8_t> buffer, uint32_t& position, ac4_toc& toc) {
    clear_toc(toc);
    Ac4TocParser parser{.reader = {countable(buffer), position}, .toc = toc};
    parse_toc(parser);
    position = parser.reader.position;
    if (stopped(parser)) return -1;
    for (ac4_presentation_v1_info& presentation : toc.presentations_v1) {
        ac4_derive_presentation(presentation, ac4_group_indices(toc, presentation), toc.substream_groups);
    }
    return 0;
}

int32_t ac4_toc_parse_head(std::span<const uint8_t> buffer, ac4_toc& toc) {
    clear_toc(toc);
    Ac4TocParser parser{.reader = {.bytes = countable(buffer)}, .toc = toc};
    const uint32_t head_end = parse_toc(parser);
    return parser.too_many || bits_overrun(head_end, parser.reader.bytes) ? -1 : 0;
}

uint8_t ac4_toc_mdcompat(const ac4_toc& toc) {
    if (toc.bitstream_version > 1) return toc.presentations_v1.empty() ? uint8_t{0} : toc.presentations_v1[0].mdcompat;
    return toc.presentations_v0.empty() ? uint8_t{0} : toc.presentations_v0[0].mdcompat;
}

std::string ac4_toc_codec_string(const ac4_toc& toc) {
    return ac4_codec_string(toc.bitstream_version, toc.bitstream_version > 1 ? 1 : 0, ac4_toc_mdcompat(toc));
}

}  // namespace quorlin
