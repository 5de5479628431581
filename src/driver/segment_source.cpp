#include "driver/segment_source.h"

#include <span>
#include <utility>

#include "bits/finding.h"
#include "bits/place.h"
#include "bits/report.h"
#include "driver/paths.h"
#include "playlist/unreadable_address.h"

namespace quorlin {

namespace {

// A missing segment does not touch the verdict.
void print_invalid_path(const std::string& path) {
    note("run-segment-path", "ERROR: Invalid segment path: %s\n", path.c_str());
}

// A line that was read as an address and is none: it is empty, a comment or another tag.
void report_no_address(const SegmentEntry& entry, const char* address) {
    using enum ReasonEffect;
    const std::string playlist = current_place.playlist;
    if (entry.kind == SegmentKind::INIT)
        report_reason(UNVALIDATED, "reason-playlist-map-without-uri", playlist,
                      "line %u: EXT-X-MAP without a URI: no init section is read", entry.line);
    else if (*address == '\0')
        report_reason(UNVALIDATED, "reason-playlist-empty-address", playlist,
                      "line %u: EXTINF is followed by no address: the segment is not read", entry.line);
    else
        report_reason(UNVALIDATED, "reason-playlist-tag-as-address", playlist,
                      "line %u: \"%s\" stands where the address of a segment is read, and is taken as the address: "
                      "only EXT-X-BYTERANGE may stand between EXTINF and it",
                      entry.line, address);
}

// Looks at the start of the file that was just opened: a piece of it when byte ranges are to be read, else the first
// chunk, from which the reader goes on.
SegmentFormat look_at_start(FileReader& reader, bool has_range, const std::string& key_method) {
    reader.start_offset = 0;
    reader.limited = has_range;
    reader.remaining = FORMAT_LOOK_SIZE;
    reader_start(reader);
    const std::span<const uint8_t> start = reader_buffered(reader);
    if (reader.read_error && start.size() < FORMAT_DECIDING_SIZE) {
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-segment-start-unreadable", reader.path,
                      "read error at the start of the segment");
        return SegmentFormat::UNKNOWN;
    }
    if (has_range) reader_clear_error(reader);
    const SegmentFormat format = detect_segment_format(start);
    if (format == SegmentFormat::UNKNOWN || format == SegmentFormat::PLAYLIST)
        report_unknown_format(start, reader.path, key_method);
    return format;
}

}  // namespace

int set_segment(FileReader& reader, File file, const std::string& path) {
    const char* cause = file ? nullptr : open_failure_text();
    reader_close(reader);
    if (!file) {
        print_invalid_path(path);
        report_unreadable(path, cause);
        return SEGMENT_NOT_OPENED;
    }
    reader.file = std::move(file);
    reader.path = path;
    return SEGMENT_READABLE;
}

int open_segment(SegmentSource& source, const Playlist& playlist, const SegmentEntry& entry, const char* address) {
    FileReader& reader = source.reader;
    const std::string path = entry.path.value_or("");
    if (reader.file && reader.path == path) {
        reader_clear_error(reader);
        return SEGMENT_READABLE;
    }
    reader_close(reader);
    if (is_http_address(path)) {
        print_invalid_path(path);
        report_unreadable(path, "");
        return SEGMENT_NOT_LOCAL;
    }
    File file = open_input_file(path);
    if (!file && (*address == '\0' || *address == '#')) {
        print_invalid_path(path);
        report_no_address(entry, address);
        return SEGMENT_NOT_OPENED;
    }
    const int status = set_segment(reader, std::move(file), path);
    if (status != SEGMENT_READABLE) return status;
    const std::string key_method = entry.keys_before > 0 ? playlist.key_methods[entry.keys_before - 1] : "NONE";
    source.format = look_at_start(reader, entry.byte_range.has_value(), key_method);
    return SEGMENT_READABLE;
}

}  // namespace quorlin
