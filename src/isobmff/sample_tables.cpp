#include "isobmff/sample_tables.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "bits/byte_order.h"
#include "isobmff/box_reader.h"

namespace {

// Entries are read in pieces: a multiple of every entry size.
constexpr uint32_t PIECE_SIZE = 24 * 512;

using AppendEntry = void (*)(SampleTables& tables, std::span<const uint8_t> entry);

// Reads `count` entries of `entry_size` bytes, of which `payload_left` bytes lie in the payload.
int read_entries(MediaContext& context, FileReader& reader, uint64_t count, uint32_t entry_size, int64_t payload_left,
                 AppendEntry append) {
    const uint64_t size = count * entry_size;
    const int status = admit_entries(context, reader, size, payload_left);
    if (status != 0) return status;
    std::array<uint8_t, PIECE_SIZE> piece{};
    SampleTables& tables = context.current_track->samples;
    for (uint64_t done = 0; done < size; done += PIECE_SIZE) {
        const std::span<uint8_t> bytes = std::span(piece).first(std::min<uint64_t>(size - done, PIECE_SIZE));
        read_payload_start(reader, static_cast<int64_t>(bytes.size()), bytes);
        for (size_t at = 0; at < bytes.size(); at += entry_size) append(tables, bytes.subspan(at, entry_size));
    }
    return 0;
}

// A full box with an entry count and then its entries.
int read_table(MediaContext& context, FileReader& reader, int64_t payload_size, uint32_t entry_size,
               AppendEntry append) {
    std::array<uint8_t, 8> header{};
    read_fields(reader, header);
    const int64_t left = payload_size - static_cast<int64_t>(header.size());
    return read_entries(context, reader, load_be32(header, 4), entry_size, left, append);
}

}  // namespace

int read_stsz(MediaContext& context, FileReader& reader, int64_t payload_size) {
    SampleTables& tables = context.current_track->samples;
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
    const int64_t left = payload_size - static_cast<int64_t>(header.size());
    return read_entries(context, reader, sample_count, 4, left, [](SampleTables& to, std::span<const uint8_t> entry) {
        append_samples(to, 1, load_be32(entry, 0));
    });
}

int read_stts(MediaContext& context, FileReader& reader, int64_t payload_size) {
    context.current_track->samples.time_to_sample.clear();
    return read_table(context, reader, payload_size, 8, [](SampleTables& tables, std::span<const uint8_t> entry) {
        tables.time_to_sample.push_back({load_be32(entry, 0), load_be32(entry, 4)});
    });
}

int read_stss(MediaContext& context, FileReader& reader, int64_t payload_size) {
    context.current_track->samples.sync_samples.clear();
    return read_table(context, reader, payload_size, 4, [](SampleTables& tables, std::span<const uint8_t> entry) {
        tables.sync_samples.push_back(load_be32(entry, 0));
    });
}

int read_ctts(MediaContext& context, FileReader& reader, int64_t payload_size) {
    context.current_track->samples.composition_offsets.clear();
    return read_table(context, reader, payload_size, 8, [](SampleTables& tables, std::span<const uint8_t> entry) {
        tables.composition_offsets.push_back({load_be32(entry, 0), load_be32(entry, 4)});
    });
}

int read_stsc(MediaContext& context, FileReader& reader, int64_t payload_size) {
    context.current_track->samples.sample_to_chunk.clear();
    return read_table(context, reader, payload_size, 12, [](SampleTables& tables, std::span<const uint8_t> entry) {
        tables.sample_to_chunk.push_back({load_be32(entry, 0), load_be32(entry, 4), load_be32(entry, 8)});
    });
}

int read_stco(MediaContext& context, FileReader& reader, int64_t payload_size) {
    context.current_track->samples.chunk_offsets.clear();
    return read_table(context, reader, payload_size, 4, [](SampleTables& tables, std::span<const uint8_t> entry) {
        tables.chunk_offsets.push_back(load_be32(entry, 0));
    });
}

int read_co64(MediaContext& context, FileReader& reader, int64_t payload_size) {
    context.current_track->samples.chunk_offsets.clear();
    return read_table(context, reader, payload_size, 8, [](SampleTables& tables, std::span<const uint8_t> entry) {
        tables.chunk_offsets.push_back(load_be64(entry, 0));
    });
}

void clear_sample_tables(SampleTables& tables) {
    tables.sizes.clear();
    tables.sample_count = 0;
    tables.chunk_offsets.clear();
    tables.sample_to_chunk.clear();
    tables.time_to_sample.clear();
    tables.decode_times.clear();
    tables.composition_offsets.clear();
    tables.sync_samples.clear();
    tables.media_duration = 0;
}

void append_samples(SampleTables& tables, uint32_t count, uint32_t size) {
    if (count == 0) return;
    tables.sample_count += count;
    if (!tables.sizes.empty()) {
        SizeRun& last = tables.sizes.back();
        if (last.size == size && count <= std::numeric_limits<uint32_t>::max() - last.count) {
            last.count += count;
            return;
        }
    }
    tables.sizes.push_back({count, size});
}

uint32_t samples_in_chunk(const SampleTables& tables, SampleCursor& cursor) {
    const std::vector<SampleToChunk>& rows = tables.sample_to_chunk;
    const size_t number = cursor.chunk + 1;
    while (cursor.row + 1 < rows.size() && rows[cursor.row + 1].first_chunk <= number) ++cursor.row;
    if (cursor.row >= rows.size() || rows[cursor.row].first_chunk > number) return 0;
    return rows[cursor.row].samples_per_chunk;
}

bool sample_size(const SampleTables& tables, const SampleCursor& cursor, uint32_t& size) {
    if (cursor.run >= tables.sizes.size()) return false;
    size = tables.sizes[cursor.run].size;
    return true;
}

void next_sample(const SampleTables& tables, SampleCursor& cursor) {
    if (++cursor.used < tables.sizes[cursor.run].count) return;
    ++cursor.run;
    cursor.used = 0;
}
