#pragma once

#include <array>
#include <cstdint>

#include "bits/file_reader.h"
#include "playlist/segment_job.h"
#include "ts/stream_table.h"

namespace quorlin {

struct TsStreamTiming {
    uint32_t stream_type = 0;
    int64_t first_pts = 0;  // smallest PTS
    int64_t end_pts = 0;    // where the next segment is expected to begin
    uint16_t pid = 0;
};

// When the streams of one segment begin and end, in 90 kHz ticks; NO_PTS for a stream without PES packets.
struct TsSegmentTiming {
    uint64_t audio_count = 0;
    std::array<TsStreamTiming, TS_MAX_AUDIO_STREAMS> streams;
    int64_t video_first_pts = NO_PTS;
    int64_t video_end_pts = 0;
};

// Demultiplexes and checks one transport stream segment. `reader` is started on the segment. The elementary streams go
// to "<output_dir>/<stem><suffix>". `timing` may be null; it is filled only when nothing failed.
// Returns 0, or the ORed statuses of ts_status.h.
[[nodiscard]] int ts_process_segment(FileReader& reader, const SegmentJob& job, TsSegmentTiming* timing);

}  // namespace quorlin
