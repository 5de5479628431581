#include "support/bit_writer.h"

namespace quorlin {

void BitWriter::put(uint32_t n, uint64_t value) {
    for (uint32_t i = n; i-- > 0;) {
        if (bit_count % 8 == 0) bytes.push_back(0);
        const uint64_t bit = i < 64 ? (value >> i) & 1 : 0;
        bytes.back() = static_cast<uint8_t>(bytes.back() | (bit << (7 - bit_count % 8)));
        ++bit_count;
    }
}

void BitWriter::put_bytes(std::span<const uint8_t> data) {
    for (uint8_t byte : data) put(8, byte);
}

void BitWriter::put_text(std::string_view text) {
    for (char c : text) put(8, static_cast<uint8_t>(c));
}

void BitWriter::align() {
    bit_count = bytes.size() * 8;
}

}  // namespace quorlin
