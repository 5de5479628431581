#pragma once

#include <array>
#include <cstdint>

#include "bits/bit_reader.h"

namespace quorlin {

// ETSI TS 103 190-1, content_type, with the flag that announces it.
struct ac4_content_type {
    uint8_t b_content_type = 0;
    uint8_t content_classifier = 0;
    uint8_t b_language_indicator = 0;
    uint8_t b_serialized_language_tag = 0;  // the tag is spread over frames: there are no language_tag_bytes
    uint8_t n_language_tag_bytes = 0;
    std::array<uint8_t, 63> language_tag_bytes{};

    bool operator==(const ac4_content_type&) const = default;
};

// Where a content_type is read: only a table of contents can spread a language tag over frames.
enum class Ac4ContentSource { TOC, DSI };

void read_ac4_content_type(BitReader& reader, Ac4ContentSource source, ac4_content_type& content);

}  // namespace quorlin
