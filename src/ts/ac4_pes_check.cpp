#include <algorithm>
#include <cstddef>
#include <string>

#include "ac4/ac4_sync_frame.h"
#include "bits/byte_order.h"
#include "bits/finding.h"
#include "bits/report.h"
#include "playlist/codecs.h"
#include "ts/pes_checks.h"
#include "ts/ts_status.h"

namespace quorlin {

namespace {

// The part of the frame that is there; `usable` is the payload without a CRC word at its end.
std::span<const uint8_t> frame_bytes(std::span<const uint8_t> usable, size_t position, uint32_t frame_size) {
    const std::span<const uint8_t> rest = usable.subspan(std::min(position, usable.size()));
    return rest.first(std::min<size_t>(frame_size, rest.size()));
}

bool starts_segment(const TsStreamTable& table) {
    const auto end = table.audio.begin() + table.audio_count;
    // Any stream counts, not only the frame's own: deliberate.
    return std::any_of(table.audio.begin(), end, [](const TsAudioStream& s) { return s.audio_pes_count == 1; });
}

int check_sync_word(std::span<const uint8_t> payload) {
    const uint16_t sync_word = load_be16(payload, 0);
    if (sync_word >> 8 != AC4_SYNC_WORD >> 8) {
        return fail(TS_CHECK_FAILED, "ts-ac4-no-sync-word",
                    "ERROR: No AC-4 sync word found in the elementary stream.\n");
    }
    if (sync_word != AC4_SYNC_WORD && sync_word != AC4_SYNC_WORD_WITH_CRC) {
        return fail(TS_CHECK_FAILED, "ts-ac4-sync-word",
                    "ERROR: An unsupported CRC word found in the elementary stream.\n");
    }
    return 0;
}

int check_toc(const ac4_toc& toc, bool first_frame, const TsStreamTable& table, const PlaylistAttributes* attrs) {
    if (attrs != nullptr && !codecs_contain(attrs->codecs, ac4_toc_codec_string(toc))) {
        return fail(
            TS_CHECK_FAILED, "ac4-codecs-mismatch",
            "ERROR: Mismatch in the codecs attribute value between the Representation 0 element in the toc and the CODECS string in the master manifest.\n");
    }
    if (first_frame && toc.b_iframe_global == 0 && starts_segment(table)) {
        return fail(TS_CHECK_FAILED, "ts-ac4-first-frame-no-i-frame",
                    "ERROR: The first AC-4 sample in each segment is not an I-frame.\n");
    }
    return 0;
}

}  // namespace

int check_ac4_pes(const PesCheckInput& pes, const TsStreamTable& table, const PlaylistAttributes* attrs) {
    TsAudioStream& stream = pes.stream;
    if (check_sync_word(pes.payload) != 0) return TS_CHECK_FAILED;
    const bool has_crc = load_be16(pes.payload, 0) == AC4_SYNC_WORD_WITH_CRC;
    const auto usable = pes.payload.first(pes.payload.size() - (has_crc ? AC4_CRC_WORD_BYTES : 0));
    size_t position = AC4_SYNC_WORD_BYTES;
    for (uint32_t frame_count = 1;; ++frame_count) {
        const uint32_t frame_size = read_ac4_frame_size(pes.payload, position);
        if (frame_size == 0) {
            report_reason(ReasonEffect::FAILS, "reason-ts-ac4-frame-size", table.path,
                          "PID %u: AC-4 frame %u of a PES has the size 0", stream.pid, frame_count);
            return TS_UNREADABLE_FRAME;
        }
        // A frame that the payload cuts is told from its size, after the checks of what is there.
        if (ac4_toc_parse_head(frame_bytes(usable, position, frame_size), stream.toc) != 0) {
            report_reason(ReasonEffect::FAILS, "reason-ts-ac4-toc", table.path,
                          "PID %u: AC-4 frame %u of a PES has an unreadable table of contents", stream.pid,
                          frame_count);
            return TS_UNREADABLE_FRAME;
        }
        if (check_toc(stream.toc, frame_count == 1, table, attrs) != 0) return TS_CHECK_FAILED;
        position += frame_size;
        if (position + AC4_SYNC_WORD_BYTES < usable.size()) {
            // The sync word between two frames is skipped without a look, and no room is left for a CRC: deliberate.
            position += AC4_SYNC_WORD_BYTES;
        } else if (position <= usable.size()) {
            stream.frames_in_pes = frame_count;
            return 0;
        } else {
            return fail(TS_CHECK_FAILED, "ts-ac4-frame-spans-pes",
                        "ERROR: An AC-4 frame must not span multiple PES packet payloads.\n");
        }
    }
}

}  // namespace quorlin
