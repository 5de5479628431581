#include "isobmff/box_payload.h"

#include <algorithm>

#include "isobmff/box_report.h"

namespace quorlin {

namespace {

// Of each byte of table entries that is read on after a payload: in memory an entry takes more than in the file.
constexpr uint64_t READ_ON_WORK = 4;

}  // namespace

void read_fields(FileReader& reader, std::span<uint8_t> bytes) {
    const uint32_t delivered = reader_read(bytes.data(), static_cast<uint32_t>(bytes.size()), reader);
    std::fill(bytes.begin() + delivered, bytes.end(), uint8_t{0});
}

void read_payload_start(FileReader& reader, int64_t payload_size, std::span<uint8_t> bytes) {
    const size_t count = std::min(static_cast<size_t>(payload_size), bytes.size());
    read_fields(reader, bytes.first(count));
    std::fill(bytes.begin() + static_cast<ptrdiff_t>(count), bytes.end(), uint8_t{0});
}

bool is_whole(const ReadLimits& limits, const FileReader& reader, const Box& box, int64_t size) {
    return box.payload_size >= size && can_deliver(limits, reader, static_cast<uint64_t>(box.payload_size));
}

int admit_entries(ReadLimits& limits, const FileReader& reader, const Box& box, const EntryTable& table) {
    const uint64_t size = table.count * table.entry_size;
    if (!can_deliver(limits, reader, size))
        return refuse_box(reader, box, "reason-mp4-table-count",
                          "it counts more entries than the file or byte range holds");
    const uint64_t inside = table.payload_left > 0 ? static_cast<uint64_t>(table.payload_left) : 0;
    if (size <= inside) return 0;
    spend_work(limits, READ_ON_WORK * (size - inside));
    if (work_remains(limits)) return 0;
    return end_work_at_box(reader, box, "reason-mp4-table-work",
                           "tables claim many times the data that the file holds; the segment is not read on");
}

int read_payload(const ReadLimits& limits, FileReader& reader, const Box& box, std::vector<uint8_t>& payload) {
    const auto size = static_cast<uint64_t>(box.payload_size);
    const uint64_t available = limits.file_size > reader.position ? limits.file_size - reader.position : 0;
    if (size > available + MAX_OVERRUN || size > UINT32_MAX)
        return refuse_box(reader, box, "reason-mp4-box-past-end", "it runs past the end of the file");
    payload.resize(size);
    read_payload_start(reader, box.payload_size, payload);
    return 0;
}

}  // namespace quorlin
