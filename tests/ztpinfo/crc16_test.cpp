#include "ztpinfo/crc16.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/syncframe_writer.h"
#include "ztpinfo/fmi_api.h"

namespace quorlin {

namespace {

// Every form against the bit-by-bit register, from any register, at all lengths around the sizes of their steps.
TEST(Crc16, AllFormsAgree) {
    std::mt19937 random(1);
    std::vector<uint8_t> bytes(2 * 300);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    const std::vector<uint16_t> words = to_words(bytes);
    for (size_t start = 0; start < 3; ++start) {
        const uint16_t before = plain_crc16(std::span(bytes).first(2 * start));
        for (size_t count = 0; count + start <= words.size(); ++count) {
            const std::span<const uint16_t> range = std::span(words).subspan(start, count);
            const uint16_t expected = plain_crc16(std::span(bytes).first(2 * (start + count)));
            for (const auto form : {crc16_table, crc16_slicing, crc16_clmul, crc16})
                EXPECT_EQ(form(before, range), expected) << start << " " << count;
        }
    }
}

TEST(Crc16, EveryWrongBitOfAFrameIsFound) {
    ZtpFrameInfo frame;
    for (const char* text : {"I:words=24", "A:fscod=1,frmsizecod=0"}) {
        std::vector<uint16_t> words = to_words(syncframes(text));
        ASSERT_EQ(unpack_frame(words, frame), 0);
        EXPECT_EQ(frame.crc_status, CrcStatus::NO_ERROR);
        const size_t first_part = is_eac3_bsid(frame.bsid) ? words.size() : words.size() / 2 + words.size() / 8;
        // From the end of the header on, lest the frame becomes one of another kind.
        for (size_t bit = 3 * 16; bit < words.size() * 16; ++bit) {
            const uint16_t mask = static_cast<uint16_t>(0x8000 >> bit % 16);
            words[bit / 16] ^= mask;
            ASSERT_EQ(unpack_frame(words, frame), 0);
            EXPECT_EQ(frame.crc_status,
                      bit / 16 < first_part ? CrcStatus::FULL_FRAME_ERROR : CrcStatus::PARTIAL_FRAME_ERROR)
                << bit;
            words[bit / 16] ^= mask;
        }
    }
}

}  // namespace

}  // namespace quorlin
