#include "ztpinfo/zit_fio.h"

#include <bit>
#include <cstring>

#include "ztpinfo/messages.h"

namespace quorlin {

namespace {

// Words as first and second byte in normal order; the sync word of a frame tells which order its words have.
constexpr uint8_t SYNC_BYTE_HIGH = 0x0B;
constexpr uint8_t SYNC_BYTE_LOW = 0x77;

constexpr const char* SOURCE = "zit_fio";

void set_byte_order(WordInput& input, ZtpByteOrder order) {
    if (input.byte_order != BYTE_ORDER_UNKNOWN && input.byte_order != order)
        report_warning("ztp-warning-byte-order", "FIO: Byte order status changed");
    input.byte_order = order;
}

// Eight words that the compiler treats as one value, whatever vector instructions the target has.
using WordVector [[gnu::vector_size(16)]] = uint16_t;
constexpr size_t VECTOR_WORDS = sizeof(WordVector) / sizeof(uint16_t);

// Copies words.size() words, the two bytes of each exchanged.
void load_swapped(const uint8_t* bytes, std::span<uint16_t> words) {
    size_t i = 0;
    for (; i + VECTOR_WORDS <= words.size(); i += VECTOR_WORDS) {
        WordVector eight;
        std::memcpy(&eight, bytes + i * sizeof(uint16_t), sizeof eight);
        eight = eight << 8 | eight >> 8;
        std::memcpy(&words[i], &eight, sizeof eight);
    }
    for (; i < words.size(); ++i) {
        uint16_t word;
        std::memcpy(&word, bytes + i * sizeof word, sizeof word);
        words[i] = static_cast<uint16_t>(word << 8 | word >> 8);
    }
}

// Copies words.size() words from `bytes` into host order.
void load_words(const uint8_t* bytes, ZtpByteOrder order, std::span<uint16_t> words) {
    const bool host_order = (order == BYTE_ORDER_HIGH_FIRST) == (std::endian::native == std::endian::big);
    if (host_order)
        std::memcpy(words.data(), bytes, words.size_bytes());
    else
        load_swapped(bytes, words);
}

}  // namespace

int detect_byte_order(WordInput& input) {
    if (bytes_left(input) == 0) {
        input.end_of_input = true;
        return 0;
    }
    if (bytes_left(input) == 1) {
        report_fatal("ztp-fatal-short-read", "Cannot read from input file", SOURCE, __LINE__);
        return INPUT_SHORT;
    }
    const uint8_t first = input.bytes[input.position];
    const uint8_t second = input.bytes[input.position + 1];
    if (first == SYNC_BYTE_HIGH && second == SYNC_BYTE_LOW) {
        set_byte_order(input, BYTE_ORDER_HIGH_FIRST);
        return 0;
    }
    if (first == SYNC_BYTE_LOW && second == SYNC_BYTE_HIGH) {
        set_byte_order(input, BYTE_ORDER_LOW_FIRST);
        return 0;
    }
    report_fatal("ztp-fatal-byte-order", "Invalid syncword detected while detecting byte order", SOURCE, __LINE__);
    return INPUT_NO_SYNC;
}

int read_words(WordInput& input, std::span<uint16_t> words) {
    if (bytes_left(input) < words.size_bytes()) {
        if (bytes_left(input) > 0) {
            report_fatal("ztp-fatal-short-read", "Cannot read from input file", SOURCE, __LINE__);
            return INPUT_SHORT;
        }
        input.end_of_input = true;
        return 0;
    }
    if (words.empty()) return 0;
    load_words(input.bytes.data() + input.position, input.byte_order, words);
    input.position += words.size_bytes();
    return 0;
}

}  // namespace quorlin
