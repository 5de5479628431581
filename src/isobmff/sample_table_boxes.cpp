#include "isobmff/sample_table_boxes.h"

#include <algorithm>
#include <array>
#include <span>

#include "bits/byte_order.h"
#include "isobmff/box_payload.h"
#include "isobmff/media_context.h"

namespace quorlin {

namespace {

// Entries are read in pieces: a multiple of every entry size.
constexpr uint32_t PIECE_SIZE = 24 * 512;

using Entry = std::span<const uint8_t>;

// Reads the entries of a table and gives each to `append`.
template <class Append>
int read_entries(ReadLimits& limits, FileReader& reader, const Box& box, const EntryTable& table, Append append) {
    const int status = admit_entries(limits, reader, box, table);
    if (status != 0) return status;
    std::array<uint8_t, PIECE_SIZE> piece{};
    const uint64_t size = table.count * table.entry_size;
    for (uint64_t done = 0; done < size; done += PIECE_SIZE) {
        const std::span<uint8_t> bytes = std::span(piece).first(std::min<uint64_t>(size - done, PIECE_SIZE));
        read_payload_start(reader, static_cast<int64_t>(bytes.size()), bytes);
        for (size_t at = 0; at < bytes.size(); at += table.entry_size) append(bytes.subspan(at, table.entry_size));
    }
    return 0;
}

// A full box with an entry count and then its entries of `entry_size` bytes.
template <class Append>
int read_table(ReadLimits& limits, FileReader& reader, const Box& box, uint32_t entry_size, Append append) {
    std::array<uint8_t, 8> header{};
    read_fields(reader, header);
    const int64_t left = box.payload_size - static_cast<int64_t>(header.size());
    return read_entries(limits, reader, box, {load_be32(header, 4), entry_size, left}, append);
}

}  // namespace

int read_stsz(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    SampleTables& tables = track.samples;
    tables.sizes.clear();
    tables.sample_count = 0;
    std::array<uint8_t, 12> header{};
    read_fields(reader, header);
    const uint32_t sample_size = load_be32(header, 4);
    const uint32_t sample_count = load_be32(header, 8);
    if (sample_size != 0) {
        append_samples(tables, sample_count, sample_size);
        return 0;
    }
    const int64_t left = box.payload_size - static_cast<int64_t>(header.size());
    return read_entries(context.limits, reader, box, {sample_count, 4, left},
                        [&tables](Entry entry) { append_samples(tables, 1, load_be32(entry, 0)); });
}

int read_stts(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    auto& rows = track.samples.time_to_sample;
    rows.clear();
    return read_table(context.limits, reader, box, 8, [&rows](Entry entry) {
        rows.push_back({load_be32(entry, 0), load_be32(entry, 4)});
    });
}

int read_stss(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    auto& numbers = track.samples.sync_samples;
    numbers.clear();
    return read_table(context.limits, reader, box, 4,
                      [&numbers](Entry entry) { numbers.push_back(load_be32(entry, 0)); });
}

int read_ctts(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    auto& rows = track.samples.composition_offsets;
    rows.clear();
    return read_table(context.limits, reader, box, 8, [&rows](Entry entry) {
        rows.push_back({load_be32(entry, 0), load_be32(entry, 4)});
    });
}

int read_stsc(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    auto& rows = track.samples.sample_to_chunk;
    rows.clear();
    return read_table(context.limits, reader, box, 12, [&rows](Entry entry) {
        rows.push_back({load_be32(entry, 0), load_be32(entry, 4), load_be32(entry, 8)});
    });
}

int read_stco(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    auto& offsets = track.samples.chunk_offsets;
    offsets.clear();
    return read_table(context.limits, reader, box, 4,
                      [&offsets](Entry entry) { offsets.push_back(load_be32(entry, 0)); });
}

int read_co64(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    auto& offsets = track.samples.chunk_offsets;
    offsets.clear();
    return read_table(context.limits, reader, box, 8,
                      [&offsets](Entry entry) { offsets.push_back(load_be64(entry, 0)); });
}

}  // namespace quorlin
