#include "driver/media_playlist.h"

#include <cstdint>
#include <cstdio>
#include <span>
#include <utility>

#include "bits/report.h"
#include "driver/paths.h"
#include "driver/segment_format.h"
#include "driver/timing_checks.h"
#include "isobmff/segment_validation.h"
#include "packed/packed_audio.h"
#include "playlist/byte_range.h"
#include "playlist/playlist_reader.h"
#include "ts/ts_segment.h"

namespace {

// Of an entry that is not handed to the validation of its container.
constexpr int SEGMENT_REFUSED = -1;

// What lives across the segments of one media playlist.
struct SegmentLoop {
    const std::string& stem;
    const std::optional<std::string>& output_dir;
    const PlaylistAttributes* attrs;
    FileReader reader = {};
    SegmentFormat format = SegmentFormat::UNKNOWN;  // of the file that the reader is open on
    MediaContextPtr init_context = {};
    TsSegmentTiming previous_timing = {};
    ByteRangeEnds range_ends = {};
    uint32_t segments_named = 0;  // entries that name a file
    uint32_t segments_opened = 0;
};

// Looks at the start of the file that was just opened: a piece of it when byte ranges are to be read, else the first
// chunk, from which the reader goes on.
SegmentFormat look_at_start(FileReader& reader, bool has_range) {
    reader.start_offset = 0;
    reader.limited = has_range;
    reader.remaining = FORMAT_LOOK_SIZE;
    reader_start(reader);
    const std::span<const uint8_t> start = reader_buffered(reader);
    if (reader.read_error && start.size() < FORMAT_DECIDING_SIZE) {
        report_reason(reader.path, "read error at the start of the segment");
        return SegmentFormat::UNKNOWN;
    }
    if (has_range) reader_clear_error(reader);
    return detect_segment_format(start, reader.path);
}

// Keeps the file of consecutive byte ranges open, where its reader does not close it (fragmented MP4); opens any other
// and looks at its container. Returns 0 when the segment can be read.
int select_segment(SegmentLoop& loop, const SegmentEntry& entry, const std::string& address) {
    if (loop.reader.file && loop.reader.path == address) {
        reader_clear_error(loop.reader);
        return 0;
    }
    reader_close(loop.reader);
    if (is_http_address(address)) {
        std::printf("ERROR: Invalid segment path: %s\n", address.c_str());
        report_reason(address, "not a local file; the segment is not validated");
        return -1;
    }
    const int status = set_segment(loop.reader, open_input_file(address), address);
    if (status == 0) loop.format = look_at_start(loop.reader, entry.byte_range.has_value());
    return status;
}

int validate_transport_stream(SegmentLoop& loop, bool first_segment) {
    TsSegmentTiming timing;
    int status = ts_process_segment(loop.reader, loop.output_dir, loop.stem, first_segment, loop.attrs, &timing);
    if (loop.previous_timing.video_first_pts != -1 && timing.audio_count > 0)
        status |= check_segment_timing(timing, loop.previous_timing, TimingCaller::PLAYLIST);
    loop.previous_timing = timing;
    return status;
}

// The init context of an EXT-X-MAP replaces that of the one before. Returns 0, or 11 when that one's files could not be
// written.
int change_init_context(SegmentLoop& loop, const std::string& address) {
    const int status = release_init_context(loop.init_context);
    std::string init_stem;
    if (file_stem(address, init_stem) != 0)
        report_reason(address, "the init section's name has no extension to take a stem from");
    loop.init_context = create_init_context(loop.output_dir, loop.stem, init_stem, loop.attrs);
    return status;
}

void report_malformed_range(const ByteRange& range, const std::string& address) {
    report_reason(address, "the byte range \"%s%s%s\" is not a length and an offset; the segment is not read",
                  range.length.c_str(), range.offset ? "@" : "", range.offset.value_or("").c_str());
}

// The segment that the reader is started on.
int validate_content(SegmentLoop& loop, const SegmentEntry& entry, bool first_segment) {
    switch (loop.format) {
        case SegmentFormat::TRANSPORT_STREAM:
            return validate_transport_stream(loop, first_segment);
        case SegmentFormat::PACKED_AUDIO:
            return validate_packed_audio(loop.reader, entry, loop.output_dir, loop.stem, first_segment, loop.attrs);
        case SegmentFormat::ISO_MEDIA:
            return validate_mp4_segment(loop.reader, entry, loop.init_context.get());
        default:
            return SEGMENT_REFUSED;
    }
}

int validate_segment(SegmentLoop& loop, const SegmentEntry& entry, bool first_segment) {
    const std::string address = entry.uri.value_or("");
    ++loop.segments_named;
    // Counts for the next range whatever comes of this segment.
    std::optional<ByteSpan> range(std::in_place);
    if (resolve_byte_range(entry, loop.range_ends, *range) != 0) range.reset();
    // A segment that cannot be opened does not touch the verdict, deliberately: its message is all.
    if (select_segment(loop, entry, address) != 0) return 0;
    ++loop.segments_opened;
    if (loop.format == SegmentFormat::UNKNOWN || loop.format == SegmentFormat::PLAYLIST) {
        reader_close(loop.reader);
        return SEGMENT_REFUSED;
    }
    int status = 0;
    if (loop.format == SegmentFormat::ISO_MEDIA && entry.kind == SegmentKind::INIT)
        status |= change_init_context(loop, address);
    if (!range) {
        report_malformed_range(*entry.byte_range, address);
        return status | SEGMENT_REFUSED;
    }
    start_on_range(loop.reader, *range);
    return status | validate_content(loop, entry, first_segment);
}

int validate_entry(const std::string& path, SegmentLoop& loop, const SegmentEntry& entry, bool first_segment) {
    switch (entry.kind) {
        case SegmentKind::MEDIA:
        case SegmentKind::BYTE_RANGE:
        case SegmentKind::INIT:
            return validate_segment(loop, entry, first_segment);
        case SegmentKind::DISCONTINUITY:
            std::printf("#EXT-X-DISCONTINUITY\n");
            reader_close(loop.reader);
            return 0;
        case SegmentKind::END_LIST:
            reader_close(loop.reader);
            return release_init_context(loop.init_context);
        default:
            report_reason(path, "a tag stands where an address belongs: it was read as the address, not as a tag");
            return 0;
    }
}

int validate_segments(const std::string& path, const Playlist& playlist, SegmentLoop& loop) {
    int error_flag = 0;
    bool first_entry = true;
    for (const SegmentEntry& entry : playlist.entries) {
        error_flag |= validate_entry(path, loop, entry, first_entry);
        first_entry = false;
        if (std::ferror(stdout) != 0) break;
    }
    error_flag |= release_init_context(loop.init_context);
    if (loop.segments_named == 0)
        report_reason(path, "the playlist names no segment");
    else if (loop.segments_opened == 0)
        report_reason(path, "no segment could be read");
    return error_flag;
}

}  // namespace

int set_segment(FileReader& reader, File file, const std::string& path) {
    const char* reason = file ? nullptr : open_failure_text();
    reader_close(reader);
    if (!file) {
        std::printf("ERROR: Invalid segment path: %s\n", path.c_str());
        report_reason(path, "cannot be opened: %s", reason);
        return 3;
    }
    reader.file = std::move(file);
    reader.path = path;
    return 0;
}

void validate_media_playlist(const std::string& path, const std::string& stem,
                             const std::optional<std::string>& output_dir, const PlaylistAttributes* attrs,
                             int& error_flag) {
    std::printf("------------------------------------------------\n%s:\n", path.c_str());
    Playlist playlist;
    const int read_status = read_playlist(path, playlist);
    report_playlist_losses(path, playlist.losses);
    if (read_status == 0) {
        if (playlist.is_master) report_reason(path, "a master playlist where a media playlist is expected");
        SegmentLoop loop = {stem, output_dir, attrs};
        error_flag |= validate_segments(path, playlist, loop);
    } else {
        error_flag = -1;
    }
    std::printf("%s has been verified.\n", path.c_str());
}
