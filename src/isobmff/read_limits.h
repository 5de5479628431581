#pragma once

#include <cstdint>

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

// What a segment may read: no byte outside its file or byte range, and no byte without end. Tables that name the same
// data again and again, entries that lie in several boxes and empty samples by the million cost work; other content
// stays far below the limit.

// Sets the limit for the samples and boxes of a segment: 16 times the file and 4 MiB more, in bytes handled.
inline void start_work(MediaContext& context) {
    context.work_left = 16 * context.file_size + (uint64_t{4} << 20);
}

inline void spend_work(MediaContext& context, uint64_t work) {
    context.work_left -= work < context.work_left ? work : context.work_left;
}

inline bool work_remains(const MediaContext& context) {
    return context.work_left > 0;
}

// Whether `size` bytes can be read from the reader's position.
inline bool can_deliver(const MediaContext& context, const FileReader& reader, uint64_t size) {
    if (size == 0) return true;
    if (reader.position >= context.file_size || size > context.file_size - reader.position) return false;
    return !reader.limited || (reader.remaining > 0 && size <= static_cast<uint64_t>(reader.remaining));
}
