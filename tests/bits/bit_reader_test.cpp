#include "bits/bit_reader.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "support/bit_writer.h"

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
            EXPECT_EQ(read_bits(position, writer.bytes, 5), 0x15u);
        }
    }
}

TEST(BitReader, WidthsOfNothingAndOfMoreThanTheValueHolds) {
    const std::vector<uint8_t> bytes = {0x12, 0x34, 0x56, 0x78, 0x9A};
    uint32_t position = 4;
    EXPECT_EQ(read_bits(position, bytes, 0), 0u);
    EXPECT_EQ(read_bits(position, bytes, 12), 0x234u);
    position = 0;
    EXPECT_EQ(read_bits(position, bytes, 40), 0x3456789Au);  // the last 32 bits
    EXPECT_EQ(position, 40u);
}

TEST(BitReader, PastTheEndBitsAreZeroAndThePositionTells) {
    const std::vector<uint8_t> bytes = {0xFF};
    uint32_t position = 4;
    EXPECT_EQ(read_bits(position, bytes, 8), 0xF0u);
    EXPECT_TRUE(bits_overrun(position, bytes));
    position = 8;
    EXPECT_FALSE(bits_overrun(position, bytes));
    position = std::numeric_limits<uint32_t>::max() - 3;
    EXPECT_EQ(read_bits(position, bytes, 32), 0u);
    EXPECT_EQ(position, std::numeric_limits<uint32_t>::max());  // saturated, not wrapped to the start
}

TEST(BitReader, VariableBits) {
    struct Case {
        uint32_t bits;
        uint32_t count;
        int32_t value;
    };
    // Groups of two bits, each followed by its continuation flag.
    for (const Case& c : {Case{0b110, 3, 3}, Case{0b011'100, 6, 10}, Case{0b001'000, 6, 4}, Case{0b111'110, 6, 19},
                          Case{0b001'001'000, 9, 20}, Case{0b111'111'110, 9, 83}}) {
        BitWriter writer;
        writer.put(c.count, c.bits);
        uint32_t position = 0;
        EXPECT_EQ(variable_bits(2, position, writer.bytes), c.value);
        EXPECT_EQ(position, c.count);
    }
    const std::vector<uint8_t> escapes(1000, 0xFF);
    uint32_t position = 0;
    variable_bits(2, position, escapes);  // ends with the data
    EXPECT_LE(position, escapes.size() * 8 + 3);
}
