#pragma once

#include "bits/facts.h"
#include "driver/segment_source.h"
#include "playlist/byte_range.h"
#include "playlist/playlist.h"

namespace quorlin {

// As the facts have a text that may be absent.
inline const char* text_or_null(const Text& text) {
    return text ? text->c_str() : nullptr;
}

// Gives what is known of a playlist to the recorder: `facts` holds what a master playlist says of it.
void record_playlist_facts(const std::string& path, PlaylistFacts facts, const Playlist& playlist);

// Gives what is known of an entry that names a segment to the recorder. The source is open on it, or on nothing.
// `address` is the entry's as the playlist writes it.
void record_segment_facts(const SegmentSource& source, const SegmentEntry& entry, const char* address,
                          const ByteSpan& range);

// The same for a transport stream that no playlist names.
void record_file_facts(const FileReader& reader);

}  // namespace quorlin
