#include "driver/segment_facts.h"

#include <algorithm>
#include <utility>

#include "bits/recorder.h"

namespace quorlin {

namespace {

const char* key_method(const Playlist& playlist) {
    const auto& methods = playlist.key_methods;
    const auto found =
        std::find_if(methods.begin(), methods.end(), [](const auto& method) { return method != "NONE"; });
    return found != methods.end() ? found->c_str() : nullptr;
}

bool is_segment(const SegmentEntry& entry) {
    return entry.kind == SegmentKind::MEDIA || entry.kind == SegmentKind::BYTE_RANGE;
}

Container container_of(SegmentFormat format) {
    switch (format) {
        case SegmentFormat::TRANSPORT_STREAM:
            return Container::TRANSPORT_STREAM;
        case SegmentFormat::ISO_MEDIA:
            return Container::ISO_MEDIA;
        case SegmentFormat::PACKED_AUDIO:
            return Container::PACKED_AUDIO;
        default:
            return Container::UNKNOWN;
    }
}

// The bytes of the file, or of its range as far as the file goes.
uint64_t bytes_to_read(const FileReader& reader, const ByteSpan& range) {
    if (!reader.file) return 0;
    const uint64_t size = reader_file_size(reader);
    const uint64_t left = size - std::min(range.offset, size);
    return range.length != 0 ? std::min(range.length, left) : left;
}

}  // namespace

void record_playlist_facts(const std::string& path, PlaylistFacts facts, const Playlist& playlist) {
    if (current_recorder() == nullptr) return;
    facts.path = path.c_str();
    facts.master = playlist.is_master;
    if (!playlist.is_master) {
        facts.target_duration = text_or_null(playlist.target_duration);
        facts.media_sequence = text_or_null(playlist.media_sequence);
        facts.playlist_type = text_or_null(playlist.playlist_type);
        facts.key_method = key_method(playlist);
        for (const SegmentEntry& entry : playlist.entries) {
            facts.segment_count += is_segment(entry);
            facts.end_list |= entry.kind == SegmentKind::END_LIST;
        }
    }
    record_playlist(facts);
}

void record_segment_facts(const SegmentSource& source, const SegmentEntry& entry, const char* address,
                          const ByteSpan& range) {
    if (current_recorder() == nullptr) return;
    SegmentFacts facts;
    facts.container = source.reader.file ? container_of(source.format) : Container::UNKNOWN;
    facts.init = entry.kind == SegmentKind::INIT;
    facts.path = entry.path ? entry.path->c_str() : "";
    facts.uri = address;
    facts.duration = text_or_null(entry.duration);
    if (range.length != 0) {
        facts.range_start = range.offset;
        facts.range_length = range.length;
    }
    facts.bytes_read = bytes_to_read(source.reader, range);
    facts.discontinuity_sequence = entry.discontinuity_sequence;
    record_segment(std::move(facts));
}

void record_file_facts(const FileReader& reader) {
    if (current_recorder() == nullptr) return;
    SegmentFacts facts;
    facts.container = Container::TRANSPORT_STREAM;
    facts.path = reader.path.c_str();
    // A pipe has no size.
    facts.bytes_read = std::max(bytes_to_read(reader, {}), reader.position);
    record_segment(std::move(facts));
}

}  // namespace quorlin
