#include "driver/timing_checks.h"

#include <cinttypes>

#include "bits/finding.h"
#include "bits/place.h"
#include "bits/stream_clock.h"
#include "ts/program.h"

namespace quorlin {

namespace {

// Differences wrap instead of overflowing: the times come from the input.
int64_t difference(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

int check_stream_timing(const TsStreamTiming& audio, const TsStreamTiming& previous_audio,
                        const TsSegmentTiming& current, const TsSegmentTiming& previous, TimingCaller caller) {
    const int64_t video = current.video_first_pts;
    if (audio.first_pts < video)
        return fail(
            -1, "ts-av-audio-before-video",
            caller == TimingCaller::TEMPLATE
                ? "ERROR: The smallest Zentra Plus audio PTS of a segment must be greater than or equal to the smallest "
                  "video PTS of the segment\n (audio: %" PRId64 "; video: %" PRId64 ")\n"
                : "ERROR: The smallest Zentra Plus audio PTS of a segment must be greater than or equal to the smallest "
                  "video PTS of the segment\n (audio: %" PRId64 "; video: %" PRId64 ")",
            audio.first_pts, video);
    int status = 0;
    const int64_t offset = difference(audio.first_pts, video);
    if (offset >= int64_t{EAC3_FRAMESET_TICKS})
        status |= fail(
            -1, "ts-av-offset-limit",
            "ERROR: The offset between the smallest audio PTS of a segment and the smallest video PTS is more than "
            "2,879 ticks (audio [%" PRId64 "], video [%" PRId64 "], difference is [%" PRId64 "]).\n",
            audio.first_pts, video, offset);
    if (previous_audio.stream_type != audio.stream_type) return status;
    // 32-bit arithmetic, and only growth by more than one tick counts: both are deliberate.
    const int64_t previous_offset = difference(previous_audio.end_pts, previous.video_end_pts);
    if (static_cast<int32_t>(static_cast<uint32_t>(offset) - static_cast<uint32_t>(previous_offset)) > 1)
        status |= fail(
            -1, "ts-av-offset-change",
            caller == TimingCaller::TEMPLATE
                ? "ERROR: The A/V PTS offset (the time offset between the Audio_In time and Video_In time of the same "
                  "segment) of the current segment must be identical to the A/V PTS offset of the previous segment. \n"
                : "ERROR: The A/V PTS offset (the time offset between the Audio_In time and Video_In time of the same "
                  "segment) of the current segment must be identical to the A/V PTS offset of the previous segment.\n");
    return status;
}

}  // namespace

int check_segment_timing(const TsSegmentTiming& current, const TsSegmentTiming& previous, TimingCaller caller) {
    int status = 0;
    for (uint64_t i = 0; i < current.audio_count; ++i) {
        if (current.streams[i].stream_type != STREAM_TYPE_ATSC_EAC3) continue;
        const PlaceScope scope;
        current_place.stream = current.streams[i].pid;
        if (current.streams[i].first_pts >= 0) current_place.time = advance_stream_clock(current.streams[i].first_pts);
        status |= check_stream_timing(current.streams[i], previous.streams[i], current, previous, caller);
    }
    return status;
}

}  // namespace quorlin
