#pragma once

#include <cstdint>

namespace quorlin {

constexpr int64_t NO_OFFSET = -1;
constexpr int32_t NO_STREAM = -1;
constexpr int64_t NO_TIME = INT64_MIN;

// Where in the content the run stands. The texts are borrowed: those of a playlist and its segments live until its last
// segment is validated, since a finding may be listed again long after the segment that raised it.
struct Place {
    const char* playlist = nullptr;  // path of the media or master playlist
    uint32_t line = 0;               // in the playlist, from 1: of the entry that is validated; 0 for none
    const char* segment = nullptr;   // path of the file that is read
    int64_t offset = NO_OFFSET;      // in bytes from the start of that file
    int32_t stream = NO_STREAM;      // PID or track_ID
    int64_t time = NO_TIME;          // 90 kHz ticks, the wraps of the 33-bit clock unrolled
    bool repeated = false;           // what is found now was found before and is listed again
};

// The place of what is found next. Ambient, like standard output: one thread, one place. Set by the few functions that
// know it, through a PlaceScope; what only moves on inside such a scope stores the field that moves.
inline Place current_place;

// Restores the place when the function that set it returns.
struct PlaceScope {
    Place saved = current_place;

    PlaceScope() = default;
    explicit PlaceScope(const Place& place) { current_place = place; }
    PlaceScope(const PlaceScope&) = delete;
    PlaceScope& operator=(const PlaceScope&) = delete;
    ~PlaceScope() { current_place = saved; }
};

}  // namespace quorlin
