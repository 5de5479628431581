#include "ts/pes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/golden.h"
#include "support/ts_writer.h"

namespace quorlin {

namespace {

struct Stamp {
    std::optional<uint64_t> pts = {};
    std::optional<uint64_t> dts = {};
};

// The findings and the log of a stream with these time stamps, one transport packet a PES packet.
std::string log_of(bool is_video, const std::vector<Stamp>& stamps) {
    char* log_text = nullptr;
    size_t size = 0;
    File log(open_memstream(&log_text, &size));
    TsAudioStream audio;
    const ListedStream listed;
    PesStream stream;
    stream.listed = &listed;
    stream.audio = is_video ? nullptr : &audio;
    stream.log = {.file = log.get(), .starts_at_dts = is_video};
    TsStreamTable table;
    int64_t packets_read = 0;
    std::string text;
    for (const Stamp& stamp : stamps) {
        const Bytes packet = pes_packet({.stream_id = 0xC0, .pts = stamp.pts, .dts = stamp.dts, .payload = Bytes(100)});
        int status = 0;
        start_pes(stream);
        text += printed_by([&] { EXPECT_EQ(collect_pes(stream, packet, ++packets_read, status), PesState::COMPLETE); });
        text += "PTS " + std::to_string(stream.times.pts) + ": " + std::to_string(status) + "\n";
        EXPECT_EQ(flush_pes(stream, table), 0);
    }
    log.reset();
    text.append(log_text, size);
    std::free(log_text);
    return text;
}

}  // namespace

TEST(Pes, TimestampLog) {
    constexpr uint64_t BIT_32 = 0x100000000;
    // The first time stamp compared is the second: the DTS that is kept first is 0 without one, and 0 is unset.
    expect_golden(
        "golden/timestamp_log.txt",
        "== video\n" + log_of(true, {{90000, 87000}, {}, {180000, 90000}, {165000}, {165000}}) + "== audio\n" +
            log_of(false, {{4000}, {3000}, {330000000}}) + "== times of 33 bits are compared only above 32\n" +
            log_of(false,
                   {{100, 200}, {BIT_32 - 1, 2 * BIT_32 - 1}, {BIT_32, BIT_32}, {BIT_32, BIT_32 + 1}, {BIT_32}}));
}

}  // namespace quorlin
