#include "ts/timestamp_log.h"

#include <cinttypes>
#include <cstdio>

#include "ts/pes.h"

namespace {

// The time of the PES packet in decoding order: its DTS, or its PTS when it carries none.
int64_t decoding_time(const PesStream& stream) {
    return stream.PTS_DTS_flags == PTS_AND_DTS ? stream.dts : stream.pts;
}

void write_log_line(PesStream& stream) {
    if (stream.initial_offset == 0) {
        stream.initial_offset = stream.audio == nullptr ? stream.dts : stream.pts;
        std::fprintf(stream.timestamp_log, "Initial timestamp offset: %" PRId64 "\n", stream.initial_offset);
    }
    const int64_t ticks = stream.pts - stream.initial_offset;
    const int64_t seconds = ticks / 90000;
    const int64_t hours = seconds / 3600;
    const int64_t minutes = seconds / 60 - 60 * hours;
    std::fprintf(stream.timestamp_log,
                 "%" PRId64 ";%" PRId64 ";0x%08x;%02" PRId64 ":%02" PRId64 ":%02" PRId64 ":%03" PRId64 "\n", stream.pts,
                 decoding_time(stream), stream.bytes_total, hours, minutes, seconds - 60 * (seconds / 60),
                 (ticks - 90000 * seconds) * 1000 / 90000);
}

}  // namespace

void log_timestamp(PesStream& stream, int64_t packets_read) {
    const bool has_pts = stream.PTS_DTS_flags >= PTS_ONLY;
    if (stream.timestamp_log != nullptr && has_pts) write_log_line(stream);
    if (stream.last_timestamp == 0) {
        // Taken without a comparison, and the DTS even of a packet that carries a PTS alone: deliberate.
        stream.last_timestamp = stream.dts;
    } else if (has_pts) {
        if (stream.last_timestamp < decoding_time(stream))
            stream.last_timestamp = decoding_time(stream);
        else if (stream.timestamp_log != nullptr)
            std::fprintf(stream.timestamp_log, "Warning: regression timestamp was found at packet %" PRId64 "\n",
                         packets_read);
    }
}
