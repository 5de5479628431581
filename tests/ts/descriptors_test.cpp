#include "ts/descriptors.h"

#include <gtest/gtest.h>

#include "support/golden.h"
#include "support/ts_writer.h"

namespace quorlin {

namespace {

struct DescriptorCase {
    const char* name;
    uint8_t tag;
    Bytes body;
};

// A valid descriptor of every kind, and each rule broken alone.
const DescriptorCase CASES[] = {
    {"iso 639", 0x0A, {'e', 'n', 'g', 0}},
    {"eac3 main 5.1", 0xCC, {0xC0, 0xC5, 0x30}},
    {"eac3 dvb tag, objects", 0x7A, {0x80, 0xC5, 0x20, 0xFF, 16}},
    {"eac3 mainid", 0xCC, {0xA0, 0xC5, 0x20, 0}},
    {"eac3 asvc", 0xCC, {0x90, 0xC5, 0x20, 0}},
    {"eac3 mixinfoexists", 0xCC, {0x88, 0xC5, 0x20}},
    {"eac3 language_2", 0x7A, {0x80, 0xC5, 0x60, 'e', 'n', 'g'}},
    {"eac3 service 0, not full", 0xCC, {0x80, 0x85, 0x20}},
    {"eac3 service 1, full", 0xCC, {0x80, 0xC8, 0x20}},
    {"eac3 service 2", 0xCC, {0x80, 0x92, 0x20}},
    {"eac3 service 4, full", 0xCC, {0x80, 0xE0, 0x20}},
    {"eac3 service 5, channels", 0xCC, {0x80, 0xEA, 0x20}},
    {"eac3 service 6, not full", 0xCC, {0x80, 0xB0, 0x20}},
    {"eac3 service 6, channels", 0xCC, {0x80, 0xF2, 0x20}},
    {"eac3 empty", 0xCC, {}},
    {"ac4", 0x7F, {0x15, 0xC0, 0xC0, 2, 0xAA, 0xBB}},
    {"ac4 other extension", 0x7F, {0x06, 0x00}},
    {"ac4 additional info", 0x7F, {0x15, 0x00, 0x01}},
    {"ac4 additional info after the toc", 0x7F, {0x15, 0x40, 1, 0xAA, 0x01}},
    {"ac4 toc longer than the descriptor", 0x7F, {0x15, 0x40, 9, 0xAA}},
    {"lmra stn uhd24", 0xB0, {1, 0, 0x0A, 0x37}},
    {"lmra without base layer", 0xB0, {1, 0, 0x08, 0x4C, 0x08, 0x0F}},
    {"lmra without base layer, compatibility", 0xB0, {1, 0, 0x08, 0x4C, 0x08, 0x0F, 0x2F}},
    {"lmra profile 8, compatibility 4", 0xB0, {1, 0, 0x10, 0x37, 0x4F}},
    {"lmra profile 8, compatibility 5", 0xB0, {1, 0, 0x10, 0x37, 0x5F}},
    {"lmra profile 8, compatibility 6", 0xB0, {1, 0, 0x10, 0x37, 0x6F}},
    {"lmra profile 9, compatibility 6", 0xB0, {1, 0, 0x12, 0x37, 0x6F}},
    {"lmra profile 10", 0xB0, {1, 0, 0x14, 0x37}},
    {"lmra level 0, two bytes left", 0xB0, {2, 1, 0x0A, 0x00 | 7, 0x6F, 0}},
    {"lmra level 33", 0xB0, {1, 0, 0x0B, 0x0F}},
    {"lmra cut", 0xB0, {1, 0, 0x0A}},
};

TEST(Descriptors, RulesAndPrintedLines) {
    std::string transcript = transcript_checksums("damaged", 1280, [](std::mt19937& random) {
        const DescriptorCase& c = CASES[random() % std::size(CASES)];
        const Bytes bytes = with_faults(ts_descriptor(c.tag, c.body), random);
        StreamDescriptor descriptor;
        uint32_t consumed = 0;
        const std::string entry = transcript_entry("", [&] { return parse_descriptor(bytes, descriptor, consumed); });
        return entry + std::to_string(consumed);
    });
    for (const DescriptorCase& c : CASES) {
        const Bytes bytes = ts_descriptor(c.tag, c.body);
        StreamDescriptor descriptor;
        uint32_t consumed = 0;
        transcript += transcript_entry(c.name, [&] { return parse_descriptor(bytes, descriptor, consumed); });
        EXPECT_EQ(bytes.size(), consumed) << c.name;
        EXPECT_EQ(bytes, Bytes(descriptor.raw.begin(), descriptor.raw.end())) << c.name;
        transcript += descriptor_name(descriptor.tag) + "\n";
    }
    expect_golden("golden/descriptors.txt", transcript);
}

// What stands after the flags of fields that may be absent, in the order of the syntax.
TEST(Descriptors, FieldsAfterEveryFlag) {
    const Bytes body = {0xFF, 0xFF, 0xF0, 0xFD, 2,   11,  12,  13,  'a', 'b', 'c',  'd', 'e',
                        'f',  'g',  'h',  'i',  'j', 'k', 'l', 'm', 'n', 'o', 0x01, 0x10};
    const Bytes optional(body.begin() + 3, body.end() - 2);
    const Eac3DescriptorFields e = read_eac3_descriptor(ts_descriptor(0xCC, body));
    Bytes read = {static_cast<uint8_t>(0xE0 | e.priority << 3 | e.mainid), e.asvc, e.substream1, e.substream2,
                  e.substream3};
    for (const auto& language : {e.language, e.language_2, e.substream1_lang, e.substream2_lang, e.substream3_lang})
        read.insert(read.end(), language.begin(), language.end());
    EXPECT_EQ(optional, read);
    EXPECT_EQ(Bytes({7, 7, 0x10, 1, 16}), Bytes({e.service_type, e.number_of_channels, e.bsid,
                                                 e.flag_ec3_extension_type_a, e.complexity_index_type_a}));
}

TEST(Descriptors, AClaimBeyondTheLoopIsCutToTheLoop) {
    for (const DescriptorCase& c : CASES) {
        const Bytes whole = ts_descriptor(c.tag, c.body, 255);
        for (size_t size = 1; size <= whole.size(); ++size) {
            StreamDescriptor descriptor;
            uint32_t consumed = 0;
            int status = -1;
            // A block of its own, so that a byte read too far is caught.
            const Bytes cut(whole.begin(), whole.begin() + static_cast<long>(size));
            printed_by([&] { status = parse_descriptor(cut, descriptor, consumed); });
            EXPECT_TRUE(status == 0 || status == 11) << c.name;
            EXPECT_EQ(size, consumed) << c.name;
            EXPECT_EQ(size < 2 ? 0 : size - 2, descriptor.length) << c.name;
        }
    }
}

}  // namespace

}  // namespace quorlin
