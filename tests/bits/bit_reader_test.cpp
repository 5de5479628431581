#include "bits/bit_reader.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>
#include <vector>

#include "support/bit_writer.h"

namespace quorlin {

TEST(BitReader, FieldsOfEveryWidthAtEveryPositionComeBack) {
    for (uint32_t lead = 0; lead < 8; ++lead) {
        for (uint32_t width = 1; width <= 32; ++width) {
            const uint64_t value = 0xDEADBEEFCAFEF00D >> (64 - width);
            BitWriter writer;
            writer.put(lead, 0);
            writer.put(width, value);
            writer.put(5, 0x15);
            uint32_t position = lead;
            EXPECT_EQ(read_bits(position, writer.bytes, width), value) << lead << " " << width;
            EXPECT_EQ(position, lead + width);
        }
    }
}

TEST(BitReader, OddWidthsAndPlacesPastTheEnd) {
    constexpr uint32_t MAX = std::numeric_limits<uint32_t>::max();
    const std::vector<uint8_t> bytes = {0x12, 0x34, 0x56, 0x78, 0x9F};
    const std::tuple<const char*, uint32_t, uint32_t, uint32_t, uint32_t> cases[] = {
        {"no bits", 4, 0, 0, 4},
        {"over bytes", 4, 12, 0x234, 16},
        {"the last 32 of 40", 0, 40, 0x3456789F, 40},
        {"zeros after the end", 36, 8, 0xF0, 44},
        {"saturated, not wrapped to the start", MAX - 3, 32, 0, MAX}};
    for (const auto& [name, begin, width, value, end] : cases) {
        uint32_t position = begin;
        EXPECT_EQ(read_bits(position, bytes, width), value) << name;
        EXPECT_EQ(position, end) << name;
        EXPECT_EQ(bits_overrun(position, bytes), end > 40) << name;
    }
}

TEST(BitReader, VariableBits) {
    // Groups of two bits, each followed by its continuation flag: the bits, their number, the value.
    const std::tuple<uint32_t, uint32_t, int32_t> cases[] = {
        {0b110, 3, 3}, {0b001'000, 6, 4}, {0b111'110, 6, 19}, {0b001'001'000, 9, 20}};
    for (const auto& [bits, count, value] : cases) {
        BitWriter writer;
        writer.put(count, bits);
        uint32_t position = 0;
        EXPECT_EQ(variable_bits(2, position, writer.bytes), value);
        EXPECT_EQ(position, count);
    }
    const std::vector<uint8_t> escapes(1000, 0xFF);
    uint32_t position = 0;
    variable_bits(2, position, escapes);  // ends with the data
    EXPECT_LE(position, escapes.size() * 8 + 3);
}

}  // namespace quorlin
