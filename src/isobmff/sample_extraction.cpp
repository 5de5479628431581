#include "isobmff/sample_extraction.h"

#include <algorithm>
#include <cinttypes>
#include <span>
#include <utility>
#include <vector>

#include "bits/recorder.h"
#include "bits/report.h"
#include "isobmff/adjacent_samples.h"
#include "isobmff/audio_sample_checks.h"
#include "isobmff/read_limits.h"
#include "isobmff/sample_cursor.h"
#include "isobmff/sample_times.h"
#include "isobmff/segment_status.h"
#include "isobmff/track_output.h"
#include "isobmff/video_samples.h"

namespace quorlin {

namespace {

// Samples of a chunk are read together up to this size; a larger sample alone.
constexpr uint32_t GROUP_SIZE = 0x100000;
constexpr size_t GROUP_SAMPLES = 0x4000;

// Read at once after a seek: the chunks of a track may lie far apart among those of many others.
constexpr uint32_t SEEK_READ_SIZE = 0x10000;

// Work beside the bytes of the samples (see ReadLimits). Samples with bytes of their own never use the limit up:
// one of a single byte takes 9 of WORK_PER_BYTE.
constexpr uint64_t SAMPLE_WORK = 8;
constexpr uint64_t ANALYSIS_WORK = 256;

// Samples that lie one after another.
struct SampleGroup {
    std::vector<uint32_t> sizes;
    uint32_t bytes = 0;
    bool cut = false;  // the sample after them is not there
};

struct Extraction {
    MediaContext& context;
    FileReader& reader;
    TrackRecord& track;
    SampleCursor cursor;
    SampleGroup group;
    bool first_sample = true;
};

// Takes samples of the current chunk, of which it has `left` more.
void gather_group(Extraction& extraction, uint32_t& left) {
    SampleGroup& group = extraction.group;
    const SampleTables& samples = extraction.track.samples;
    group.sizes.clear();
    group.bytes = 0;
    uint32_t size = 0;
    while (left > 0 && group.sizes.size() < GROUP_SAMPLES && sample_size(samples, extraction.cursor, size)) {
        const uint64_t bytes = uint64_t{group.bytes} + size;
        if (!group.sizes.empty() && bytes > GROUP_SIZE) break;
        group.cut = !can_deliver(extraction.context.limits, extraction.reader, bytes);
        if (group.cut) break;
        group.sizes.push_back(size);
        group.bytes = static_cast<uint32_t>(bytes);
        next_sample(samples, extraction.cursor);
        --left;
    }
}

int analyse_samples(Extraction& extraction, const AdjacentSamples& samples) {
    int status = 0;
    size_t begin = 0;
    for (const uint32_t size : samples.sizes) {
        enter_sample(extraction.track, samples.offset + begin, size);
        status |= check_audio_sample(extraction.track, samples.bytes.subspan(begin, size), extraction.first_sample);
        extraction.first_sample = false;
        begin += size;
    }
    return status;
}

void count_samples(TrackRecord& track, const AdjacentSamples& samples) {
    uint64_t offset = samples.offset;
    for (const uint32_t size : samples.sizes) {
        enter_sample(track, offset, size);
        offset += size;
    }
}

int handle_group(Extraction& extraction, const AdjacentSamples& samples) {
    TrackRecord& track = extraction.track;
    if (is_avc(track) || is_hevc(track)) return write_video_samples(extraction.context.limits, track, samples);
    int status = 0;
    if (is_analysed_audio(track))
        status = analyse_samples(extraction, samples);
    else if (current_recorder() != nullptr)
        count_samples(track, samples);
    return status | write_sample_data(track.output, samples.bytes);
}

// The work that the group means; false when that is beyond the limit.
bool spend_group_work(Extraction& extraction) {
    const uint64_t per_sample = is_analysed_audio(extraction.track) ? ANALYSIS_WORK : SAMPLE_WORK;
    spend_work(extraction.context.limits, extraction.group.bytes + per_sample * extraction.group.sizes.size());
    return work_remains(extraction.context.limits);
}

// Why the extraction ends before the track's last sample.
int report_cut(const Extraction& extraction) {
    const FileReader& reader = extraction.reader;
    const auto id = static_cast<int32_t>(extraction.track.track_ID);
    place_next_sample(extraction.track, reader.position);
    if (work_remains(extraction.context.limits))
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-mp4-sample-outside", reader.path,
                      "track %d: the sample at byte %" PRIu64 " is not wholly inside the file or byte range", id,
                      reader.position);
    else
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-mp4-sample-work", reader.path,
                      "the samples claim many times the data that the file holds; track %d is not read on", id);
    return MP4_FINDING;
}

// Reads and handles the group; false when the track's extraction ends here.
bool extract_group(Extraction& extraction, int& status) {
    FileReader& reader = extraction.reader;
    std::vector<uint8_t>& buffer = extraction.context.sample_buffer;
    // All groups of a file fit, but for a larger sample.
    const uint64_t usual_size = std::min<uint64_t>(extraction.context.limits.file_size, GROUP_SIZE);
    if (buffer.size() < extraction.group.bytes) buffer.resize(std::max<uint64_t>(extraction.group.bytes, usual_size));
    const std::span<uint8_t> bytes = std::span(buffer).first(extraction.group.bytes);
    const AdjacentSamples samples = {reader.position, bytes, extraction.group.sizes};
    if (spend_group_work(extraction) && reader_read(bytes.data(), extraction.group.bytes, reader) == bytes.size()) {
        status |= handle_group(extraction, samples);
        if (!extraction.group.cut && work_remains(extraction.context.limits)) return true;
    }
    status |= report_cut(extraction);
    return false;
}

void skip_to(FileReader& reader, uint64_t offset) {
    const uint32_t chunk_size = std::exchange(reader.chunk_size, std::min(reader.chunk_size, SEEK_READ_SIZE));
    reader_skip(static_cast<int64_t>(offset - reader.position), reader);
    reader.chunk_size = chunk_size;
}

// An offset of 2^63 or more: as signed arithmetic the seek goes backwards and fails, which leaves the stream at its
// end.
void seek_before_file(Extraction& extraction) {
    FileReader& reader = extraction.reader;
    const uint64_t file_size = extraction.context.limits.file_size;
    skip_to(reader, UINT64_MAX);
    // The next seek starts from there.
    if (reader.limited) reader.remaining -= static_cast<int64_t>(file_size) + 1;
    reader.position = file_size;
}

// Moves to a chunk. A place far past everything readable is cut down: the seek to it would fail.
void seek_chunk(Extraction& extraction, uint64_t offset) {
    if (offset > static_cast<uint64_t>(INT64_MAX)) {
        seek_before_file(extraction);
        return;
    }
    FileReader& reader = extraction.reader;
    uint64_t readable = extraction.context.limits.file_size;
    if (reader.limited && reader.remaining > 0)
        readable = std::max(readable, reader.position + static_cast<uint64_t>(reader.remaining));
    offset = std::min(offset, readable + 1);
    if (offset == reader.position) return;
    const uint64_t buffer_start = reader.position - reader.cursor;
    // A walk over the file from its start to its end is every track's right; only going back is work.
    if (offset < buffer_start) spend_work(extraction.context.limits, SEEK_READ_SIZE);
    skip_to(reader, offset);
}

// Reports the parts of the samples that were not read or not written; there is no finding of them.
void report_left_over(const Extraction& extraction) {
    const auto id = static_cast<int32_t>(extraction.track.track_ID);
    uint32_t size = 0;
    if (sample_size(extraction.track.samples, extraction.cursor, size))
        report_reason(ReasonEffect::UNVALIDATED, "reason-mp4-samples-without-chunk", extraction.reader.path,
                      "track %d: its last samples lie in no chunk: not read", id);
    if (extraction.track.seen.cut > 0)
        report_reason(ReasonEffect::UNVALIDATED, "reason-mp4-sample-tail", extraction.reader.path,
                      "track %d: %" PRIu32 " samples end with bytes too few for a NAL unit's length field: not written",
                      id, extraction.track.seen.cut);
}

}  // namespace

int extract_samples(MediaContext& context, FileReader& reader, TrackRecord& track) {
    // The track's first sample is probably elsewhere.
    const uint32_t chunk_size = std::exchange(reader.chunk_size, std::min(reader.chunk_size, SEEK_READ_SIZE));
    reader_restart(reader, static_cast<int64_t>(context.limits.range_length));
    reader.chunk_size = chunk_size;
    Extraction extraction = {context, reader, track, {}, {}};
    const SampleTables& samples = track.samples;
    int status = 0;
    for (const uint64_t offset : samples.chunk_offsets) {
        uint32_t left = samples_in_chunk(samples, extraction.cursor);
        uint32_t size = 0;
        if (left > 0 && sample_size(samples, extraction.cursor, size)) seek_chunk(extraction, offset);
        while (left > 0 && sample_size(samples, extraction.cursor, size)) {
            gather_group(extraction, left);
            if (!extract_group(extraction, status)) return status;
        }
        ++extraction.cursor.chunk;
    }
    report_left_over(extraction);
    return status;
}

}  // namespace quorlin
