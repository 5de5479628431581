#include "packed/ac4_frames.h"

#include <algorithm>
#include <cinttypes>
#include <span>
#include <vector>

#include "ac4/ac4_sync_frame.h"
#include "ac4/ac4_toc.h"
#include "bits/byte_order.h"
#include "bits/facts.h"
#include "bits/finding.h"
#include "bits/place.h"
#include "bits/report.h"
#include "bits/stream_clock.h"
#include "playlist/codecs.h"

namespace quorlin {

namespace {

constexpr uint32_t AC4_MAX_FRAME_SIZE = 10485760;
constexpr uint32_t READ_PIECE_SIZE = 65536;

// ETSI TS 103 190-2, annex C: sync word, frame size and raw frame, as far as the file holds them.
struct SyncFrame {
    std::vector<uint8_t> bytes;
    size_t header_size = 0;
    uint32_t frame_size = 0;  // of the raw frame, as the header says
    uint64_t offset = 0;      // in the file
};

// Appends up to `count` bytes; memory grows with what is there, not with what the header claims.
void append_bytes(FileReader& reader, uint32_t count, std::vector<uint8_t>& bytes) {
    while (count > 0) {
        const uint32_t piece = std::min(count, READ_PIECE_SIZE);
        const size_t size = bytes.size();
        bytes.resize(size + piece);
        const uint32_t delivered = reader_read(bytes.data() + size, piece, reader);
        bytes.resize(size + delivered);
        if (delivered < piece) return;
        count -= piece;
    }
}

void report_lost_sync(const SyncFrame& frame, const std::string& path) {
    if (load_be16(frame.bytes, 0) == AC4_SYNC_WORD_WITH_CRC)
        report_reason(ReasonEffect::UNVALIDATED, "reason-packed-ac4-crc", path,
                      "an AC-4 frame with a CRC (sync word 0xAC41) at byte %" PRIu64
                      ": it and the rest are not looked at",
                      frame.offset);
    else
        report_reason(ReasonEffect::UNVALIDATED, "reason-packed-ac4-sync", path,
                      "no AC-4 sync word 0xAC40 at byte %" PRIu64 ": the rest is not looked at", frame.offset);
}

// False at the end of the file and where the frames end.
bool read_frame_header(FileReader& reader, SyncFrame& frame) {
    frame.bytes.clear();
    frame.offset = reader.position;
    current_place.offset = static_cast<int64_t>(frame.offset);
    append_bytes(reader, AC4_SYNC_WORD_BYTES, frame.bytes);
    if (frame.bytes.empty()) return false;
    if (frame.bytes.size() < 2 || load_be16(frame.bytes, 0) != AC4_SYNC_WORD) {
        report_lost_sync(frame, reader.path);
        return false;
    }
    append_bytes(reader, AC4_SHORT_SIZE_BYTES, frame.bytes);
    frame.header_size = AC4_SYNC_WORD_BYTES;
    frame.frame_size = read_ac4_frame_size(frame.bytes, frame.header_size);
    if (frame.header_size == AC4_SYNC_WORD_BYTES + AC4_SHORT_SIZE_BYTES) return true;
    // The escape: the size is read again with the bytes that it announces.
    append_bytes(reader, AC4_LONG_SIZE_BYTES, frame.bytes);
    frame.header_size = AC4_SYNC_WORD_BYTES;
    frame.frame_size = read_ac4_frame_size(frame.bytes, frame.header_size);
    return true;
}

int report_unreadable_toc() {
    return fail(-1, "packed-ac4-toc", "ERROR: Error occurs when parsing the payload data.\n");
}

int refuse_size(const SyncFrame& frame, const std::string& path) {
    const int status = report_unreadable_toc();
    report_reason(ReasonEffect::UNVALIDATED, "reason-packed-ac4-size", path,
                  "the AC-4 frame at byte %" PRIu64 " has %" PRIu32 " bytes, more than %" PRIu32
                  ": it and the rest are not looked at",
                  frame.offset, frame.frame_size, AC4_MAX_FRAME_SIZE);
    return status;
}

void remark_cut(const SyncFrame& frame, const std::string& path) {
    const size_t whole = frame.header_size + frame.frame_size;
    if (frame.bytes.size() < whole)
        report_reason(ReasonEffect::REMARK, "reason-packed-ac4-cut", path,
                      "the AC-4 frame at byte %" PRIu64 " is cut: %zu of its %zu bytes are there", frame.offset,
                      frame.bytes.size(), whole);
}

// ETSI TS 103 190-2, 4.3.3.2.6: ticks of the 90 kHz clock from one frame to the next; 0 where the standard has none.
double frame_duration(const ac4_toc& toc) {
    constexpr double DURATIONS_48000[16] = {3753.75, 3750, 3600, 3003,   3000, 1876.875, 1875, 1800,
                                            1501.5,  1500, 900,  750.75, 750,  3840,     0,    0};
    constexpr uint8_t NATIVE_RATE_INDEX = 13;  // 2048 samples, whatever the sample rate
    if (toc.fs_index == 0) return toc.frame_rate_index == NATIVE_RATE_INDEX ? 2048.0 * TICKS_PER_SECOND / 44100 : 0;
    return DURATIONS_48000[toc.frame_rate_index & 15];
}

int check_frame(const SyncFrame& frame, bool is_first, const PlaylistAttributes* attrs, ac4_toc& toc) {
    const size_t header_size = std::min(frame.header_size, frame.bytes.size());
    const std::span<const uint8_t> raw_frame = std::span(frame.bytes).subspan(header_size);
    uint32_t position = 0;
    if (raw_frame.empty() || ac4_toc_parse(raw_frame, position, toc) != 0) return report_unreadable_toc();
    int status = 0;
    if (attrs == nullptr || !codecs_contain(attrs->codecs, ac4_toc_codec_string(toc)))
        status |= fail(
            -1, "ac4-codecs-mismatch",
            "ERROR: Mismatch in the codecs attribute value between the Representation 0 element in the toc and the CODECS string in the master manifest.\n");
    if (is_first && toc.b_iframe_global == 0)
        status |= fail(-1, "packed-ac4-i-frame", "ERROR: The first AC-4 sample in each segment must be an I-frame.\n");
    return status;
}

}  // namespace

int check_ac4_frames(OutputFile& output, FileReader& reader, const PlaylistAttributes* attrs) {
    const int64_t start_time = current_place.time;
    StreamFacts facts = {.codec = "ac-4", .first_time = start_time};
    double played = 0;  // 90 kHz ticks
    SyncFrame frame;
    ac4_toc toc;
    int status = 0;
    for (bool is_first = true; read_frame_header(reader, frame); is_first = false) {
        if (frame.frame_size > AC4_MAX_FRAME_SIZE) {
            status |= refuse_size(frame, reader.path);
            break;
        }
        append_bytes(reader, frame.frame_size, frame.bytes);
        status |= check_frame(frame, is_first, attrs, toc);
        remark_cut(frame, reader.path);
        status |= elementary_stream_write(output, frame.bytes);
        facts.last_time = current_place.time;
        facts.payload_bytes += frame.bytes.size();
        ++facts.units;
        played += frame_duration(toc);
        current_place.time = start_time + static_cast<int64_t>(played);
    }
    facts.end_time = current_place.time;
    record_stream(facts);
    return status;
}

}  // namespace quorlin
