#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "bits/file_reader.h"
#include "isobmff/box_walk.h"
#include "isobmff/read_limits.h"

namespace quorlin {

// Reading the payload of a box.

// Reads the fields that a box begins with into `bytes`. Those of a payload that is too short for them are taken from
// what lies after it, deliberately, since the walk goes back to the box's end; zeros where the file or range ends.
void read_fields(FileReader& reader, std::span<uint8_t> bytes);

// Reads the first bytes of a payload into `bytes`, zeros where the payload or the file ends before.
void read_payload_start(FileReader& reader, int64_t payload_size, std::span<uint8_t> bytes);

// Whether the payload has at least `size` bytes and can be read as a whole.
[[nodiscard]] bool is_whole(const ReadLimits& limits, const FileReader& reader, const Box& box, int64_t size);

// The entries of a table in a box.
struct EntryTable {
    uint64_t count = 0;
    uint32_t entry_size = 0;
    int64_t payload_left = 0;  // for them; below zero when the fields before them run past the payload
};

// To be asked before the entries are read. Those past the payload are taken from what follows it, deliberately, as with
// read_fields; they count as work. Returns 0, MP4_REFUSED when the file or byte range does not hold so many, or
// MP4_FINDING when the limit of work is reached; both end the walk.
[[nodiscard]] int admit_entries(ReadLimits& limits, const FileReader& reader, const Box& box, const EntryTable& table);

// Copies a whole payload; 0, or MP4_REFUSED when it runs past the file.
[[nodiscard]] int read_payload(const ReadLimits& limits, FileReader& reader, const Box& box,
                               std::vector<uint8_t>& payload);

}  // namespace quorlin
