#include "ac4/ac4_content_type.h"

namespace quorlin {

void read_ac4_content_type(BitReader& reader, Ac4ContentSource source, ac4_content_type& content) {
    content.b_content_type = read_u8(reader, 1);
    if (content.b_content_type == 0) return;
    content.content_classifier = read_u8(reader, 3);
    content.b_language_indicator = read_u8(reader, 1);
    if (content.b_language_indicator == 0) return;
    if (source == Ac4ContentSource::TOC) content.b_serialized_language_tag = read_u8(reader, 1);
    if (content.b_serialized_language_tag != 0) {
        skip_bits(reader, 1 + 16);  // b_start_tag, language_tag_chunk
        return;
    }
    content.n_language_tag_bytes = read_u8(reader, 6);
    for (uint32_t i = 0; i < content.n_language_tag_bytes; ++i) content.language_tag_bytes[i] = read_u8(reader, 8);
}

}  // namespace quorlin
