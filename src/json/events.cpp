#include "json/events.h"

#include <cstdio>

#include "json/json_writer.h"

namespace quorlin {

namespace {

// Its line keeps its room from event to event.
JsonWriter json;
bool verdict_written = false;

void begin_event(std::string_view name) {
    json.line.clear();
    json.first = true;
    begin_object(json);
    put_text(json, "event", name);
}

// Standard output is line buffered: the event is out when it happens.
void write_event() {
    end_object(json);
    json.line += '\n';
    std::fwrite(json.line.data(), 1, json.line.size(), stdout);
}

void put_time(std::string_view name, int64_t time) {
    if (time == NO_TIME)
        put_null(json, name);
    else
        put_number(json, name, time);
}

// Below 0 means absent: null.
void put_non_negative(std::string_view name, int64_t value) {
    if (value < 0)
        put_null(json, name);
    else
        put_number(json, name, value);
}

// 0 stands for unknown.
void put_positive(std::string_view name, uint32_t value) {
    if (value == 0)
        put_null(json, name);
    else
        put_unsigned(json, name, value);
}

void put_playlist_place(const Place& place) {
    put_optional_text(json, "playlist", place.playlist);
    put_positive("line", place.line);
}

void put_place(const Place& place) {
    put_playlist_place(place);
    put_optional_text(json, "segment", place.segment);
    put_non_negative("offset", place.offset);
    put_non_negative("stream", place.stream);
    put_time("time", place.time);
}

void write_finding(const Finding& finding) {
    begin_event("finding");
    put_text(json, "id", finding.id);
    put_text(json, "text", finding.text);
    put_flag(json, "fails", finding.fails);
    put_flag(json, "repeated", finding.place.repeated);
    put_place(finding.place);
    write_event();
}

void write_text(std::string_view text) {
    begin_event("text");
    put_text(json, "text", text);
    write_event();
}

void write_verdict(std::string_view text, const char* result, int exit_code) {
    begin_event("verdict");
    put_text(json, "text", text);
    put_optional_text(json, "result", result);
    put_number(json, "exit_code", exit_code);
    write_event();
    verdict_written = true;
}

void write_reached_verdict(std::string_view text, bool passed) {
    write_verdict(text, passed ? "PASSED" : "FAILED", 0);
}

void write_reason(const Reason& reason) {
    begin_event("reason");
    put_text(json, "id", reason.id);
    put_text(json, "reason", reason.reason);
    put_text(json, "file", reason.file);
    put_flag(json, "fails", reason.fails);
    put_flag(json, "unvalidated", reason.unvalidated);
    put_place(reason.place);
    write_event();
}

// A media playlist that a master playlist names has its place there.
void write_playlist(const PlaylistFacts& playlist, const Place& place) {
    begin_event("playlist");
    put_text(json, "playlist", playlist.path);
    put_positive("line", place.line);
    put_flag(json, "master", playlist.master);
    put_optional_text(json, "group_id", playlist.group_id);
    put_optional_text(json, "name", playlist.name);
    put_optional_text(json, "language", playlist.language);
    put_optional_text(json, "codecs", playlist.codecs);
    put_decimal(json, "bandwidth", playlist.bandwidth);
    put_decimal(json, "average_bandwidth", playlist.average_bandwidth);
    put_optional_text(json, "resolution", playlist.resolution);
    put_decimal(json, "target_duration", playlist.target_duration);
    put_decimal(json, "media_sequence", playlist.media_sequence);
    put_optional_text(json, "playlist_type", playlist.playlist_type);
    put_optional_text(json, "key_method", playlist.key_method);
    put_flag(json, "end_list", playlist.end_list);
    put_unsigned(json, "segments", playlist.segment_count);
    write_event();
}

const char* container_name(Container container) {
    switch (container) {
        case Container::TRANSPORT_STREAM:
            return "ts";
        case Container::ISO_MEDIA:
            return "mp4";
        case Container::PACKED_AUDIO:
            return "packed";
        case Container::UNKNOWN:
            break;
    }
    return nullptr;
}

void put_stream(const StreamFacts& stream) {
    begin_object(json);
    put_non_negative("id", stream.id);
    put_text(json, "codec", stream.codec);
    put_time("first_time", stream.first_time);
    put_time("last_time", stream.last_time);
    put_time("end_time", stream.end_time);
    put_unsigned(json, "units", stream.units);
    put_unsigned(json, "payload_bytes", stream.payload_bytes);
    put_positive("channels", stream.channels);
    put_positive("data_rate_kbps", stream.data_rate_kbps);
    end_object(json);
}

void write_segment(const SegmentFacts& segment, const Place& place) {
    begin_event("segment");
    put_playlist_place(place);
    put_text(json, "segment", segment.path);
    put_text(json, "uri", segment.uri);
    put_optional_text(json, "container", container_name(segment.container));
    put_flag(json, "init", segment.init);
    put_decimal(json, "duration", segment.duration);
    if (segment.range_start)
        put_unsigned(json, "range_start", *segment.range_start);
    else
        put_null(json, "range_start");
    if (segment.range_length)
        put_unsigned(json, "range_length", *segment.range_length);
    else
        put_null(json, "range_length");
    put_unsigned(json, "bytes_read", segment.bytes_read);
    put_unsigned(json, "discontinuity_sequence", segment.discontinuity_sequence);
    begin_array(json, "streams");
    for (const StreamFacts& stream : segment.streams) put_stream(stream);
    end_array(json);
    write_event();
}

constexpr Recorder RECORDER = {write_finding, write_text,     write_reached_verdict,
                               write_reason,  write_playlist, write_segment};

}  // namespace

void write_start(const char* version, const char* input) {
    verdict_written = false;
    begin_event("start");
    put_number(json, "schema", EVENT_SCHEMA_VERSION);
    put_text(json, "program", "quorlin");
    put_text(json, "version", version);
    put_optional_text(json, "input", input);
    write_event();
}

const Recorder& event_recorder() {
    return RECORDER;
}

void write_end(int exit_code) {
    if (!verdict_written) write_verdict("", nullptr, exit_code);
}

}  // namespace quorlin
