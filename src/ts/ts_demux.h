#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "playlist/segment_job.h"
#include "ts/pes.h"
#include "ts/psi.h"
#include "ts/stream_table.h"

namespace quorlin {

constexpr size_t TS_VIDEO_SLOT = TS_MAX_AUDIO_STREAMS;
constexpr size_t TS_SLOT_COUNT = TS_MAX_AUDIO_STREAMS + 1;
constexpr uint8_t TS_NO_SLOT = 0xFF;

enum class PidKind : uint8_t { OTHER, PES, PAT, PMT, NETWORK };

// What a PID is: one look-up per packet. The slot is kept while a program table has the PID.
struct PidRoute {
    PidKind kind = PidKind::OTHER;
    uint8_t slot = TS_NO_SLOT;
    bool reported = false;     // not followed, and that has been said
    uint32_t early_units = 0;  // unit starts before the table that lists the PID
};

// The state of one segment.
struct TsDemuxContext {
    explicit TsDemuxContext(const SegmentJob& segment_job) : job(segment_job) {}

    const SegmentJob& job;

    int64_t packets_read = 0;
    std::array<PidRoute, TS_PID_COUNT> routes;
    PsiTables psi;
    TsStreamTable stream_table;
    std::array<PesStream, TS_SLOT_COUNT> pes;  // the audio streams as they are registered, then the video stream
    std::optional<uint16_t> video_pid;
};

// The registered streams, audio first.
template <class Use>
void for_each_stream(TsDemuxContext& context, Use use) {
    for (size_t slot = 0; slot < context.stream_table.audio_count; ++slot) use(context.pes[slot]);
    if (context.video_pid) use(context.pes[TS_VIDEO_SLOT]);
}

}  // namespace quorlin
