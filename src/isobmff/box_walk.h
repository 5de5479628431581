#pragma once

#include <cstdint>
#include <span>

#include "bits/file_reader.h"

namespace quorlin {

struct MediaContext;
struct TrackRecord;

constexpr int64_t BOX_HEADER_SIZE = 8;
constexpr size_t FULL_BOX_HEADER_SIZE = 4;  // version and flags, after the box header
constexpr uint32_t MAX_BOX_DEPTH = 64;

// A box may reach 8 bytes past its container (see read_header in box_reader.cpp), nested ones each by 8.
constexpr uint64_t MAX_OVERRUN = uint64_t{MAX_BOX_DEPTH} * BOX_HEADER_SIZE;

struct Box {
    uint32_t type = 0;
    uint64_t offset = 0;       // of its header
    int64_t payload_size = 0;  // from the reader's position when the box is handed to its handler
};

// Reads a box's payload from the reader's position; returns 0 to go on, else ends the walk. The walk puts the reader at
// the end of the box afterwards, whatever the handler read. A handler may run out of memory: that ends the walk, too.
using BoxHandler = int (*)(MediaContext& context, FileReader& reader, const Box& box);

// The same for a box of the current track. Where no track is current, as in the hdlr of a movie's metadata, such a box
// is passed over.
using TrackBoxHandler = int (*)(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track);

// A row of the table of boxes: one of the handlers, or neither for a box that is passed over.
struct BoxType {
    uint32_t type = 0;
    BoxHandler handler = nullptr;
    TrackBoxHandler track_handler = nullptr;

    constexpr BoxType(uint32_t code, BoxHandler any) : type(code), handler(any) {}
    constexpr BoxType(uint32_t code, TrackBoxHandler of_track) : type(code), track_handler(of_track) {}
};

// One walk over the boxes of a segment.
struct BoxWalk {
    std::span<const BoxType> box_types;
    uint64_t number = 0;  // counts the walks of a context
    uint32_t depth = 0;
    int status = 0;                        // findings of the box handlers
    TrackRecord* current_track = nullptr;  // inside a trak, or named by the last trex or tfhd
    uint64_t moof_start = 0;
    uint32_t fragment_sequence_number = 0;
    bool unknown_track_reported = false;
};

}  // namespace quorlin
