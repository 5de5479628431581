#include "ztpinfo/crc16.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/syncframe_writer.h"
#include "ztpinfo/fmi_api.h"

namespace {

std::vector<uint16_t> to_words(const std::vector<uint8_t>& bytes) {
    std::vector<uint16_t> words;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
        words.push_back(static_cast<uint16_t>(bytes[i] << 8 | bytes[i + 1]));
    return words;
}

// Every form against the bit-by-bit register, at all lengths around the sizes of their steps.
TEST(Crc16, AllFormsAgree) {
    std::mt19937 random(1);
    std::vector<uint8_t> bytes(2 * 300);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    const std::vector<uint16_t> words = to_words(bytes);
    for (size_t start = 0; start < 3; ++start) {
        for (size_t count = 0; count + start <= words.size(); ++count) {
            const std::span<const uint16_t> range = std::span(words).subspan(start, count);
            const uint16_t expected = plain_crc16(std::span(bytes).subspan(2 * start, 2 * count));
            EXPECT_EQ(crc16_table(0, range), expected) << count;
            EXPECT_EQ(crc16_slicing(0, range), expected) << count;
            EXPECT_EQ(crc16_clmul(0, range), expected) << count;
            EXPECT_EQ(crc16(0, range), expected) << count;
        }
    }
}

TEST(Crc16, GoesOnFromAnyRegister) {
    const std::vector<uint16_t> words(100, 0xA55A);
    const std::span<const uint16_t> all(words);
    const uint16_t expected = crc16_table(0, all);
    for (size_t split = 0; split <= words.size(); ++split) {
        EXPECT_EQ(crc16_slicing(crc16_table(0, all.first(split)), all.subspan(split)), expected) << split;
        EXPECT_EQ(crc16_clmul(crc16_table(0, all.first(split)), all.subspan(split)), expected) << split;
    }
}

// Frames of an independent encoder, as bytes.
constexpr const char* EAC3_FRAME =
    "x:0b7700173487c222401122a292294a8a0902a0814080492089484"
    "82a0288"
    "4a0a4951028a52a92020004228029200"
    "7e69";
constexpr const char* AC3_FRAME =
    "x:0b7706a300402f84444802245452452951412054102810092411290905405109"
    "4149"
    "2a20514a552404000845005240222a051521"
    "22114a08082a545209"
    "29280a"
    "4020284a08442a222814151402245105081011020845552555222048254a5241"
    "082a0a52401522012"
    "50a214212404904091121020501"
    "0a150a4508420a00ebf4";

TEST(Crc16, EveryWrongBitOfAFrameIsFound) {
    FrameInfo frame;
    for (const char* text : {EAC3_FRAME, AC3_FRAME}) {
        std::vector<uint16_t> words = to_words(syncframes(text));
        ASSERT_EQ(unpack_frame(words, frame), 0);
        EXPECT_EQ(frame.frame_words, words.size());
        EXPECT_EQ(frame.crc_status, CRC_NO_ERROR);
        // From behind the header on, lest the frame becomes one of another kind.
        const bool eac3 = is_eac3_bsid(frame.bsid);
        const size_t first_part = eac3 ? words.size() : words.size() / 2 + words.size() / 8;
        for (size_t bit = 3 * 16; bit < words.size() * 16; ++bit) {
            const uint16_t mask = static_cast<uint16_t>(0x8000 >> bit % 16);
            words[bit / 16] ^= mask;
            ASSERT_EQ(unpack_frame(words, frame), 0);
            EXPECT_EQ(frame.crc_status, bit / 16 < first_part ? CRC_FULL_FRAME_ERROR : CRC_PARTIAL_FRAME_ERROR) << bit;
            words[bit / 16] ^= mask;
        }
    }
}

}  // namespace
