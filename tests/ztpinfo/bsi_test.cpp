#include "ztpinfo/bsi.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "support/syncframe_writer.h"
#include "ztpinfo/bsid_dd.h"
#include "ztpinfo/bsid_ztp.h"
#include "ztpinfo/fmi_api.h"

namespace {

std::vector<uint16_t> to_words(std::vector<uint8_t> bytes) {
    if (bytes.size() % 2 != 0) bytes.push_back(0);
    std::vector<uint16_t> words;
    for (size_t i = 0; i < bytes.size(); i += 2) words.push_back(static_cast<uint16_t>(bytes[i] << 8 | bytes[i + 1]));
    return words;
}

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

template <typename Bsi>
struct BsiCase {
    const char* name;
    const char* bytes;
    Bsi bsi;
};

// clang-format off
const BsiCase<Eac3Bsi> EAC3_CASES[] = {
    {"5.1 with metadata", "x:0B7702FF3F861A39808EE600",
     {.frmsiz = 767, .numblkscod = 3, .acmod = 7, .lfeon = 1, .bsid = 16, .dialnorm = 24, .mixmdate = 1, .dmixmod = 2,
      .ltrtcmixlev = 4, .lorocmixlev = 3, .ltrtsurmixlev = 4, .lorosurmixlev = 6, .infomdate = 1, .copyrightb = 1,
      .origbs = 1, .dsurexmod = 2, .audprodie = 1, .mixlevel = 25, .roomtyp = 2}},
    {"3 blocks", "x:0B77017F2487F924",
     {.frmsiz = 383, .numblkscod = 2, .acmod = 2, .bsid = 16, .dialnorm = 31, .compre = 1, .compr = 201,
      .convsync = 1}},
    {"dependent", "x:0B7740FF3487D02000",
     {.strmtyp = 1, .frmsiz = 255, .numblkscod = 3, .acmod = 2, .bsid = 16, .dialnorm = 31, .chanmape = 1,
      .chanmap = 512}},
    {"1+1, 1 block", "x:0B77005F0086E21A9079F2DAD62807700A75E56940",
     {.frmsiz = 95, .bsid = 16, .dialnorm = 27, .compre = 1, .compr = 16, .dialnorm2 = 26, .compr2e = 1, .compr2 = 32,
      .mixmdate = 1, .pgmscle = 1, .pgmscl = 51, .pgmscl2e = 1, .pgmscl2 = 50, .extpgmscle = 1, .extpgmscl = 45,
      .mixdef = 1, .premixcmpsel = 1, .premixcmpscl = 5, .paninfoe = 1, .panmean = 20, .paninfo2e = 1, .panmean2 = 220,
      .frmmixcfginfoe = 1, .blkmixcfginfoe = {1}, .blkmixcfginfo = {9}, .infomdate = 1, .bsmod = 5, .origbs = 1,
      .audprodie = 1, .mixlevel = 25, .roomtyp = 1, .audprodi2e = 1, .mixlevel2 = 20, .roomtyp2 = 2,
      .adconvtyp2 = 1}},
    {"mixdef 3", "x:0B77005F3287D335730FABE31A000004F00C27E2080880",
     {.frmsiz = 95, .numblkscod = 3, .acmod = 1, .bsid = 16, .dialnorm = 31, .mixmdate = 1, .mixdef = 3, .mixdeflen = 6,
      .mixdata2e = 1, .drcsrc = 1, .premixcmpscl = 3, .extpgmlscle = 1, .extpgmlscl = 3, .extpgmlfescle = 1,
      .extpgmlfescl = 15, .addche = 1, .extpgmaux2scle = 1, .extpgmaux2scl = 7, .mixdata3e = 1, .spchdat = 17,
      .addspchdate = 1, .spchdat1 = 3, .spchan1att = 1, .paninfoe = 1, .panmean = 60, .frmmixcfginfoe = 1,
      .blkmixcfginfoe = {1, 0, 0, 1}, .blkmixcfginfo = {1, 0, 0, 31}, .addbsie = 1, .addbsil = 1,
      .addbsi = {0x01, 0x10}}},
    {"transcoded, 2 blocks", "x:0B7780FF1F87C5C0",
     {.strmtyp = 2, .frmsiz = 255, .numblkscod = 1, .acmod = 7, .lfeon = 1, .bsid = 16, .dialnorm = 31, .blkid = 1,
      .frmsizecod = 28}},
};

const BsiCase<Ac3Bsi> AC3_CASES[] = {
    {"44.1 kHz, time codes", "x:0B778D3E5D4053E1A4693FC4",
     {.crc1 = 36158, .fscod = 1, .frmsizecod = 29, .bsid = 8, .acmod = 2, .dsurmod = 2, .dialnorm = 31, .origbs = 1,
      .timecod1e = 1, .timecod1 = 4660, .timecod2e = 1, .timecod2 = 4081}},
    {"1+1", "x:0B7779730E400C417FFCD4F808",
     {.crc1 = 31091, .frmsizecod = 14, .bsid = 8, .dialnorm = 24, .compre = 1, .compr = 5, .langcode = 1,
      .langcod = 255, .audprodie = 1, .mixlevel = 25, .roomtyp = 2, .dialnorm2 = 20, .compr2e = 1, .compr2 = 240,
      .origbs = 1}},
    {"bsid 6", "x:0B7736161C30EBC1CDE91EC800",
     {.crc1 = 13846, .frmsizecod = 28, .bsid = 6, .acmod = 7, .cmixlev = 1, .surmixlev = 1, .lfeon = 1, .dialnorm = 24,
      .audprodie = 1, .mixlevel = 25, .roomtyp = 2, .copyrightb = 1, .origbs = 1, .xbsi1e = 1, .dmixmod = 2,
      .ltrtcmixlev = 4, .ltrtsurmixlev = 4, .lorocmixlev = 3, .lorosurmixlev = 6, .xbsi2e = 1, .dsurexmod = 2,
      .dheadphonmod = 1}},
};
// clang-format on

// Unpacker and writer against bytes whose fields are known.
template <typename Bsi, size_t N>
void check_known(const BsiCase<Bsi> (&cases)[N]) {
    for (const BsiCase<Bsi>& known : cases) {
        const std::vector<uint8_t> bytes = syncframes(known.bytes);
        Bsi expected = known.bsi;
        expected.syncword = 0x0B77;
        Bsi unpacked;
        ASSERT_EQ(unpack(to_words(bytes), unpacked), 0) << known.name;
        EXPECT_TRUE(equal(unpacked, expected)) << known.name;
        BitWriter writer;
        put_bsi(writer, expected);
        writer.align();
        writer.bytes.resize(bytes.size());
        EXPECT_EQ(writer.bytes, bytes) << known.name;
    }
}

TEST(Bsi, KnownFrames) {
    check_known(EAC3_CASES);
    check_known(AC3_CASES);
}

// Any bits: what is unpacked and written again gives the same bits and the same fields.
template <typename Bsi>
void check_random_bits(std::mt19937& random, uint32_t bsid) {
    std::vector<uint8_t> bytes(160);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    bytes[0] = 0x0B;
    bytes[1] = 0x77;
    bytes[4] = static_cast<uint8_t>(bytes[4] & (is_eac3_bsid(bsid) ? 0x7F : 0xFF));  // fscod below 3
    bytes[5] = static_cast<uint8_t>(bsid << 3 | (bytes[5] & 7));
    Bsi first;
    ASSERT_EQ(unpack(to_words(bytes), first), 0);
    BitWriter writer;
    put_bsi(writer, first);
    const size_t bits = writer.bit_count;
    writer.align();
    std::vector<uint8_t> padded = writer.bytes;
    padded.resize(bytes.size() + 64);
    Bsi second;
    ASSERT_EQ(unpack(to_words(padded), second), 0);
    if constexpr (std::is_same_v<Bsi, Eac3Bsi>) {
        if (first.mixdef == 3) {
            // Filler bits are not kept, and a field too short for its parts cannot be written.
            EXPECT_TRUE(first.mixdeflen < 8 || equal(first, second));
            return;
        }
    }
    EXPECT_TRUE(equal(first, second));
    for (size_t bit = 0; bit < bits; ++bit)
        ASSERT_EQ((writer.bytes[bit / 8] ^ bytes[bit / 8]) >> (7 - bit % 8) & 1, 0) << "bit " << bit;
}

TEST(Bsi, RandomBitsSurviveTheWriter) {
    std::mt19937 random(2);
    for (int round = 0; round < 20000; ++round) {
        check_random_bits<Eac3Bsi>(random, static_cast<uint32_t>(11 + random() % 6));
        check_random_bits<Ac3Bsi>(random, static_cast<uint32_t>(random() % 9));
    }
}

TEST(Bsi, BitsBehindTheFrameAreZero) {
    const std::vector<uint16_t> words = to_words(syncframes(EAC3_CASES[4].bytes));
    Eac3Bsi whole;
    ASSERT_EQ(unpack_eac3_bsi(words, whole), 0);
    for (size_t count = 3; count < words.size(); ++count) {
        std::vector<uint16_t> zeroed(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(count));
        Eac3Bsi cut;
        ASSERT_EQ(unpack_eac3_bsi(zeroed, cut), 0);
        zeroed.resize(words.size() + 100);
        Eac3Bsi expected;
        ASSERT_EQ(unpack_eac3_bsi(zeroed, expected), 0);
        EXPECT_TRUE(equal(cut, expected)) << count;
        EXPECT_FALSE(equal(cut, whole)) << count;
    }
}

TEST(Bsi, Ac3FrameLengths) {
    for (uint16_t fscod = 0; fscod < 3; ++fscod) {
        for (uint16_t frmsizecod = 0; frmsizecod < 38; ++frmsizecod)
            EXPECT_EQ(ac3_frame_words(fscod, frmsizecod),
                      announced_words(Ac3Bsi{.fscod = fscod, .frmsizecod = frmsizecod}));
        EXPECT_EQ(ac3_frame_words(fscod, 38), 0u);
    }
    EXPECT_EQ(ac3_frame_words(3, 0), 0u);
    EXPECT_EQ(ac3_frame_words(1, 1), 70u);
}

TEST(FrameInfo, DerivedValues) {
    FrameInfo frame;
    ASSERT_EQ(unpack_frame(to_words(syncframes("I:words=1536")), frame), 0);
    EXPECT_EQ(frame.data_rate_kbps, 768.0f);
    EXPECT_EQ(frame.total_channels, 6);
    EXPECT_EQ(frame.locations, 0xF801);
    EXPECT_EQ(frame.convsync, CONVSYNC_ABSENT);
    ASSERT_EQ(unpack_frame(to_words(syncframes("D:acmod=0,blocks=2,fscod=2")), frame), 0);
    EXPECT_EQ(frame.sample_rate, 32000u);
    EXPECT_EQ(frame.blocks_per_frame, 2);
    EXPECT_EQ(frame.dialnorm_sets, 2);
    EXPECT_EQ(frame.full_band_channels, 2);
    EXPECT_EQ(frame.locations, 0x0200);
    ASSERT_EQ(unpack_frame(to_words(syncframes("A")), frame), 0);
    EXPECT_EQ(frame.bytes_per_frame, 1792u);
    EXPECT_EQ(frame.chanmap, 0);
    EXPECT_EQ(frame.data_rate_kbps, 448.0f);
}

// A frame end: 20 bits of auxiliary data, then `auxdatal`, auxdatae, the last bit and crc2.
std::vector<uint16_t> frame_end(uint32_t auxdatal, uint32_t auxdatae, uint32_t last_bit) {
    BitWriter writer;
    writer.put(12, 0);
    writer.put(20, 0x12345);
    writer.put(14, auxdatal);
    writer.put(1, auxdatae);
    writer.put(1, last_bit);
    writer.put(16, 0xFFFF);
    return to_words(writer.bytes);
}

TEST(FrameInfo, AuxiliaryDataAndEncoderInformation) {
    FrameTail tail;
    unpack_frame_tail(frame_end(20, 1, 1), 16, tail);
    EXPECT_TRUE(tail.auxdatae && tail.has_encinfo);
    EXPECT_EQ(tail.encinfo, 1);
    EXPECT_EQ(tail.auxdatal, 20);
    EXPECT_EQ(tail.auxdata, (std::vector<uint16_t>{0x1234, 0x5000}));
    unpack_frame_tail(frame_end(32, 1, 0), 8, tail);
    EXPECT_EQ(tail.auxdata, (std::vector<uint16_t>{0x0001, 0x2345}));
    EXPECT_FALSE(tail.has_encinfo);
    for (const std::vector<uint16_t>& words :
         {frame_end(33, 1, 0), frame_end(20, 0, 0), std::vector<uint16_t>{0xFFFF}}) {
        unpack_frame_tail(words, 16, tail);
        EXPECT_FALSE(tail.auxdatae);
        EXPECT_TRUE(tail.auxdata.empty());
    }
}

}  // namespace
