#include "bits/recorder.h"

#include <cstdio>
#include <string>
#include <utility>

namespace quorlin {

namespace {

const Recorder* recorder = nullptr;
std::vector<StreamFacts> segment_streams;

}  // namespace

void set_recorder(const Recorder* new_recorder) {
    recorder = new_recorder;
    segment_streams.clear();
}

const Recorder* current_recorder() {
    return recorder;
}

std::string_view format_text(const char* format, va_list args) {
    static std::string text(256, '\0');
    va_list again;
    va_copy(again, args);
    const int needed = std::vsnprintf(text.data(), text.size(), format, args);
    const size_t length = needed < 0 ? 0 : static_cast<size_t>(needed);
    if (length >= text.size()) {
        text.resize(length + 1);
        std::vsnprintf(text.data(), text.size(), format, again);
    }
    va_end(again);
    return {text.data(), length};
}

void record_stream(const StreamFacts& stream) {
    if (recorder != nullptr) segment_streams.push_back(stream);
}

void record_segment(SegmentFacts segment) {
    if (recorder == nullptr) return;
    segment.streams = std::exchange(segment_streams, {});
    recorder->segment(segment, current_place);
}

void record_playlist(const PlaylistFacts& playlist) {
    if (recorder != nullptr) recorder->playlist(playlist, current_place);
}

}  // namespace quorlin
