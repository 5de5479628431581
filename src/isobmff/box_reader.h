#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "bits/file_reader.h"
#include "isobmff/media_context.h"

// The walk over the boxes of ISO/IEC 14496-12, 4.2. No tree is kept: each box is handled as it is met.

// Reads a box's payload of `payload_size` bytes from the reader's position; returns 0 to go on, else ends the walk. The
// walk puts the reader at the end of the box afterwards, whatever the handler read. A handler may run out of memory:
// that ends the walk, too.
using BoxHandler = int (*)(MediaContext& context, FileReader& reader, int64_t payload_size);

struct BoxType {
    uint32_t type = 0;
    BoxHandler handler = nullptr;  // null: passed over
    bool needs_track = false;      // passed over where no track is the current one
};

// Walks `payload_size` bytes of boxes, which the context's find_box_type tells apart. Returns 0, 1 for a malformed box,
// or the first non-zero handler result.
[[nodiscard]] int walk_container(MediaContext& context, FileReader& reader, int64_t payload_size);

// Says on standard error which box breaks which rule, where the walk goes on and leaves something out. `rule` is a
// plain text.
void note_box(const MediaContext& context, const FileReader& reader, const char* id, const char* rule);

// The same, where the walk ends; returns 1.
[[nodiscard]] int refuse_box(const MediaContext& context, const FileReader& reader, const char* id, const char* rule);

// A four-character code as text, "?" for what cannot be printed.
std::array<char, 5> printable_type(uint32_t type);

// Reads the fields that a box begins with into `bytes`. Those of a payload that is too short for them are taken from
// what lies after it, deliberately, since the walk goes back to the box's end; zeros where the file or range ends.
void read_fields(FileReader& reader, std::span<uint8_t> bytes);

// Reads the first bytes of a payload into `bytes`, zeros where the payload or the file ends before.
void read_payload_start(FileReader& reader, int64_t payload_size, std::span<uint8_t> bytes);

// To be asked before `size` bytes of table entries are read, of which `payload_left` lie in the payload. The others are
// taken from what follows it, deliberately, as with read_fields; they count as work. Returns 0, 1 when the file or byte
// range does not hold so many, or 11 when the limit of work is reached; both end the walk.
[[nodiscard]] int admit_entries(MediaContext& context, const FileReader& reader, uint64_t size, int64_t payload_left);

// Copies a whole payload; 0, or 1 when it runs past the file.
[[nodiscard]] int read_payload(MediaContext& context, FileReader& reader, int64_t payload_size,
                               std::vector<uint8_t>& payload);
