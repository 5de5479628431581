#include "packed/packed_audio.h"

#include <array>
#include <cinttypes>
#include <span>

#include "ac4/ac4_sync_frame.h"
#include "bits/byte_order.h"
#include "bits/facts.h"
#include "bits/finding.h"
#include "bits/output_file.h"
#include "bits/place.h"
#include "bits/report.h"
#include "bits/stream_clock.h"
#include "packed/ac4_frames.h"
#include "packed/ec3_timeslices.h"
#include "packed/id3_timestamp.h"
#include "playlist/codecs.h"
#include "ztpinfo/syncframe.h"

namespace quorlin {

namespace {

enum class PackedFormat {
    NONE,      // not recognised
    AC3,       // syncframes with bsid up to 8
    EC3,       // syncframes with bsid 11 to 16
    AC3_LIKE,  // syncframes with any other bsid
    AC4,       // sync frames, ETSI TS 103 190-2, annex C
    AAC,       // ADTS
};

// ISO/IEC 14496-3, ADTS: the first 16 bits of a frame of MPEG-4 without a CRC, and of frames of any kind without the
// bits that tell these.
constexpr uint16_t ADTS_SYNC_WORD = 0xFFF1;
constexpr uint16_t ADTS_ANY_MASK = 0xFFF6;
constexpr uint16_t ADTS_ANY = 0xFFF0;

constexpr uint16_t MPEG_AUDIO_MASK = 0xFFE0;  // the sync word of layers I to III, ISO/IEC 11172-3

// The sixth byte of a syncframe holds bsid in its upper five bits.
constexpr size_t SYNCFRAME_BSID_OFFSET = 5;
constexpr uint32_t FORMAT_HEAD_SIZE = SYNCFRAME_BSID_OFFSET + 1;

PackedFormat syncframe_format(uint32_t bsid) {
    if (is_ac3_bsid(bsid)) return PackedFormat::AC3;
    if (is_eac3_bsid(bsid)) return PackedFormat::EC3;
    return PackedFormat::AC3_LIKE;
}

PackedFormat recognise(std::span<const uint8_t> head) {
    if (head.size() < 2) return PackedFormat::NONE;
    const uint16_t sync_word = load_be16(head, 0);
    if (sync_word == FRAME_SYNCWORD && head.size() == FORMAT_HEAD_SIZE)
        return syncframe_format(head[SYNCFRAME_BSID_OFFSET] >> 3);
    if (sync_word == AC4_SYNC_WORD || sync_word == AC4_SYNC_WORD_WITH_CRC) return PackedFormat::AC4;
    if (sync_word == ADTS_SYNC_WORD) return PackedFormat::AAC;
    return PackedFormat::NONE;
}

// With what stands where the payload should begin, as far as that helps.
void report_unknown_format(std::span<const uint8_t> head, const std::string& path, uint64_t position) {
    constexpr ReasonEffect EFFECT = ReasonEffect::UNVALIDATED;
    const uint16_t start = load_be16(head, 0);
    if (head.empty())
        report_reason(EFFECT, "reason-packed-format-empty", path,
                      "no packed audio format recognised at byte %" PRIu64
                      ", where the segment ends: nothing is checked",
                      position);
    else if (start == FRAME_SYNCWORD)
        report_reason(EFFECT, "reason-packed-format-cut", path,
                      "no packed audio format recognised at byte %" PRIu64
                      ", a syncframe of fewer than 6 bytes: nothing is checked",
                      position);
    else if ((start & ADTS_ANY_MASK) == ADTS_ANY)
        report_reason(EFFECT, "reason-packed-format-adts", path,
                      "no packed audio format recognised at byte %" PRIu64
                      ", AAC in ADTS frames of MPEG-2 or with a CRC: nothing is checked",
                      position);
    else if ((start & MPEG_AUDIO_MASK) == MPEG_AUDIO_MASK)
        report_reason(EFFECT, "reason-packed-format-mpeg", path,
                      "no packed audio format recognised at byte %" PRIu64 ", MPEG audio: nothing is checked",
                      position);
    else
        report_reason(EFFECT, "reason-packed-format", path,
                      "no packed audio format recognised at byte %" PRIu64 ": nothing is checked", position);
}

// Leaves the reader where it was, at the payload's first byte.
PackedFormat recognise_format(FileReader& reader, const std::string& path) {
    std::array<uint8_t, FORMAT_HEAD_SIZE> buffer = {};
    const uint32_t size = reader_read(buffer.data(), FORMAT_HEAD_SIZE, reader);
    reader_skip(-static_cast<int64_t>(size), reader);
    const std::span<const uint8_t> head = std::span(buffer).first(size);
    const PackedFormat format = recognise(head);
    if (format == PackedFormat::NONE) report_unknown_format(head, path, reader.position);
    if (format == PackedFormat::AC3_LIKE)
        report_reason(ReasonEffect::UNVALIDATED, "reason-packed-bsid", path,
                      "the bsid of the frame at byte %" PRIu64 " is neither AC-3 nor E-AC-3: copied unchecked",
                      reader.position);
    return format;
}

const char* file_extension(PackedFormat format) {
    switch (format) {
        case PackedFormat::AC3:
            return ".ac3";
        case PackedFormat::EC3:
            return ".ec3";
        case PackedFormat::AC4:
            return ".ac4";
        case PackedFormat::AAC:
            return ".aac";
        default:
            return "";
    }
}

const char* codec_name(PackedFormat format) {
    switch (format) {
        case PackedFormat::AC3:
            return "ac-3";
        case PackedFormat::AAC:
            return "mp4a";
        default:
            return "";
    }
}

// E-AC-3 is compared when its first timeslice has been analysed.
int check_codecs(PackedFormat format, const PlaylistAttributes* attrs) {
    const auto missing = [&](const char* name) { return attrs == nullptr || !codecs_contain(attrs->codecs, name); };
    if (format == PackedFormat::AC3 && missing("ac-3"))
        return fail(-1, "packed-ac3-codecs", "ERROR: No 'ac-3' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
    if (format == PackedFormat::AC4 && missing("ac-4"))
        return fail(-1, "packed-ac4-codecs", "ERROR: No 'ac-4' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
    if (format == PackedFormat::AAC && missing("mp4a"))
        return fail(-1, "packed-aac-codecs", "ERROR: No 'mp4a' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
    return 0;
}

int copy_payload(PackedFormat format, OutputFile& output, FileReader& reader) {
    StreamFacts facts = {.codec = codec_name(format), .first_time = current_place.time};
    std::array<uint8_t, 16384> scratch;
    int status = 0;
    for (;;) {
        const std::span<const uint8_t> piece = reader_view(reader, scratch.size(), scratch);
        if (piece.empty()) break;
        facts.payload_bytes += piece.size();
        status |= elementary_stream_write(output, piece);
    }
    record_stream(facts);
    return status;
}

int check_payload(PackedFormat format, OutputFile& output, FileReader& reader, const PlaylistAttributes* attrs) {
    if (format == PackedFormat::EC3) return check_ec3_timeslices(output, reader, attrs);
    if (format == PackedFormat::AC4) return check_ac4_frames(output, reader, attrs);
    return copy_payload(format, output, reader);
}

int validate_tag_and_payload(FileReader& reader, const std::string& path, const SegmentJob& job) {
    int64_t timestamp = 0;
    if (read_id3_timestamp(reader, path, timestamp) != 0) return -1;
    announce("  %s (pts:%" PRId64 ")\n", path.c_str(), timestamp);
    current_place.offset = static_cast<int64_t>(reader.position);
    current_place.time = advance_stream_clock(timestamp & (CLOCK_WRAP - 1));
    const PackedFormat format = recognise_format(reader, path);
    if (format == PackedFormat::NONE) return 0;
    int status = check_codecs(format, job.attrs);
    OutputFile output;
    if (job.output_dir)
        status |= elementary_stream_open(output, output_path(*job.output_dir, job.stem, file_extension(format)),
                                         job.first_segment);
    status |= check_payload(format, output, reader, job.attrs);
    return status | elementary_stream_close(output);
}

}  // namespace

int validate_packed_audio(FileReader& reader, const SegmentEntry& entry, const SegmentJob& job) {
    const std::string path = entry.path.value_or("");
    if (!reader.file) {
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-packed-not-open", path,
                      "the packed audio segment is not open");
        return -1;
    }
    const PlaceScope scope;
    current_place.offset = static_cast<int64_t>(reader.position);
    int status = validate_tag_and_payload(reader, path, job);
    if (reader.read_error) {
        current_place.offset = static_cast<int64_t>(reader.error_offset);
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-packed-read-error", path, "read error at byte %" PRIu64,
                      reader.error_offset);
        status = -1;
    }
    return status;
}

}  // namespace quorlin
