#include "playlist/codecs.h"

#include <gtest/gtest.h>

#include "playlist/byte_range.h"
#include "playlist/ztp_program.h"

namespace quorlin {

namespace {

TEST(Codecs, Filter) {
    const char* const cases[][3] = {
        // the value, its audio, its video entries
        {"avc1.4d,ec-3", "ec-3", "avc1.4d"},
        {"avc3, ec-3,xmp4ax,,hev1", " ec-3,xmp4ax", "avc3,hev1"},
        {"ac-4.02.01.03,ac-3", "ac-4.02.01.03,ac-3", "ac-4.02.01.03,ac-3"},
        {"EC-3,lmhe.08.06,lma1", "EC-3,lmhe.08.06,lma1", "lmhe.08.06,lma1"},
        {",", ",", ","},
    };
    for (const auto& [codecs, audio, video] : cases) {
        EXPECT_EQ(filter_codecs(codecs, CodecsFilter::AUDIO), audio);
        EXPECT_EQ(filter_codecs(codecs, CodecsFilter::VIDEO), video);
    }
}

TEST(Codecs, LumoraEntry) {
    std::string entry;
    EXPECT_EQ(lumora_codecs_entry("hvc1,lmhe.08.06,ec-3", entry), 1);
    EXPECT_EQ(entry, "lmhe.08.06");
    EXPECT_EQ(lumora_codecs_entry("lma1,avc1,xlmh1", entry), 1);
    EXPECT_EQ(entry, "lma1,xlmh1");
    EXPECT_EQ(lumora_codecs_entry("avc1.64001", entry), 0);
    EXPECT_EQ(lumora_codecs_entry("lmhe.08.06,lma1.08.06", entry), 0);
}

TEST(ByteRanges, FollowOneAnother) {
    constexpr SegmentKind MEDIA = SegmentKind::BYTE_RANGE;
    constexpr SegmentKind INIT = SegmentKind::INIT;
    const std::pair<SegmentKind, ByteRange> ranges[] = {
        {MEDIA, {"2", {}}},  {INIT, {"9", "30"}},  {INIT, {"8", {}}},   {MEDIA, {"10", "5"}},
        {MEDIA, {"3", {}}},  {MEDIA, {" 4", {}}},  {INIT, {"9", "1"}},  {MEDIA, {"0", "7"}},
        {MEDIA, {"2x", {}}}, {MEDIA, {"-1", "0"}}, {MEDIA, {"1", "x"}}, {MEDIA, {"1", {}}},
    };
    ByteRangeEnds ends;
    std::string spans;
    for (const auto& [kind, range] : ranges) {
        SegmentEntry entry;
        entry.kind = kind;
        entry.path = "a";
        entry.byte_range = range;
        ByteSpan span;
        const int status = resolve_byte_range(entry, ends, span);
        spans += status == 0 ? std::to_string(span.offset) + "+" + std::to_string(span.length) + " " : "none ";
    }
    EXPECT_EQ(spans, "0+2 30+9 0+8 5+10 15+3 18+4 1+9 0+0 22+2 none none 24+1 ");
    SegmentEntry other;
    other.kind = MEDIA;
    other.path = "b";
    other.byte_range = {"5", {}};
    ends.init["b"] = 7;
    ByteSpan span;
    EXPECT_EQ(resolve_byte_range(other, ends, span), 0);
    EXPECT_EQ(span.offset, 7U);
}

TEST(ZtpProgram, Numbers) {
    const struct {
        int status;
        uint32_t value;
        const char* text;
    } cases[] = {
        {0, 0xC2, "c2"},
        {0, 0x8F, " \t+0X8Fq"},
        {0, 0, "0x"},
        {0, 0, "0xg"},
        {0, 0xFFFFFFFF, "100000001"},
        {0, 0x80, "0000000080"},
        {-1, 0, ""},
        {-1, 0, " -0"},
        {-1, 0, "+-1"},
        {-1, 0, "\"80\""},
    };
    for (const auto& test : cases) {
        uint32_t value = 7;
        EXPECT_EQ(parse_ztp_program(test.text, value), test.status) << test.text;
        EXPECT_EQ(value, test.value) << test.text;
    }
}

}  // namespace

}  // namespace quorlin
