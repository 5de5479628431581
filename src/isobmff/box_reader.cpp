#include "isobmff/box_reader.h"

#include <algorithm>
#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <new>

#include "bits/place.h"
#include "bits/report.h"
#include "isobmff/read_limits.h"

namespace {

constexpr int64_t BOX_HEADER_SIZE = 8;
constexpr uint32_t SIZE_TO_THE_END = 0;
constexpr uint32_t SIZE_IS_64_BIT = 1;
constexpr uint32_t MAX_DEPTH = 64;

// A box may reach 8 bytes past its container (see walk_container), nested ones each by 8.
constexpr uint64_t OVERRUN_SLACK = uint64_t{MAX_DEPTH} * BOX_HEADER_SIZE;

// Of each byte of table entries that is read on after a payload: in memory an entry takes more than in the file.
constexpr uint64_t READ_ON_WORK = 4;

// Sample data that ends the file or range is not skipped in fact: nothing is read after it, and the start of the
// segment, where the samples are, stays in the reader's buffer.
bool may_stay_in_front(const MediaContext& context, const FileReader& reader, int64_t left, int64_t payload) {
    return context.depth == 1 && left <= payload + BOX_HEADER_SIZE && (!reader.limited || reader.remaining >= payload);
}

// In quotes, or as a number when it cannot be printed.
std::array<char, 11> box_name(uint32_t type) {
    std::array<char, 11> name{};
    const std::array<char, 5> text = printable_type(type);
    if (std::strchr(text.data(), '?') != nullptr)
        std::snprintf(name.data(), name.size(), "0x%08" PRIX32, type);
    else
        std::snprintf(name.data(), name.size(), "'%s'", text.data());
    return name;
}

void report_box(ReasonEffect effect, const MediaContext& context, const FileReader& reader, const char* id,
                const char* rule) {
    report_reason(effect, id, reader.path, "box %s at byte %" PRIu64 ": %s", box_name(context.box.type).data(),
                  context.box.offset, rule);
}

// Memory that a handler does not get ends the walk as a malformed box does.
int run_handler(MediaContext& context, FileReader& reader, const BoxType& box, int64_t payload) {
    if (box.handler == nullptr || (box.needs_track && context.current_track == nullptr)) return 0;
    try {
        return box.handler(context, reader, payload);
    } catch (const std::bad_alloc&) {
        return refuse_box(context, reader, "reason-mp4-box-memory", "memory is short for what it holds");
    }
}

void enter_box(MediaContext& context, const BoxPlace& box) {
    context.box = box;
    current_place.offset = static_cast<int64_t>(box.offset);
}

// Reads one box of a container with `left` bytes; `left` becomes what is after the box.
int walk_box(MediaContext& context, FileReader& reader, int64_t& left) {
    const BoxPlace container = context.box;
    enter_box(context, {0, reader.position});
    int64_t size = read_be32(reader);
    context.box.type = read_be32(reader);
    if (size == SIZE_TO_THE_END) {
        size = left;
    } else if (size == SIZE_IS_64_BIT) {
        const uint64_t largesize = read_be64(reader);
        left -= BOX_HEADER_SIZE;
        if (largesize > static_cast<uint64_t>(INT64_MAX))
            return refuse_box(context, reader, "reason-mp4-box-size-range", "its size is out of range");
        size = static_cast<int64_t>(largesize) - BOX_HEADER_SIZE;
    }
    // Deliberately lax: the payload is measured against what is left with the header, so a box may reach up to 8 bytes
    // past its container.
    const int64_t payload = size - BOX_HEADER_SIZE;
    if (payload < 0)
        return refuse_box(context, reader, "reason-mp4-box-size-below-header", "its size is smaller than its header");
    if (payload > left)
        return refuse_box(context, reader, "reason-mp4-box-larger-than-container",
                          "it is larger than what is left of its container");

    const uint64_t end = reader.position + static_cast<uint64_t>(payload);
    const BoxType& box = context.find_box_type(context.box.type);
    const int status = run_handler(context, reader, box, payload);
    const bool stay = box.handler == nullptr && may_stay_in_front(context, reader, left, payload);
    if (reader.position != end && !stay) reader_skip(static_cast<int64_t>(end - reader.position), reader);
    left -= size;
    enter_box(context, container);
    return status;
}

}  // namespace

int walk_container(MediaContext& context, FileReader& reader, int64_t payload_size) {
    if (payload_size < 1) return 0;
    if (context.depth == MAX_DEPTH)
        return refuse_box(context, reader, "reason-mp4-box-depth", "boxes are nested too deeply");
    ++context.depth;
    int64_t left = payload_size;
    int status = 0;
    while (left >= 1 && status == 0) status = walk_box(context, reader, left);
    --context.depth;
    return status;
}

std::array<char, 5> printable_type(uint32_t type) {
    std::array<char, 5> text{};
    for (uint32_t i = 0; i < 4; ++i) {
        const auto c = static_cast<unsigned char>(type >> (24 - 8 * i) & 0xFF);
        text[i] = std::isprint(c) != 0 ? static_cast<char>(c) : '?';
    }
    return text;
}

void note_box(const MediaContext& context, const FileReader& reader, const char* id, const char* rule) {
    report_box(ReasonEffect::UNVALIDATED, context, reader, id, rule);
}

int refuse_box(const MediaContext& context, const FileReader& reader, const char* id, const char* rule) {
    report_box(ReasonEffect::FAILS_UNVALIDATED, context, reader, id, rule);
    return SEGMENT_REFUSED;
}

void read_fields(FileReader& reader, std::span<uint8_t> bytes) {
    const uint32_t delivered = reader_read(bytes.data(), static_cast<uint32_t>(bytes.size()), reader);
    std::fill(bytes.begin() + delivered, bytes.end(), uint8_t{0});
}

void read_payload_start(FileReader& reader, int64_t payload_size, std::span<uint8_t> bytes) {
    const size_t count = std::min(static_cast<size_t>(payload_size), bytes.size());
    read_fields(reader, bytes.first(count));
    std::fill(bytes.begin() + static_cast<ptrdiff_t>(count), bytes.end(), uint8_t{0});
}

int admit_entries(MediaContext& context, const FileReader& reader, uint64_t size, int64_t payload_left) {
    if (!can_deliver(context, reader, size))
        return refuse_box(context, reader, "reason-mp4-table-count",
                          "it counts more entries than the file or byte range holds");
    const uint64_t inside = payload_left > 0 ? static_cast<uint64_t>(payload_left) : 0;
    if (size <= inside) return 0;
    spend_work(context, READ_ON_WORK * (size - inside));
    if (work_remains(context)) return 0;
    report_box(ReasonEffect::FAILS_UNVALIDATED, context, reader, "reason-mp4-table-work",
               "tables claim many times the data that the file holds; the segment is not read on");
    return SEGMENT_FINDING;
}

int read_payload(MediaContext& context, FileReader& reader, int64_t payload_size, std::vector<uint8_t>& payload) {
    const auto size = static_cast<uint64_t>(payload_size);
    const uint64_t available = context.file_size > reader.position ? context.file_size - reader.position : 0;
    if (size > available + OVERRUN_SLACK || size > UINT32_MAX)
        return refuse_box(context, reader, "reason-mp4-box-past-end", "it runs past the end of the file");
    payload.resize(size);
    read_payload_start(reader, payload_size, payload);
    return 0;
}
