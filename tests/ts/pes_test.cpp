#include "ts/pes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/golden.h"
#include "support/ts_writer.h"

namespace {

struct Stamp {
    std::optional<uint64_t> pts;
    std::optional<uint64_t> dts;
};

// What the log of a stream holds after PES packets with these time stamps, one transport packet each.
std::string log_of(PesKind kind, const std::vector<Stamp>& stamps) {
    char* text = nullptr;
    size_t size = 0;
    File log(open_memstream(&text, &size));
    PesStream stream;
    stream.kind = kind;
    stream.timestamp_log = log.get();
    TsStreamTable table;
    table.audio_count = 1;
    int64_t packets_read = 0;
    for (const Stamp& stamp : stamps) {
        PesSpec spec;
        spec.stream_id = 0xC0;
        spec.pts = stamp.pts;
        spec.dts = stamp.dts;
        spec.payload = Bytes(100, 0x11);
        int status = 0;
        EXPECT_EQ(start_pes(stream, pes_packet(spec), {}, ++packets_read, status), PesState::COMPLETE);
        EXPECT_EQ(flush_pes(stream, table), 0);
    }
    log.reset();
    const std::string result(text, size);
    std::free(text);
    return result;
}

}  // namespace

TEST(Pes, TimestampLog) {
    EXPECT_EQ(log_of(PesKind::VIDEO, {{90000, 87000}, {{}, {}}, {180000, 90000}, {165000, {}}, {165000, {}}}),
              "Initial timestamp offset: 87000\n"
              "90000;87000;0x00000000;00:00:00:033\n"
              "180000;90000;0x000000c8;00:00:01:033\n"
              "165000;165000;0x0000012c;00:00:00:866\n"
              "165000;165000;0x00000190;00:00:00:866\n"
              "Warning: regression timestamp was found at packet 5\n");
    // The first time stamp compared is the second: the DTS that is kept first is 0 without one, and 0 is unset.
    EXPECT_EQ(log_of(PesKind::AUDIO, {{4000, {}}, {3000, {}}, {330000000, {}}}),
              "Initial timestamp offset: 4000\n"
              "4000;4000;0x00000000;00:00:00:000\n"
              "3000;3000;0x00000064;00:00:00:-11\n"
              "330000000;330000000;0x000000c8;01:01:06:622\n");
}

TEST(Pes, TimesOf33BitsAreComparedOnlyAbove32) {
    struct Case {
        Stamp stamp;
        const char* printed;
    };
    const Case cases[] = {
        {{100, 200}, ""},
        {{0xFFFFFFFF, 0x1FFFFFFFF}, ""},
        {{0x100000000, 0x100000000}, ""},
        {{0x100000000, 0x100000001}, "ERROR: PTS 4294967296 is smaller than DTS 4294967297 in PES.\n"},
        {{0x100000000, {}}, ""},
    };
    for (const Case& c : cases) {
        PesStream stream;
        PesSpec spec;
        spec.pts = c.stamp.pts;
        spec.dts = c.stamp.dts;
        int status = 0;
        EXPECT_EQ(printed_by([&] { (void)start_pes(stream, pes_packet(spec), {}, 1, status); }), c.printed);
        EXPECT_EQ(status, c.printed[0] == '\0' ? 0 : 11);
        EXPECT_EQ(stream.pts, static_cast<int64_t>(*c.stamp.pts));
    }
}
