#include "ztpinfo/bsi.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "support/syncframe_writer.h"
#include "ztpinfo/bsid_dd.h"
#include "ztpinfo/bsid_ztp.h"

namespace quorlin {

namespace {

int unpack(std::span<const uint16_t> words, Ac3Bsi& bsi) {
    return unpack_ac3_bsi(words, bsi);
}
int unpack(std::span<const uint16_t> words, Eac3Bsi& bsi) {
    return unpack_eac3_bsi(words, bsi);
}

template <typename Bsi>
bool equal(const Bsi& a, const Bsi& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// mixdeflen of a frame with a mixing parameter field. Its filler bits are not kept, and one too short for its parts,
// 8 at most, cannot be written again.
int mixing_field(const Ac3Bsi&) {
    return -1;
}
int mixing_field(const Eac3Bsi& bsi) {
    return bsi.mixdef == 3 ? bsi.mixdeflen : -1;
}

// Any bits: what is unpacked and written again gives the same bits and the same fields, as far as `bytes` go; after
// them, zeros are read.
template <typename Bsi>
void check_bits(std::vector<uint8_t> bytes, size_t cut) {
    Bsi first;
    ASSERT_EQ(unpack(to_words(std::span(bytes).first(cut)), first), 0);
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(cut), bytes.end(), uint8_t{0});
    Bsi zeroed;
    ASSERT_EQ(unpack(to_words(bytes), zeroed), 0);
    EXPECT_TRUE(equal(first, zeroed)) << cut;
    BitWriter writer;
    put_bsi(writer, first);
    const size_t bits = mixing_field(first) < 0 ? writer.bit_count : 0;
    for (size_t bit = 0; bit < bits; ++bit)
        ASSERT_EQ((writer.bytes[bit / 8] ^ bytes[bit / 8]) >> (7 - bit % 8) & 1, 0) << "bit " << bit;
    writer.bytes.resize(bytes.size() + 64);
    Bsi second;
    ASSERT_EQ(unpack(to_words(writer.bytes), second), 0);
    const bool too_short = mixing_field(first) >= 0 && mixing_field(first) < 8;
    EXPECT_TRUE(too_short || equal(first, second));
}

template <typename Bsi>
void check_random_bits(std::mt19937& random, uint32_t bsid) {
    std::vector<uint8_t> bytes(160);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    bytes[0] = 0x0B;
    bytes[1] = 0x77;
    bytes[4] = static_cast<uint8_t>(bytes[4] & 0x7F);  // fscod below 3
    bytes[5] = static_cast<uint8_t>(bsid << 3 | (bytes[5] & 7));
    check_bits<Bsi>(bytes, 2 * (3 + random() % 78));
}

TEST(Bsi, RandomBitsSurviveTheWriter) {
    std::mt19937 random(2);
    for (int round = 0; round < 10000; ++round) {
        check_random_bits<Eac3Bsi>(random, static_cast<uint32_t>(11 + random() % 6));
        check_random_bits<Ac3Bsi>(random, static_cast<uint32_t>(random() % 9));
    }
}

TEST(Bsi, Ac3FrameLengths) {
    for (uint32_t fscod = 0; fscod < 3; ++fscod) {
        for (uint32_t frmsizecod = 0; frmsizecod < 38; ++frmsizecod)
            EXPECT_EQ(ac3_frame_words(fscod, frmsizecod), announced_words(fscod, frmsizecod));
        EXPECT_EQ(ac3_frame_words(fscod, 38), 0u);
    }
    EXPECT_EQ(ac3_frame_words(3, 0), 0u);
}

}  // namespace

}  // namespace quorlin
