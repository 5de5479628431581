#include "isobmff/fragment_boxes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <utility>

#include "bits/byte_order.h"
#include "bits/place.h"
#include "isobmff/box_payload.h"
#include "isobmff/box_reader.h"
#include "isobmff/box_report.h"
#include "isobmff/media_context.h"

namespace quorlin {

namespace {

// ISO/IEC 14496-12, 8.8.7.1.
enum TfhdFlag : uint32_t {
    TFHD_BASE_DATA_OFFSET = 0x000001,
    TFHD_SAMPLE_DESCRIPTION_INDEX = 0x000002,
    TFHD_DEFAULT_SAMPLE_DURATION = 0x000008,
    TFHD_DEFAULT_SAMPLE_SIZE = 0x000010,
};

// ISO/IEC 14496-12, 8.8.8.1.
enum TrunFlag : uint32_t {
    TRUN_DATA_OFFSET = 0x000001,
    TRUN_FIRST_SAMPLE_FLAGS = 0x000004,
    TRUN_SAMPLE_DURATION = 0x000100,
    TRUN_SAMPLE_SIZE = 0x000200,
    TRUN_SAMPLE_FLAGS = 0x000400,
    TRUN_SAMPLE_COMPOSITION_OFFSET = 0x000800,
};
constexpr uint32_t TRUN_PER_SAMPLE_FIELDS =
    TRUN_SAMPLE_DURATION | TRUN_SAMPLE_SIZE | TRUN_SAMPLE_FLAGS | TRUN_SAMPLE_COMPOSITION_OFFSET;

// ISO/IEC 14496-12, 8.8.3.1: sample_depends_on of the sample flags, and its value "does not depend on others".
constexpr uint32_t SAMPLE_DEPENDS_ON_MASK = 0x03000000;
constexpr uint32_t SAMPLE_IS_INDEPENDENT = 0x02000000;

constexpr uint32_t MAX_ENTRY_SIZE = 16;
constexpr uint32_t ENTRIES_AT_ONCE = 512;

// Of tracks with one ID the first has the fragments.
TrackRecord* find_track(const MediaContext& context, uint32_t track_ID) {
    for (const std::unique_ptr<TrackRecord>& track : context.tracks)
        if (track->track_ID == track_ID) return track.get();
    return nullptr;
}

// Reads the fields of a sample one after the other.
struct FieldReader {
    std::span<const uint8_t> bytes;
    size_t position = 0;

    uint32_t next32() {
        position += 4;
        return load_be32(bytes, position - 4);
    }
};

struct TrackRun {
    uint32_t flags = 0;
    uint32_t sample_count = 0;
    int32_t data_offset = 0;
    uint32_t first_sample_flags = 0;
    int64_t header_size = 0;
};

TrackRun read_run_header(FileReader& reader) {
    TrackRun run;
    run.flags = read_be32(reader) & 0xFFFFFF;
    run.sample_count = read_be32(reader);
    run.header_size = 8;
    if ((run.flags & TRUN_DATA_OFFSET) != 0) {
        run.data_offset = static_cast<int32_t>(read_be32(reader));
        run.header_size += 4;
    }
    if ((run.flags & TRUN_FIRST_SAMPLE_FLAGS) != 0) {
        run.first_sample_flags = read_be32(reader);
        run.header_size += 4;
    }
    return run;
}

// One sample of a run, ISO/IEC 14496-12, 8.8.8.2.
void append_run_sample(TrackRecord& track, uint32_t flags, FieldReader entry) {
    SampleTables& samples = track.samples;
    if ((flags & TRUN_SAMPLE_DURATION) != 0) {
        const uint32_t duration = entry.next32();
        samples.time_to_sample.push_back({1, duration});
        samples.media_duration += duration;
    }
    append_samples(samples, 1, (flags & TRUN_SAMPLE_SIZE) != 0 ? entry.next32() : track.fragment.default_sample_size);
    if ((flags & TRUN_SAMPLE_FLAGS) != 0) entry.next32();
    if ((flags & TRUN_SAMPLE_COMPOSITION_OFFSET) != 0) samples.composition_offsets.push_back({1, entry.next32()});
}

void append_run_samples(TrackRecord& track, FileReader& reader, const TrackRun& run, uint32_t entry_size) {
    if (entry_size == 0) {
        append_samples(track.samples, run.sample_count, track.fragment.default_sample_size);
        return;
    }
    std::array<uint8_t, size_t{MAX_ENTRY_SIZE} * ENTRIES_AT_ONCE> piece{};
    for (uint32_t done = 0; done < run.sample_count; done += ENTRIES_AT_ONCE) {
        const uint32_t count = std::min(run.sample_count - done, ENTRIES_AT_ONCE);
        const std::span<uint8_t> bytes = std::span(piece).first(size_t{count} * entry_size);
        read_payload_start(reader, static_cast<int64_t>(bytes.size()), bytes);
        for (size_t at = 0; at < bytes.size(); at += entry_size)
            append_run_sample(track, run.flags, {bytes.subspan(at, entry_size), 0});
    }
}

// The first run of a traf begins at the time of its tfdt; the others go on.
void append_decode_time(TrackRecord& track) {
    SampleTables& samples = track.samples;
    if (track.fragment.decode_time || samples.sample_count == 0)
        samples.decode_times.push_back({samples.sample_count, track.fragment.decode_time});
    track.fragment.decode_time.reset();
}

// The run becomes a chunk of its own.
void append_run(TrackRecord& track, FileReader& reader, const TrackRun& run, uint32_t entry_size) {
    SampleTables& samples = track.samples;
    append_decode_time(track);
    if ((run.flags & TRUN_FIRST_SAMPLE_FLAGS) != 0 &&
        (run.first_sample_flags & SAMPLE_DEPENDS_ON_MASK) == SAMPLE_IS_INDEPENDENT)
        samples.sync_samples.push_back(static_cast<uint32_t>(samples.sample_count + 1));
    samples.chunk_offsets.push_back(track.fragment.base_data_offset + static_cast<uint64_t>(int64_t{run.data_offset}));
    samples.sample_to_chunk.push_back({static_cast<uint32_t>(samples.chunk_offsets.size()), run.sample_count,
                                       track.fragment.default_sample_description_index});
    if ((run.flags & TRUN_SAMPLE_DURATION) == 0) {
        samples.time_to_sample.push_back({run.sample_count, track.fragment.default_sample_duration});
        samples.media_duration += track.fragment.default_sample_duration * run.sample_count;  // 32 bits, which may wrap
    }
    append_run_samples(track, reader, run, entry_size);
}

}  // namespace

int read_moof(MediaContext& context, FileReader& reader, const Box& box) {
    const PlaceScope scope;
    // The same after a 64-bit size, which makes the header longer: deliberate.
    context.walk.moof_start = reader.position - BOX_HEADER_SIZE;
    return walk_container(context, reader, box);
}

int read_mfhd(MediaContext& context, FileReader& reader, const Box&) {
    std::array<uint8_t, 8> payload{};
    read_fields(reader, payload);
    context.walk.fragment_sequence_number = load_be32(payload, 4);
    return 0;
}

// The track becomes the current one, as with tfhd.
int read_trex(MediaContext& context, FileReader& reader, const Box&) {
    std::array<uint8_t, 20> payload{};
    read_fields(reader, payload);
    TrackRecord* track = find_track(context, load_be32(payload, 4));
    context.walk.current_track = track;
    if (track == nullptr) return 0;
    track->fragment.default_sample_description_index = load_be32(payload, 8);
    track->fragment.default_sample_duration = load_be32(payload, 12);
    track->fragment.default_sample_size = load_be32(payload, 16);
    return 0;
}

// A default given here holds for the later fragments too, deliberately: there is one field for it.
int read_tfhd(MediaContext& context, FileReader& reader, const Box& box) {
    const uint32_t flags = read_be32(reader) & 0xFFFFFF;
    const uint32_t track_ID = read_be32(reader);
    TrackRecord* track = find_track(context, track_ID);
    context.walk.current_track = track;
    current_place.stream = static_cast<int32_t>(track_ID);
    uint64_t base_data_offset = context.walk.moof_start;
    uint32_t base_high = 0;
    if ((flags & TFHD_BASE_DATA_OFFSET) != 0) {
        base_high = read_be32(reader);
        base_data_offset = read_be32(reader);
    }
    if (track != nullptr) {
        FragmentState& fragment = track->fragment;
        fragment.base_data_offset = base_data_offset;
        fragment.decode_time.reset();
        if ((flags & TFHD_SAMPLE_DESCRIPTION_INDEX) != 0) fragment.default_sample_description_index = read_be32(reader);
        if ((flags & TFHD_DEFAULT_SAMPLE_DURATION) != 0) fragment.default_sample_duration = read_be32(reader);
        if ((flags & TFHD_DEFAULT_SAMPLE_SIZE) != 0) fragment.default_sample_size = read_be32(reader);
    } else if (!context.init_refused && !std::exchange(context.walk.unknown_track_reported, true)) {
        report_box(reader, box, "reason-mp4-track-unknown",
                   "no track has its track ID: the samples of such fragments are not read");
    }
    // Only the low half is kept, deliberately.
    if (base_high != 0)
        return refuse_box(reader, box, "reason-mp4-base-data-offset", "its base data offset is 4 GiB or more");
    return 0;
}

// Only a box that is wholly there is read: another one is passed over, as all are that hold nothing that is validated.
int read_tfdt(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, 12> payload{};
    if (!is_whole(context.limits, reader, box, 8)) return 0;
    read_payload_start(reader, box.payload_size, payload);
    track.fragment.decode_time = payload[0] == 1 ? load_be64(payload, 4) : load_be32(payload, 4);
    return 0;
}

int read_trun(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    const TrackRun run = read_run_header(reader);
    const uint32_t entry_size = 4 * static_cast<uint32_t>(std::popcount(run.flags & TRUN_PER_SAMPLE_FIELDS));
    const EntryTable entries = {run.sample_count, entry_size, box.payload_size - run.header_size};
    const int status = admit_entries(context.limits, reader, box, entries);
    if (status != 0) return status;
    append_run(track, reader, run, entry_size);
    return 0;
}

}  // namespace quorlin
