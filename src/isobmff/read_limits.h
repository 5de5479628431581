#pragma once

#include <cstdint>

#include "bits/file_reader.h"

namespace quorlin {

// What a segment may read: no byte outside its file or byte range, and no byte without end. Tables that name the same
// data again and again, entries that lie in several boxes and empty samples by the million cost work; other content
// stays far below the limit.
struct ReadLimits {
    uint64_t file_size = 0;
    uint64_t range_length = 0;  // 0: the whole file
    uint64_t work_left = 0;     // in bytes handled
};

// The work that a segment may cause: so much for each byte of its file, and so much more however small the file is.
constexpr uint64_t WORK_PER_BYTE = 16;
constexpr uint64_t WORK_OF_ANY_FILE = uint64_t{4} << 20;

// The limits of the file or byte range that `reader` is started on.
inline ReadLimits limits_of(FileReader& reader) {
    ReadLimits limits;
    limits.file_size = reader_file_size(reader);
    limits.range_length = reader.limited ? static_cast<uint64_t>(reader.remaining) : 0;
    limits.work_left = WORK_PER_BYTE * limits.file_size + WORK_OF_ANY_FILE;
    return limits;
}

inline void spend_work(ReadLimits& limits, uint64_t work) {
    limits.work_left -= work < limits.work_left ? work : limits.work_left;
}

inline bool work_remains(const ReadLimits& limits) {
    return limits.work_left > 0;
}

// Whether `size` bytes can be read from the reader's position.
inline bool can_deliver(const ReadLimits& limits, const FileReader& reader, uint64_t size) {
    if (size == 0) return true;
    if (reader.position >= limits.file_size || size > limits.file_size - reader.position) return false;
    return !reader.limited || (reader.remaining > 0 && size <= static_cast<uint64_t>(reader.remaining));
}

}  // namespace quorlin
