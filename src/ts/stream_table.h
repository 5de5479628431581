#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "ac4/ac4_toc.h"
#include "ts/timestamp_log.h"
#include "ztpinfo/ztpinfo.h"

namespace quorlin {

constexpr uint32_t TS_MAX_AUDIO_STREAMS = 10;

// One registered audio stream of a segment. Times in 90 kHz ticks, NO_PTS when unset.
struct TsAudioStream {
    uint16_t pid = 0;
    uint8_t stream_type = 0;
    uint32_t audio_pes_count = 0;  // PES packets begun
    uint32_t frames_in_pes = 0;    // audio frames of the last checked PES
    uint32_t frame_ticks = 0;      // duration of one audio frame
    uint32_t channels = 0;         // of the last analysed PES, LFE included; for a recorder, 0 when unknown
    uint32_t data_rate_kbps = 0;   // likewise
    int64_t first_pts = NO_PTS;
    int64_t last_pts = NO_PTS;
    int64_t end_pts = NO_PTS;
    ZtpInfoPtr analyzer;  // opened with the first E-AC-3 payload
    ac4_toc toc;          // of the last AC-4 frame; kept for its arrays
};

// The registered streams of one segment.
struct TsStreamTable {
    std::string path;                                       // of the segment, for the reasons on standard error
    std::array<TsAudioStream, TS_MAX_AUDIO_STREAMS> audio;  // in the order of their registration
    uint32_t audio_count = 0;
    int64_t video_first_pts = NO_PTS;
    int64_t video_last_pts = NO_PTS;
    uint32_t video_pes_count = 0;
};

// The registered audio stream of a PID, null when there is none.
inline TsAudioStream* find_audio_stream(TsStreamTable& table, uint16_t pid) {
    for (uint32_t i = 0; i < table.audio_count; ++i)
        if (table.audio[i].pid == pid) return &table.audio[i];
    return nullptr;
}

}  // namespace quorlin
