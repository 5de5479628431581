#pragma once

#include <cstdio>
#include <string>

#include "bits/recorder.h"

namespace quorlin {

// A recorder that prints ids, places and the facts of streams, instead of texts.

inline std::string known(int64_t value, int64_t none) {
    return value == none ? "-" : std::to_string(value);
}

inline void print_place(const char* id, const Place& place) {
    std::printf("%s: byte %s, stream %s, time %s\n", id, known(place.offset, NO_OFFSET).c_str(),
                known(place.stream, NO_STREAM).c_str(), known(place.time, NO_TIME).c_str());
}

inline void print_stream(const StreamFacts& facts) {
    std::printf("stream %s %s: %s to %s, end %s, %llu units, %llu bytes, %u channels\n",
                known(facts.id, NO_STREAM).c_str(), facts.codec, known(facts.first_time, NO_TIME).c_str(),
                known(facts.last_time, NO_TIME).c_str(), known(facts.end_time, NO_TIME).c_str(),
                static_cast<unsigned long long>(facts.units), static_cast<unsigned long long>(facts.payload_bytes),
                facts.channels);
}

inline constexpr Recorder PLACE_RECORDER = {
    .finding = [](const Finding& finding) { print_place(finding.id, finding.place); },
    .text = [](std::string_view) {},
    .verdict = [](std::string_view, bool) {},
    .reason = [](const Reason& reason) { print_place(reason.id, reason.place); },
    .playlist = [](const PlaylistFacts&, const Place&) {},
    .segment =
        [](const SegmentFacts& segment, const Place&) {
            for (const StreamFacts& stream : segment.streams) print_stream(stream);
        },
};

}  // namespace quorlin
