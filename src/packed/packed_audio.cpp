#include "packed/packed_audio.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <span>

#include "ac4/ac4_sync_frame.h"
#include "bits/byte_order.h"
#include "bits/output_file.h"
#include "bits/report.h"
#include "packed/ac4_frames.h"
#include "packed/ec3_timeslices.h"
#include "packed/id3_timestamp.h"
#include "packed/sync_words.h"
#include "playlist/codecs.h"

namespace {

enum class PackedFormat {
    NONE,      // not recognised
    AC3,       // syncframes with bsid up to 8
    EC3,       // syncframes with bsid 11 to 16
    AC3_LIKE,  // syncframes with any other bsid
    AC4,       // sync frames, ETSI TS 103 190-2, annex C
    AAC,       // ADTS
};

// The sixth byte of a syncframe holds bsid in its upper five bits.
constexpr size_t SYNCFRAME_BSID_OFFSET = 5;
constexpr uint32_t FORMAT_HEAD_SIZE = SYNCFRAME_BSID_OFFSET + 1;

PackedFormat syncframe_format(uint32_t bsid) {
    if (bsid < 9) return PackedFormat::AC3;
    if (bsid >= 11 && bsid <= 16) return PackedFormat::EC3;
    return PackedFormat::AC3_LIKE;
}

PackedFormat recognise(std::span<const uint8_t> head) {
    if (head.size() < 2) return PackedFormat::NONE;
    const uint16_t sync_word = load_be16(head, 0);
    if (sync_word == SYNCFRAME_SYNC_WORD && head.size() == FORMAT_HEAD_SIZE)
        return syncframe_format(head[SYNCFRAME_BSID_OFFSET] >> 3);
    if (sync_word == AC4_SYNC_WORD || sync_word == AC4_SYNC_WORD_WITH_CRC) return PackedFormat::AC4;
    if (sync_word == ADTS_SYNC_WORD) return PackedFormat::AAC;
    return PackedFormat::NONE;
}

// Leaves the reader where it was, at the payload's first byte.
PackedFormat recognise_format(FileReader& reader, const std::string& path) {
    std::array<uint8_t, FORMAT_HEAD_SIZE> head = {};
    const uint32_t size = reader_read(head.data(), FORMAT_HEAD_SIZE, reader);
    reader_skip(-static_cast<int64_t>(size), reader);
    const PackedFormat format = recognise(std::span(head).first(size));
    const auto position = static_cast<unsigned long long>(reader.position);
    if (format == PackedFormat::NONE)
        report_reason(path, "no packed audio format recognised at byte %llu: nothing is checked", position);
    if (format == PackedFormat::AC3_LIKE)
        report_reason(path, "the bsid of the frame at byte %llu is neither AC-3 nor E-AC-3: copied unchecked",
                      position);
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

// E-AC-3 is compared when its first timeslice has been analysed.
int check_codecs(PackedFormat format, const PlaylistAttributes* attrs) {
    const auto missing = [&](const char* name) { return attrs == nullptr || !codecs_contain(attrs->codecs, name); };
    if (format == PackedFormat::AC3 && missing("ac-3")) {
        std::printf("ERROR: No 'ac-3' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
        return -1;
    }
    if (format == PackedFormat::AC4 && missing("ac-4")) {
        std::printf("ERROR: No 'ac-4' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
        return -1;
    }
    if (format == PackedFormat::AAC && missing("mp4a")) {
        std::printf("ERROR: No 'mp4a' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
        return -1;
    }
    return 0;
}

int copy_payload(OutputFile& output, FileReader& reader) {
    std::array<uint8_t, 16384> scratch;
    int status = 0;
    for (;;) {
        const std::span<const uint8_t> piece = reader_view(reader, scratch.size(), scratch);
        if (piece.empty()) return status;
        status |= elementary_stream_write(output, piece);
    }
}

int check_payload(PackedFormat format, OutputFile& output, FileReader& reader, const PlaylistAttributes* attrs) {
    if (format == PackedFormat::EC3) return check_ec3_timeslices(output, reader, attrs);
    if (format == PackedFormat::AC4) return check_ac4_frames(output, reader, attrs);
    return copy_payload(output, reader);
}

int validate_segment(FileReader& reader, const std::string& uri, const std::optional<std::string>& output_dir,
                     const std::string& stem, bool first_segment, const PlaylistAttributes* attrs) {
    int64_t timestamp = 0;
    if (read_id3_timestamp(reader, uri, timestamp) != 0) return -1;
    std::printf("  %s (pts:%" PRId64 ")\n", uri.c_str(), timestamp);
    const PackedFormat format = recognise_format(reader, uri);
    if (format == PackedFormat::NONE) return 0;
    int status = check_codecs(format, attrs);
    OutputFile output;
    if (output_dir)
        status |= elementary_stream_open(output, output_path(*output_dir, stem, file_extension(format)), first_segment);
    status |= check_payload(format, output, reader, attrs);
    return status | elementary_stream_close(output);
}

}  // namespace

int validate_packed_audio(FileReader& reader, const SegmentEntry& entry, const std::optional<std::string>& output_dir,
                          const std::string& stem, bool first_segment, const PlaylistAttributes* attrs) {
    const std::string uri = entry.uri.value_or("");
    if (!reader.file) {
        report_reason(uri, "the packed audio segment is not open");
        return -1;
    }
    int status = validate_segment(reader, uri, output_dir, stem, first_segment, attrs);
    if (reader.read_error) {
        report_reason(uri, "read error at byte %" PRIu64, reader.error_offset);
        status = -1;
    }
    reader_close(reader);
    return status;
}
