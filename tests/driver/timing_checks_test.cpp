#include "driver/timing_checks.h"

#include <gtest/gtest.h>

#include "support/golden.h"

namespace quorlin {

namespace {

TsSegmentTiming timing(uint32_t stream_type, int64_t first_pts, int64_t end_pts, int64_t video_first,
                       int64_t video_end) {
    TsSegmentTiming result;
    result.audio_count = 1;
    result.streams[0] = {stream_type, first_pts, end_pts};
    result.video_first_pts = video_first;
    result.video_end_pts = video_end;
    return result;
}

}  // namespace

TEST(TimingChecks, OffsetsBetweenAudioAndVideo) {
    constexpr int64_t HUGE_PTS = (int64_t{1} << 33) - 1;
    struct Case {
        const char* name;
        TsSegmentTiming current;
        TsSegmentTiming previous;
    };
    const TsSegmentTiming level = timing(0x87, 0, 90000, 0, 90000);
    const Case cases[] = {
        {"in step", timing(0x87, 90000, 0, 90000, 0), level},
        {"audio before video", timing(0x87, 89999, 0, 90000, 0), level},
        {"2879 ticks late", timing(0x87, 92879, 0, 90000, 0), timing(0x87, 0, 92879, 0, 90000)},
        {"2880 ticks late", timing(0x87, 92880, 0, 90000, 0), timing(0x87, 0, 92880, 0, 90000)},
        {"offset grew by one tick", timing(0x87, 90001, 0, 90000, 0), level},
        {"offset grew by two ticks", timing(0x87, 90002, 0, 90000, 0), level},
        {"offset shrank", timing(0x87, 90000, 0, 90000, 0), timing(0x87, 0, 92000, 0, 90000)},
        {"far too late and grown", timing(0x87, 99000, 0, 90000, 0), level},
        {"another stream type before", timing(0x87, 90100, 0, 90000, 0), timing(0x81, 0, 90000, 0, 90000)},
        {"not E-AC-3", timing(0x81, 0, 0, 90000, 0), level},
        {"33 bits", timing(0x87, HUGE_PTS, 0, HUGE_PTS - 5, 0), timing(0x87, 0, 10, 0, 5)},
    };
    std::string printed;
    for (const Case& c : cases)
        for (TimingCaller caller : {TimingCaller::TEMPLATE, TimingCaller::PLAYLIST})
            printed += transcript_entry(c.name, [&] { return check_segment_timing(c.current, c.previous, caller); });
    printed += transcript_checksums("any times", 640, [](std::mt19937& random) {
        TsSegmentTiming segments[2];
        for (TsSegmentTiming& segment : segments) {
            segment.audio_count = random() % 4;
            segment.video_first_pts = 90000 + random() % 4;
            segment.video_end_pts = 90000 + random() % 4;
            for (TsStreamTiming& stream : segment.streams) {
                stream.stream_type = random() % 4 == 0 ? 0x81 : 0x87;
                stream.first_pts = 90000 + random() % (stream.stream_type == 0x87 ? 4 : 4000);
                stream.first_pts += random() % 4 == 0 ? 2877 : 0;
                stream.end_pts = 90000 + random() % 4;
                stream.pid = static_cast<uint16_t>(random() % 0x2000);
            }
        }
        return transcript_entry("",
                                [&] { return check_segment_timing(segments[0], segments[1], TimingCaller::PLAYLIST); });
    });
    expect_golden("golden/timing_checks.txt", printed);
}

}  // namespace quorlin
