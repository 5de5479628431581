#include "isobmff/box_reader.h"

#include <algorithm>
#include <new>

#include "bits/place.h"
#include "isobmff/box_report.h"
#include "isobmff/media_context.h"

namespace quorlin {

namespace {

constexpr uint32_t SIZE_TO_THE_END = 0;
constexpr uint32_t SIZE_IS_64_BIT = 1;

constexpr BoxType UNKNOWN = {0, BoxHandler{nullptr}};

const BoxType& find_box_type(std::span<const BoxType> box_types, uint32_t type) {
    for (const BoxType& row : box_types)
        if (row.type == type) return row;
    return UNKNOWN;
}

bool is_passed_over(const BoxType& type) {
    return type.handler == nullptr && type.track_handler == nullptr;
}

// Sample data that ends the file or range is not skipped in fact: nothing is read after it, and the start of the
// segment, where the samples are, stays in the reader's buffer. `left` is what the container had with the box's header.
bool may_stay_before(const MediaContext& context, const FileReader& reader, const Box& box, int64_t left) {
    return context.walk.depth == 1 && left <= box.payload_size + BOX_HEADER_SIZE &&
           (!reader.limited || reader.remaining >= box.payload_size);
}

// Memory that a handler does not get ends the walk as a malformed box does.
int run_handler(MediaContext& context, FileReader& reader, const Box& box, const BoxType& type) {
    try {
        if (type.handler != nullptr) return type.handler(context, reader, box);
        TrackRecord* track = context.walk.current_track;
        return type.track_handler != nullptr && track != nullptr ? type.track_handler(context, reader, box, *track) : 0;
    } catch (const std::bad_alloc&) {
        return refuse_box(reader, box, "reason-mp4-box-memory", "memory is short for what it holds");
    }
}

// Reads a box's header, in a container with `left` bytes, of which a 64-bit size takes 8. Returns 0 or MP4_REFUSED.
int read_header(FileReader& reader, Box& box, int64_t& left) {
    int64_t size = read_be32(reader);
    box.type = read_be32(reader);
    if (size == SIZE_TO_THE_END) {
        size = left;
    } else if (size == SIZE_IS_64_BIT) {
        const uint64_t largesize = read_be64(reader);
        left -= BOX_HEADER_SIZE;
        if (largesize > static_cast<uint64_t>(INT64_MAX))
            return refuse_box(reader, box, "reason-mp4-box-size-range", "its size is out of range");
        size = static_cast<int64_t>(largesize) - BOX_HEADER_SIZE;
    }
    // Deliberately lax: the payload is measured against what is left with the header, so a box may reach up to 8 bytes
    // past its container.
    box.payload_size = size - BOX_HEADER_SIZE;
    if (box.payload_size < 0)
        return refuse_box(reader, box, "reason-mp4-box-size-below-header", "its size is smaller than its header");
    if (box.payload_size > left)
        return refuse_box(reader, box, "reason-mp4-box-larger-than-container",
                          "it is larger than what is left of its container");
    return 0;
}

// Reads one box of a container with `left` bytes; `left` becomes what is after the box.
int walk_box(MediaContext& context, FileReader& reader, int64_t& left) {
    Box box;
    box.offset = reader.position;
    current_place.offset = static_cast<int64_t>(box.offset);
    int status = read_header(reader, box, left);
    if (status != 0) return status;
    const uint64_t end = reader.position + static_cast<uint64_t>(box.payload_size);
    const BoxType& type = find_box_type(context.walk.box_types, box.type);
    status = run_handler(context, reader, box, type);
    const bool stay = is_passed_over(type) && may_stay_before(context, reader, box, left);
    if (reader.position != end && !stay) reader_skip(static_cast<int64_t>(end - reader.position), reader);
    left -= box.payload_size + BOX_HEADER_SIZE;
    return status;
}

}  // namespace

int walk_container(MediaContext& context, FileReader& reader, const Box& container) {
    if (container.payload_size < 1) return 0;
    if (context.walk.depth == MAX_BOX_DEPTH)
        return refuse_box(reader, container, "reason-mp4-box-depth", "boxes are nested too deeply");
    ++context.walk.depth;
    int64_t left = container.payload_size;
    int status = 0;
    while (left >= 1 && status == 0) {
        status = walk_box(context, reader, left);
        if (status == 0) current_place.offset = static_cast<int64_t>(container.offset);
    }
    --context.walk.depth;
    return status;
}

Box children_after(const Box& container, size_t size) {
    Box rest = container;
    rest.payload_size -= static_cast<int64_t>(size);
    return rest;
}

}  // namespace quorlin
