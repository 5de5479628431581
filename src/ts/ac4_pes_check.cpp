#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>

#include "bits/byte_order.h"
#include "bits/report.h"
#include "ts/pes_checks.h"
#include "ts/ts_status.h"

namespace {

constexpr uint8_t SYNC_BYTE = 0xAC;
constexpr uint8_t SYNC_WITHOUT_CRC = 0x40;
constexpr uint8_t SYNC_WITH_CRC = 0x41;
constexpr size_t SYNC_WORD_BYTES = 2;
constexpr size_t CRC_WORD_BYTES = 2;

// ETSI TS 103 190-2, annex C: frame_size, 16 bits or 24 behind an escape; `position` moves behind it.
uint32_t read_frame_size(std::span<const uint8_t> payload, size_t& position) {
    constexpr uint32_t LARGE_FRAME = 0xFFFF;
    const uint32_t frame_size = load_be16(payload, position);
    position += 2;
    if (frame_size != LARGE_FRAME) return frame_size;
    position += 3;
    return static_cast<uint32_t>(load_be(payload, position - 3, 3));
}

// The part of the frame that is there.
std::span<const uint8_t> frame_bytes(std::span<const uint8_t> payload, size_t position, uint32_t frame_size) {
    const std::span<const uint8_t> rest = payload.subspan(std::min(position, payload.size()));
    return rest.first(std::min<size_t>(frame_size, rest.size()));
}

bool starts_segment(const TsStreamTable& table) {
    const auto end = table.audio.begin() + table.audio_count;
    // Any stream counts, not only the frame's own: deliberate.
    return std::any_of(table.audio.begin(), end, [](const TsAudioStream& s) { return s.audio_pes_count == 1; });
}

int check_sync_word(std::span<const uint8_t> payload) {
    if (load_u8(payload, 0) != SYNC_BYTE) {
        std::printf("ERROR: No AC-4 sync word found in the elementary stream.\n");
        return TS_CHECK_FAILED;
    }
    const uint8_t crc_byte = load_u8(payload, 1);
    if (crc_byte != SYNC_WITHOUT_CRC && crc_byte != SYNC_WITH_CRC) {
        std::printf("ERROR: An unsupported CRC word found in the elementary stream.\n");
        return TS_CHECK_FAILED;
    }
    return 0;
}

int check_toc(const ac4_toc& toc, bool first_frame, const TsStreamTable& table, const PlaylistAttributes* attrs) {
    if (attrs != nullptr && attrs->codecs.find(ac4_toc_codec_string(toc)) == std::string::npos) {
        std::printf(
            "ERROR: Mismatch in the codecs attribute value between the Representation 0 element in the toc and the CODECS string in the master manifest.\n");
        return TS_CHECK_FAILED;
    }
    if (first_frame && toc.b_iframe_global == 0 && starts_segment(table)) {
        std::printf("ERROR: The first AC-4 sample in each segment is not an I-frame.\n");
        return TS_CHECK_FAILED;
    }
    return 0;
}

}  // namespace

int check_ac4_pes(const PesCheckInput& pes, TsAudioStream& stream, const TsStreamTable& table,
                  const PlaylistAttributes* attrs) {
    if (check_sync_word(pes.payload) != 0) return TS_CHECK_FAILED;
    const bool has_crc = pes.payload[1] == SYNC_WITH_CRC;
    const size_t usable = pes.payload.size() - (has_crc ? CRC_WORD_BYTES : 0);
    size_t position = SYNC_WORD_BYTES;
    for (uint32_t frame_count = 1;; ++frame_count) {
        const uint32_t frame_size = read_frame_size(pes.payload, position);
        if (frame_size == 0) {
            report_reason(table.path, "PID %d: AC-4 frame %u of a PES has the size 0", pes.pid, frame_count);
            return TS_UNREADABLE_FRAME;
        }
        uint32_t toc_position = 0;
        if (ac4_toc_parse(frame_bytes(pes.payload, position, frame_size), toc_position, stream.toc) != 0) {
            report_reason(table.path, "PID %d: AC-4 frame %u of a PES has an unreadable table of contents", pes.pid,
                          frame_count);
            return TS_UNREADABLE_FRAME;
        }
        if (check_toc(stream.toc, frame_count == 1, table, attrs) != 0) return TS_CHECK_FAILED;
        position += frame_size;
        if (position + SYNC_WORD_BYTES < usable) {
            // The sync word between two frames is skipped without a look, and no room is left for a CRC: deliberate.
            position += SYNC_WORD_BYTES;
        } else if (position <= usable) {
            stream.frames_in_pes = frame_count;
            return 0;
        } else {
            std::printf("ERROR: An AC-4 frame must not span multiple PES packet payloads.\n");
            return TS_CHECK_FAILED;
        }
    }
}
