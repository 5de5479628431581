#pragma once

#include <cstdint>

#include "support/syncframe_writer.h"
#include "support/ts_writer.h"

namespace quorlin {

// Transport stream content with the shape of the real: H.264 pictures at 8 Mbit/s and 25 per second, E-AC-3 5.1 at 384
// kbit/s with one syncframe (32 ms) a PES packet, program tables in front of every picture.
struct TsContent {
    static constexpr uint16_t VIDEO_PID = 0x100;
    static constexpr uint16_t AUDIO_PID = 0x101;
    static constexpr uint16_t PMT_PID = 0x1000;
    static constexpr uint32_t PICTURE_BYTES = 40000;
    static constexpr uint64_t PICTURE_90KHZ = 3600;
    static constexpr uint64_t AUDIO_90KHZ = 2880;

    // Parameter sets (320x180, baseline) and the header of an intra slice: enough for a reader that looks for the
    // format.
    static inline const std::vector<uint8_t> PICTURE_START = {
        0x00, 0x00, 0x00, 0x01, 0x67, 0x42, 0xC0, 0x1E, 0xD9, 0x01, 0x41, 0x9F, 0x9E, 0x10, 0x00,
        0x00, 0x03, 0x00, 0x10, 0x00, 0x00, 0x03, 0x03, 0x20, 0xF1, 0x62, 0xE4, 0x80, 0x00, 0x00,
        0x00, 0x01, 0x68, 0xCB, 0x83, 0xCB, 0x20, 0x00, 0x00, 0x00, 0x01, 0x65, 0x88, 0x84};

    uint64_t video_pts = 90000;
    uint64_t audio_pts = 90000;
    uint32_t noise = 1;
    std::vector<uint8_t> audio_frame = syncframes("I0:words=768");

    // Appends one picture and the audio that goes with it.
    void append_picture(TsWriter& writer) {
        writer.pat({{1, PMT_PID}});
        PmtSpec pmt;
        pmt.PCR_PID = VIDEO_PID;
        pmt.streams = {{0x1B, VIDEO_PID}, {0x87, AUDIO_PID, ts_descriptor(0xCC, {0x80, 0x44, 0x00})}};
        writer.pmt(pmt, PMT_PID);

        PesSpec video;
        video.stream_id = 0xE0;
        video.pts = video_pts;
        video.PES_packet_length = 0;
        video.payload = PICTURE_START;
        // No zero byte, so no start code inside the slice.
        while (video.payload.size() < PICTURE_BYTES)
            video.payload.push_back(static_cast<uint8_t>((noise = noise * 1664525 + 1013904223) >> 24 | 1));
        writer.pes(VIDEO_PID, video);
        video_pts += PICTURE_90KHZ;

        for (; audio_pts < video_pts; audio_pts += AUDIO_90KHZ) {
            PesSpec audio;
            audio.pts = audio_pts;
            audio.payload = audio_frame;
            writer.pes(AUDIO_PID, audio);
        }
    }
};

}  // namespace quorlin
