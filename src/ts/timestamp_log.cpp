#include "ts/timestamp_log.h"

#include <cinttypes>

#include "bits/stream_clock.h"

namespace quorlin {

namespace {

// The time of the PES packet in decoding order: its DTS, or its PTS when it carries none.
int64_t decoding_time(const PesTimestamps& times) {
    return times.PTS_DTS_flags == PTS_AND_DTS ? times.dts : times.pts;
}

void write_log_line(TimestampLog& log, const PesTimestamps& times, uint32_t payload_offset) {
    if (log.initial_offset == 0) {
        log.initial_offset = log.starts_at_dts ? times.dts : times.pts;
        std::fprintf(log.file, "Initial timestamp offset: %" PRId64 "\n", log.initial_offset);
    }
    const int64_t ticks = times.pts - log.initial_offset;
    const int64_t seconds = ticks / TICKS_PER_SECOND;
    const int64_t hours = seconds / 3600;
    const int64_t minutes = seconds / 60 - 60 * hours;
    std::fprintf(log.file, "%" PRId64 ";%" PRId64 ";0x%08x;%02" PRId64 ":%02" PRId64 ":%02" PRId64 ":%03" PRId64 "\n",
                 times.pts, decoding_time(times), payload_offset, hours, minutes, seconds - 60 * (seconds / 60),
                 (ticks - TICKS_PER_SECOND * seconds) * 1000 / TICKS_PER_SECOND);
}

}  // namespace

void log_timestamps(TimestampLog& log, const PesTimestamps& times, uint32_t payload_offset, int64_t packets_read) {
    const bool has_pts = times.PTS_DTS_flags >= PTS_ONLY;
    if (log.file != nullptr && has_pts) write_log_line(log, times, payload_offset);
    if (log.last_timestamp == 0) {
        // Taken without a comparison, and the DTS even of a packet that carries a PTS alone: deliberate.
        log.last_timestamp = times.dts;
    } else if (has_pts) {
        if (log.last_timestamp < decoding_time(times))
            log.last_timestamp = decoding_time(times);
        else if (log.file != nullptr)
            std::fprintf(log.file, "Warning: regression timestamp was found at packet %" PRId64 "\n", packets_read);
    }
}

}  // namespace quorlin
