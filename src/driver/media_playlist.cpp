#include "driver/media_playlist.h"

#include <cstdint>
#include <cstdio>
#include <utility>

#include "bits/finding.h"
#include "bits/place.h"
#include "bits/report.h"
#include "bits/stream_clock.h"
#include "driver/paths.h"
#include "driver/segment_facts.h"
#include "driver/segment_source.h"
#include "driver/timing_checks.h"
#include "isobmff/segment_validation.h"
#include "packed/packed_audio.h"
#include "playlist/byte_range.h"
#include "playlist/playlist_reader.h"
#include "ts/ts_segment.h"

namespace quorlin {

namespace {

// Of an entry that is not handed to the validation of its container.
constexpr int SEGMENT_SKIPPED = -1;

// What lives across the segments of one media playlist.
struct SegmentLoop {
    const MediaPlaylistJob& job;
    const Playlist& playlist;
    SegmentJob segment_job;
    std::string directory;
    SegmentSource source = {};
    MediaContextPtr init_context = {};
    TsSegmentTiming previous_timing = {};
    ByteRangeEnds range_ends = {};
    uint32_t segments_named = 0;  // entries that name a file
    uint32_t segments_opened = 0;
    std::string whole_init = {};  // path of the init section, when it is a whole file that no segment has named yet
    bool codecs_missed = false;
};

int validate_transport_stream(SegmentLoop& loop) {
    TsSegmentTiming timing;
    int status = ts_process_segment(loop.source.reader, loop.segment_job, &timing);
    if (loop.previous_timing.video_first_pts != NO_PTS)
        status |= check_segment_timing(timing, loop.previous_timing, TimingCaller::PLAYLIST);
    loop.previous_timing = timing;
    return status;
}

// Without a master playlist there is no CODECS to compare with, and that is a finding.
int validate_packed_segment(SegmentLoop& loop, const SegmentEntry& entry) {
    const int status = validate_packed_audio(loop.source.reader, entry, loop.segment_job);
    if (status != 0 && loop.segment_job.attrs == nullptr && !std::exchange(loop.codecs_missed, true))
        report_reason(
            ReasonEffect::REMARK, "reason-playlist-packed-no-codecs", loop.job.path,
            "packed audio is compared with CODECS, which only a master playlist has: validate it through that");
    return status;
}

void remark_init_as_segment(SegmentLoop& loop, const SegmentEntry& entry) {
    if (entry.byte_range) return;
    if (entry.kind == SegmentKind::INIT) {
        loop.whole_init = loop.source.reader.path;
    } else if (loop.whole_init == loop.source.reader.path) {
        loop.whole_init.clear();
        report_reason(ReasonEffect::REMARK, "reason-playlist-map-is-segment", loop.job.path,
                      "line %u: the segment is the file of EXT-X-MAP, and neither has a byte range: its samples are "
                      "read, and written, twice",
                      entry.line);
    }
}

// The init context of an EXT-X-MAP replaces that of the one before. Returns 0, or 11 when that one's files could not be
// written.
int change_init_context(SegmentLoop& loop, const std::string& path) {
    const int status = release_init_context(loop.init_context);
    std::string init_stem;
    if (file_stem(path, init_stem) != 0)
        report_reason(ReasonEffect::REMARK, "reason-init-no-stem", path,
                      "the init section's name has no extension to take a stem from");
    loop.init_context = create_init_context(loop.segment_job, init_stem);
    return status;
}

int refuse_malformed_range(const ByteRange& range, const std::string& path) {
    report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-playlist-byte-range", path,
                  "the byte range \"%s%s%s\" is not a length and an offset; the segment is not read",
                  range.length.c_str(), range.offset ? "@" : "", range.offset.value_or("").c_str());
    return SEGMENT_SKIPPED;
}

// The segment whose file is open. `range` is null when its texts are none.
int validate_content(SegmentLoop& loop, const SegmentEntry& entry, const ByteSpan* range) {
    SegmentSource& source = loop.source;
    int status = 0;
    if (source.format == SegmentFormat::ISO_MEDIA && entry.kind == SegmentKind::INIT)
        status |= change_init_context(loop, source.reader.path);
    if (range == nullptr) return status | refuse_malformed_range(*entry.byte_range, source.reader.path);
    start_on_range(source.reader, *range);
    switch (source.format) {
        case SegmentFormat::TRANSPORT_STREAM:
            return validate_transport_stream(loop);
        case SegmentFormat::PACKED_AUDIO:
            return validate_packed_segment(loop, entry);
        case SegmentFormat::ISO_MEDIA:
            remark_init_as_segment(loop, entry);
            return status | validate_mp4_segment(source.reader, entry, loop.init_context.get());
        default:
            return SEGMENT_SKIPPED;
    }
}

int validate_opened_segment(SegmentLoop& loop, const SegmentEntry& entry, const ByteSpan* range) {
    const SegmentFormat format = loop.source.format;
    if (format != SegmentFormat::UNKNOWN && format != SegmentFormat::PLAYLIST)
        return validate_content(loop, entry, range);
    // Looked at again, and reported again, when the next entry names the same file.
    reader_close(loop.source.reader);
    return SEGMENT_SKIPPED;
}

int validate_segment(SegmentLoop& loop, const SegmentEntry& entry) {
    const std::string& path = *entry.path;
    const char* address = path.c_str() + (path.starts_with(loop.directory) ? loop.directory.size() : 0);
    ++loop.segments_named;
    current_place.segment = path.c_str();
    // Counts for the next range whatever comes of this segment.
    ByteSpan range;
    const bool well_formed = resolve_byte_range(entry, loop.range_ends, range) == 0;
    int status = 0;
    // A segment that cannot be opened does not touch the verdict, deliberately: its message is all.
    if (open_segment(loop.source, loop.playlist, entry, address) == SEGMENT_READABLE) {
        ++loop.segments_opened;
        status = validate_opened_segment(loop, entry, well_formed ? &range : nullptr);
    }
    record_segment_facts(loop.source, entry, address, range);
    return status;
}

int validate_entry(SegmentLoop& loop, const SegmentEntry& entry) {
    const PlaceScope scope;
    current_place.line = entry.line;
    switch (entry.kind) {
        case SegmentKind::MEDIA:
        case SegmentKind::BYTE_RANGE:
        case SegmentKind::INIT:
            return validate_segment(loop, entry);
        case SegmentKind::DISCONTINUITY:
            announce("#EXT-X-DISCONTINUITY\n");
            reset_stream_clock();
            reader_close(loop.source.reader);
            return 0;
        case SegmentKind::END_LIST:
            reader_close(loop.source.reader);
            return release_init_context(loop.init_context);
        default:
            return 0;
    }
}

int validate_segments(SegmentLoop& loop) {
    int error_flag = 0;
    reset_stream_clock();
    for (const SegmentEntry& entry : loop.playlist.entries) {
        error_flag |= validate_entry(loop, entry);
        loop.segment_job.first_segment = false;
        if (std::ferror(stdout) != 0) break;
    }
    error_flag |= release_init_context(loop.init_context);
    using enum ReasonEffect;
    if (loop.segments_named == 0)
        report_reason(UNVALIDATED, "reason-playlist-no-segment", loop.job.path, "the playlist names no segment");
    else if (loop.segments_opened == 0)
        report_reason(UNVALIDATED, "reason-playlist-nothing-read", loop.job.path, "no segment could be read");
    return error_flag;
}

void announce_playlist(const std::string& path) {
    announce("------------------------------------------------\n%s:\n", path.c_str());
}

// What follows the header.
int validate_contents(const MediaPlaylistJob& job, const Playlist& playlist) {
    report_playlist_losses(job.path, playlist.losses);
    int status = playlist.losses.cut_short ? PLAYLIST_CUT_SHORT : 0;
    if (status == 0) {
        record_playlist_facts(job.path, job.facts, playlist);
        if (playlist.is_master)
            report_reason(ReasonEffect::UNVALIDATED, "reason-playlist-unexpected-master", job.path,
                          "a master playlist where a media playlist is expected");
        const PlaceScope scope({.playlist = job.path.c_str()});
        SegmentLoop loop = {job, playlist, job.segments, playlist_directory(job.path)};
        status = validate_segments(loop);
    }
    announce("%s has been verified.\n", job.path.c_str());
    return status;
}

}  // namespace

int validate_media_playlist(const MediaPlaylistJob& job) {
    announce_playlist(job.path);
    Playlist playlist;
    if (read_playlist(job.path, playlist) != PLAYLIST_REFUSED) return validate_contents(job, playlist);
    announce("%s has been verified.\n", job.path.c_str());
    return -1;
}

int validate_read_playlist(const MediaPlaylistJob& job, const Playlist& playlist) {
    announce_playlist(job.path);
    return validate_contents(job, playlist);
}

}  // namespace quorlin
