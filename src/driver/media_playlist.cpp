#include "driver/media_playlist.h"

#include <cstdint>
#include <cstdio>
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

// What lives across the segments of one media playlist.
struct SegmentLoop {
    const std::string& stem;
    const std::optional<std::string>& output_dir;
    const PlaylistAttributes* attrs;
    FileReader reader = {};
    MediaContextPtr init_context = {};
    TsSegmentTiming previous_timing = {};
    ByteRangeEnds range_ends = {};
    uint32_t segments_named = 0;  // entries that name a file
    uint32_t segments_opened = 0;
};

// Keeps the file of consecutive byte ranges open, where its reader does not close it (fragmented MP4); opens any other.
// Returns 0 when the segment can be read.
int select_segment(SegmentLoop& loop, const std::string& address) {
    if (loop.reader.file && loop.reader.path == address) return 0;
    reader_close(loop.reader);
    if (is_http_address(address)) {
        std::printf("ERROR: Invalid segment path: %s\n", address.c_str());
        report_reason(address, "not a local file; the segment is not validated");
        return -1;
    }
    return set_segment(loop.reader, open_input_file(address), address);
}

// Starts the reader on the entry's byte range, or on the whole file. Returns 0, or -1 when the range is none.
int start_segment(SegmentLoop& loop, const SegmentEntry& entry) {
    ByteSpan range;
    if (entry.byte_range && resolve_byte_range(*entry.byte_range, loop.reader.path, loop.range_ends, range) != 0)
        return -1;
    loop.reader.start_offset = range.offset;
    loop.reader.remaining = static_cast<int64_t>(range.length);
    loop.reader.limited = range.length != 0;
    return reader_start(loop.reader);
}

int validate_transport_stream(SegmentLoop& loop, bool first_segment) {
    TsSegmentTiming timing;
    int status = ts_process_segment(loop.reader, loop.output_dir, loop.stem, first_segment, loop.attrs, &timing);
    if (loop.previous_timing.video_first_pts != -1 && timing.audio_count > 0)
        status |= check_segment_timing(timing, loop.previous_timing, TimingCaller::PLAYLIST);
    loop.previous_timing = timing;
    return status;
}

int validate_iso_media(SegmentLoop& loop, const SegmentEntry& entry) {
    int status = 0;
    if (entry.kind == SEGMENT_INIT) {
        status |= release_init_context(loop.init_context);
        std::string init_stem;
        if (file_stem(*entry.uri, init_stem) != 0)
            report_reason(*entry.uri, "the init section's name has no extension to take a stem from");
        loop.init_context = create_init_context(loop.output_dir, loop.stem, init_stem, loop.attrs);
    }
    return status | validate_mp4_segment(loop.reader, entry, loop.init_context.get());
}

int validate_segment(SegmentLoop& loop, const SegmentEntry& entry, bool first_segment) {
    const std::string address = entry.uri.value_or("");
    ++loop.segments_named;
    // A segment that cannot be opened does not touch the verdict, deliberately: its message is all.
    if (select_segment(loop, address) != 0) return 0;
    ++loop.segments_opened;
    switch (detect_segment_format(address)) {
        case FORMAT_TS:
            if (start_segment(loop, entry) != 0) return -1;
            return validate_transport_stream(loop, first_segment);
        case FORMAT_PACKED_AUDIO:
            if (start_segment(loop, entry) != 0) return -1;
            return validate_packed_audio(loop.reader, entry, loop.output_dir, loop.stem, first_segment, loop.attrs);
        case FORMAT_ISO_MEDIA:
            return validate_iso_media(loop, entry);
        case FORMAT_PLAYLIST:
        case FORMAT_UNKNOWN:
            break;
    }
    return -1;
}

int validate_entry(const std::string& path, SegmentLoop& loop, const SegmentEntry& entry, bool first_segment) {
    switch (entry.kind) {
        case SEGMENT_MEDIA:
        case SEGMENT_BYTE_RANGE:
        case SEGMENT_INIT:
            return validate_segment(loop, entry, first_segment);
        case SEGMENT_DISCONTINUITY:
            std::printf("#EXT-X-DISCONTINUITY\n");
            reader_close(loop.reader);
            return 0;
        case SEGMENT_END_LIST:
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
