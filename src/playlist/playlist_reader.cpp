#include "playlist/playlist_reader.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "bits/file_reader.h"
#include "bits/finding.h"
#include "bits/place.h"
#include "bits/report.h"
#include "playlist/attribute_list.h"
#include "playlist/unreadable_address.h"

namespace quorlin {

namespace {

// 4095 characters and the terminator: a longer line is read in pieces.
constexpr int LINE_SIZE = 4096;

// Hands out the trimmed lines of a playlist and counts the tags among them. A tag that another tag swallows as its
// address is counted all the same and leaves an empty element.
struct LineReader {
    File file;
    char line[LINE_SIZE] = {};
    uint32_t line_number = 0;   // from 1
    bool line_goes_on = false;  // after what the buffer holds
    uint32_t last_long_line = 0;
    size_t media_count = 0;
    size_t variant_count = 0;
    size_t iframe_variant_count = 0;
    size_t entry_count = 0;
};

struct PlaylistParser {
    LineReader& lines;
    std::string directory;
    Playlist& playlist;
    uint32_t discontinuity_sequence = 0;
};

void count_tag(LineReader& lines, std::string_view line) {
    if (!line.starts_with("#EXT")) return;
    if (line.starts_with("#EXT-X-MEDIA:")) ++lines.media_count;
    if (line.starts_with("#EXT-X-STREAM-INF:")) ++lines.variant_count;
    if (line.starts_with("#EXT-X-I-FRAME-STREAM-INF:")) ++lines.iframe_variant_count;
    if (line.starts_with("#EXTINF:") || line.starts_with("#EXT-X-MAP:") || line.starts_with("#EXT-X-DISCONTINUITY") ||
        line.starts_with("#EXT-X-ENDLIST"))
        ++lines.entry_count;
}

// False at the end of the file, with an empty line. A zero byte ends the text of its line. The view holds until the
// next call.
bool next_line(LineReader& lines, std::string_view& line) {
    line = {};
    // The last character of a full buffer tells whether the line goes on, also past a zero byte.
    char& last = lines.line[LINE_SIZE - 2];
    last = '\n';
    if (std::fgets(lines.line, LINE_SIZE, lines.file.get()) == nullptr) return false;
    if (!lines.line_goes_on) ++lines.line_number;
    const std::string_view text(lines.line);
    line = trim_right(trim_left(text));
    if (lines.line_goes_on && !line.empty()) lines.last_long_line = lines.line_number;
    lines.line_goes_on = last != '\n' && last != '\0';
    count_tag(lines, line);
    return true;
}

// True, with `value` after it, when `line` begins with `tag`.
bool match_tag(std::string_view line, std::string_view tag, std::string_view& value) {
    if (!line.starts_with(tag)) return false;
    value = line.substr(tag.size());
    return true;
}

bool store_tag(std::string_view line, std::string_view tag, Text& value) {
    std::string_view text;
    if (!match_tag(line, tag, text)) return false;
    value = text;
    return true;
}

ByteRange split_byte_range(std::string_view text) {
    const size_t at = text.find('@');
    ByteRange range{std::string(text.substr(0, at)), std::nullopt};
    if (at != std::string_view::npos) range.offset = text.substr(at + 1);
    return range;
}

// The address of a variant or segment: absolute when it begins with a scheme.
std::string resolve_uri(const std::string& directory, std::string_view uri) {
    if (uri.starts_with("http://") || uri.starts_with("https://")) return std::string(uri);
    return directory + std::string(uri);
}

// Renditions take a scheme anywhere in the address as absolute, unlike variants and segments.
std::string resolve_media_uri(const std::string& directory, const std::string& uri) {
    if (uri.find("http://") != std::string::npos || uri.find("https://") != std::string::npos) return uri;
    return directory + uri;
}

void read_media(PlaylistParser& parser, std::string_view list) {
    using enum AttributeForm;
    MediaEntry& media = parser.playlist.media.emplace_back();
    media.line = parser.lines.line_number;
    const AttributeSlot slots[] = {
        {"TYPE", RAW, &media.type},
        {"GROUP-ID", QUOTED, &media.group_id},
        {"NAME", QUOTED, &media.name},
        {"DEFAULT", RAW, &media.default_},
        {"AUTOSELECT", RAW, &media.autoselect},
        {"LANGUAGE", QUOTED, &media.language},
        {"ASSOC-LANGUAGE", QUOTED, &media.assoc_language},
        {"CHANNELS", QUOTED, &media.channels},
        {"URI", QUOTED, &media.uri},
        {"FORCED", RAW, &media.forced},
        {"INSTREAM-ID", RAW, &media.instream_id},
        {"CHARACTERISTICS", RAW, &media.characteristics},
        {"ZTP_PROGRAM0", RAW, &media.ztp_program[0]},
        {"ZTP_PROGRAM1", RAW, &media.ztp_program[1]},
        {"ZTP_PROGRAM2", RAW, &media.ztp_program[2]},
        {"ZTP_PROGRAM3", RAW, &media.ztp_program[3]},
    };
    parse_attribute_list(list, slots);
    if (media.uri) media.uri = resolve_media_uri(parser.directory, *media.uri);
}

// `uri` takes the address attribute, which only I-frame variants have.
void read_stream_attributes(std::string_view list, VariantStream& variant, Text& uri) {
    using enum AttributeForm;
    const AttributeSlot slots[] = {
        {"BANDWIDTH", RAW, &variant.bandwidth},
        {"CODECS", CODECS, &variant.codecs},
        {"RESOLUTION", RAW, &variant.resolution},
        {"FRAME-RATE", RAW, &variant.frame_rate},
        {"AVERAGE-BANDWIDTH", RAW, &variant.average_bandwidth},
        {"HDCP-LEVEL", RAW, &variant.hdcp_level},
        {"AUDIO", QUOTED, &variant.audio},
        {"VIDEO", QUOTED, &variant.video},
        {"SUBTITLE", QUOTED, &variant.subtitle},  // deliberately not the standard's plural
        {"CLOSED-CAPTIONS", RAW, &variant.closed_captions},
        {"URI", QUOTED, &uri},
    };
    parse_attribute_list(list, slots);
}

void read_variant(PlaylistParser& parser, std::string_view list) {
    VariantStream& variant = parser.playlist.variants.emplace_back();
    variant.line = parser.lines.line_number;
    Text ignored;  // a variant's address is the next line
    read_stream_attributes(list, variant, ignored);
    // A line with "#" is consumed all the same: a tag right after this one is deliberately lost.
    std::string_view line;
    if (next_line(parser.lines, line) && line.find('#') == std::string_view::npos)
        variant.uri = resolve_uri(parser.directory, line);
}

void read_iframe_variant(PlaylistParser& parser, std::string_view list) {
    VariantStream& variant = parser.playlist.iframe_variants.emplace_back();
    variant.line = parser.lines.line_number;
    read_stream_attributes(list, variant, variant.uri);
    if (variant.uri) variant.uri = resolve_uri(parser.directory, *variant.uri);
}

SegmentEntry& add_entry(PlaylistParser& parser, SegmentKind kind) {
    SegmentEntry& entry = parser.playlist.entries.emplace_back();
    entry.kind = kind;
    entry.line = parser.lines.line_number;
    entry.discontinuity_sequence = parser.discontinuity_sequence;
    entry.keys_before = static_cast<uint32_t>(parser.playlist.key_methods.size());
    return entry;
}

void read_map(PlaylistParser& parser, std::string_view list) {
    SegmentEntry& entry = add_entry(parser, SegmentKind::INIT);
    Text uri;
    Text byte_range;
    const AttributeSlot slots[] = {
        {"URI", AttributeForm::QUOTED, &uri},
        {"BYTERANGE", AttributeForm::RAW, &byte_range},
    };
    parse_attribute_list(list, slots);
    // Deliberately joined even when it is absolute: an init section is a local file beside the playlist.
    entry.path = parser.directory + uri.value_or("");
    if (!byte_range) return;
    std::erase(*byte_range, '"');
    entry.byte_range = split_byte_range(*byte_range);
}

void read_segment(PlaylistParser& parser, std::string_view value) {
    SegmentEntry& entry = add_entry(parser, SegmentKind::MEDIA);
    entry.duration = value.substr(0, value.find(','));
    std::string_view line;
    next_line(parser.lines, line);
    if (line.starts_with("#EXT-X-BYTERANGE")) {
        entry.kind = SegmentKind::BYTE_RANGE;
        const size_t colon = std::min(line.find(':'), line.size() - 1);
        entry.byte_range = split_byte_range(line.substr(colon + 1));
        next_line(parser.lines, line);
    }
    // Whatever the line holds is the address; at the end of the file it is empty.
    entry.path = resolve_uri(parser.directory, line);
    entry.line = parser.lines.line_number;
}

void read_key(Playlist& playlist, std::string_view list) {
    Text method;
    const AttributeSlot slots[] = {{"METHOD", AttributeForm::RAW, &method}};
    parse_attribute_list(list, slots);
    playlist.key_methods.push_back(method.value_or(""));
}

// The one with a number opens the playlist (RFC 8216, 4.3.3.3), but is an entry like the other: deliberate.
void read_discontinuity(PlaylistParser& parser, std::string_view line) {
    std::string_view value;
    if (match_tag(line, "#EXT-X-DISCONTINUITY-SEQUENCE:", value))
        std::from_chars(value.data(), value.data() + value.size(), parser.discontinuity_sequence);
    else
        ++parser.discontinuity_sequence;
    add_entry(parser, SegmentKind::DISCONTINUITY);
}

// Tags are recognised by prefix, the first match wins.
void read_tag(PlaylistParser& parser, std::string_view line) {
    Playlist& playlist = parser.playlist;
    std::string_view value;
    if (match_tag(line, "#EXT-X-MEDIA:", value)) return read_media(parser, value);
    if (match_tag(line, "#EXT-X-STREAM-INF:", value)) return read_variant(parser, value);
    if (match_tag(line, "#EXT-X-I-FRAME-STREAM-INF:", value)) return read_iframe_variant(parser, value);
    if (match_tag(line, "#EXT-X-MAP:", value)) return read_map(parser, value);
    if (match_tag(line, "#EXTINF:", value)) return read_segment(parser, value);
    if (store_tag(line, "#EXT-X-VERSION:", playlist.version)) return;
    if (line.starts_with("#EXT-X-DISCONTINUITY")) return read_discontinuity(parser, line);
    if (store_tag(line, "#EXT-X-TARGETDURATION:", playlist.target_duration)) return;
    if (store_tag(line, "#EXT-X-MEDIA-SEQUENCE:", playlist.media_sequence)) return;
    if (store_tag(line, "#EXT-X-PLAYLIST-TYPE:", playlist.playlist_type)) return;
    if (line.starts_with("#EXT-X-INDEPENDENT-SEGMENTS")) playlist.independent_segments = true;
    if (line.starts_with("#EXT-X-I-FRAMES-ONLY")) playlist.iframes_only = true;
    if (line.starts_with("#EXT-X-ENDLIST")) add_entry(parser, SegmentKind::END_LIST);
    if (match_tag(line, "#EXT-X-KEY:", value)) read_key(playlist, value);
    // The standard allows it there, but it is read after EXTINF only: deliberate.
    if (line.starts_with("#EXT-X-BYTERANGE")) playlist.losses.early_byte_range = parser.lines.line_number;
    if (line.starts_with("#EXT-X-PART:") || line.starts_with("#EXT-X-PRELOAD-HINT:") ||
        line.starts_with("#EXT-X-SKIP:"))
        playlist.losses.low_latency = parser.lines.line_number;
    // Dates, session data and every other tag are of no interest here.
}

}  // namespace

int read_playlist(const std::string& path, Playlist& playlist) {
    playlist = {};
    LineReader lines;
    lines.file = open_input_file(path);
    if (!lines.file) {
        const char* reason = open_failure_text();
        const int status =
            fail(PLAYLIST_REFUSED, "playlist-manifest-path", "ERROR: Invalid manifest path: %s\n", path.c_str());
        report_unreadable(path, reason);
        return status;
    }
    PlaylistParser parser{lines, playlist_directory(path), playlist};
    std::string_view line;
    while (next_line(lines, line)) {
        if (line.starts_with("#EXT")) read_tag(parser, line);
    }
    playlist.losses.cut_short = std::ferror(lines.file.get()) != 0;
    playlist.losses.long_line = lines.last_long_line;
    if (lines.variant_count > 0 && lines.entry_count > 0) {
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-playlist-mixed", path,
                      "the playlist holds both variant streams and segments");
        playlist = {};
        return PLAYLIST_REFUSED;
    }
    playlist.is_master = lines.variant_count > 0;
    // Tags that were taken for another tag's address count: an empty entry each, at the end.
    playlist.media.resize(lines.media_count);
    playlist.variants.resize(lines.variant_count);
    playlist.iframe_variants.resize(lines.iframe_variant_count);
    playlist.entries.resize(lines.entry_count);
    return playlist.losses.cut_short ? PLAYLIST_CUT_SHORT : PLAYLIST_READ;
}

void report_playlist_losses(const std::string& path, const PlaylistLosses& losses) {
    using enum ReasonEffect;
    const PlaceScope scope({.playlist = path.c_str()});
    if (losses.cut_short)
        report_reason(FAILS_UNVALIDATED, "reason-playlist-cut-short", path, "the playlist cannot be read to its end");
    current_place.line = losses.long_line;
    if (losses.long_line > 0)
        report_reason(UNVALIDATED, "reason-playlist-long-line", path,
                      "line %u is longer than %d characters: its rest is read as the next line", losses.long_line,
                      LINE_SIZE - 1);
    current_place.line = losses.low_latency;
    if (losses.low_latency > 0)
        report_reason(REMARK, "reason-playlist-low-latency", path,
                      "EXT-X-PART, EXT-X-PRELOAD-HINT and EXT-X-SKIP are not read: only whole segments are validated");
    current_place.line = losses.early_byte_range;
    if (losses.early_byte_range > 0)
        report_reason(UNVALIDATED, "reason-playlist-early-byte-range", path,
                      "line %u: a byte range stands before EXTINF: it is not read, the segment is its whole file",
                      losses.early_byte_range);
}

std::string playlist_directory(const std::string& path) {
    if (path.ends_with('/') || path.ends_with('\\')) return path;
    const size_t slash = path.rfind('/');
    const size_t backslash = path.rfind('\\');
    size_t separator = backslash;
    if (backslash == std::string::npos || (slash != std::string::npos && slash > backslash)) separator = slash;
    // A separator at the very start deliberately does not count.
    if (separator == std::string::npos || separator == 0) return "";
    return path.substr(0, separator + 1);
}

}  // namespace quorlin
