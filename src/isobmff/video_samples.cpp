#include "isobmff/video_samples.h"

#include <algorithm>
#include <vector>

#include "bits/byte_order.h"
#include "bits/finding.h"
#include "isobmff/sample_times.h"
#include "isobmff/segment_status.h"
#include "isobmff/track_output.h"

namespace quorlin {

namespace {

// ISO/IEC 14496-10, table 7-1.
constexpr uint32_t AVC_IDR_SLICE = 5;
// ISO/IEC 23008-2, table 7-1, and the unspecified types that carry Lumora's layers.
constexpr uint32_t HEVC_IDR_W_RADL = 19;
constexpr uint32_t HEVC_LUMORA_RPU = 62;
constexpr uint32_t HEVC_LUMORA_EL = 63;

// Units with four-byte length fields that lie one after another become one piece of the output, in place.
struct ByteStreamWriter {
    ReadLimits& limits;
    TrackRecord& track;
    std::span<uint8_t> bytes;
    size_t piece_begin = 0;  // the piece that is not yet written
    size_t piece_end = 0;
    int status = 0;
};

void flush_piece(ByteStreamWriter& writer) {
    const size_t size = writer.piece_end - writer.piece_begin;
    if (size > 0)
        writer.status |= write_sample_data(writer.track.output, writer.bytes.subspan(writer.piece_begin, size));
    writer.piece_begin = writer.piece_end;
}

void write_start_code(ByteStreamWriter& writer) {
    const WriteResult result = write_track_output(writer.track.output, START_CODE);
    if (result == WRITE_DONE) return;
    writer.status |= MP4_FINDING;
    if (result == WRITE_FAILED_AGAIN) return;
    if (is_hevc(writer.track))
        writer.status |=
            fail(MP4_FINDING, "mp4-write-nal-header", "[SV]   : Failed to fwrite NAL header to out file\n");
    else
        writer.status |= fail(MP4_FINDING, "mp4-write-start-code", "[SV]   : Failed to write 4 bytes to output file\n");
}

WriteResult write_parameter_set(ByteStreamWriter& writer, const ParameterSet& set) {
    spend_work(writer.limits, START_CODE.size() + set.size);
    write_start_code(writer);
    const std::span<const uint8_t> payload(writer.track.video.payload);
    const WriteResult result = write_track_output(writer.track.output, payload.subspan(set.offset, set.size));
    if (result != WRITE_DONE) writer.status |= MP4_FINDING;
    return result;
}

void write_parameter_sets(ByteStreamWriter& writer) {
    flush_piece(writer);
    const VideoConfiguration& video = writer.track.video;
    for (const ParameterSet& set : video.vps)
        if (write_parameter_set(writer, set) == WRITE_FAILED)
            writer.status |=
                fail(MP4_FINDING, "mp4-write-vps", "[SV]   : Failed to fwrite %zu bytes VPS to out file\n", set.size);
    for (const ParameterSet& set : video.sps)
        if (write_parameter_set(writer, set) == WRITE_FAILED)
            writer.status |=
                fail(MP4_FINDING, "mp4-write-sps", "[SV]   : Failed to fwrite %zu bytes SPS to out file\n", set.size);
    for (const ParameterSet& set : video.pps)
        if (write_parameter_set(writer, set) == WRITE_FAILED)
            writer.status |=
                fail(MP4_FINDING, "mp4-write-pps", "[SV]   : Failed to fwrite %zu bytes PPS to out file\n", set.size);
    writer.track.output.parameter_sets_written = true;
}

// Which of the layers that the configuration announces an H.265 unit shows.
void mark_layer_seen(TrackRecord& track, uint32_t nal_unit_type) {
    if (!track.lumora || !track.lumora->el_present) return;
    track.seen.el |= nal_unit_type == HEVC_LUMORA_EL;
    track.seen.rpu |= nal_unit_type == HEVC_LUMORA_RPU;
}

// A unit of `size` bytes at `begin`, after a length field of `length_size` bytes.
void write_unit(ByteStreamWriter& writer, size_t begin, size_t size, size_t length_size) {
    const bool hevc = is_hevc(writer.track);
    const uint32_t header = writer.bytes[begin];
    const uint32_t nal_unit_type = hevc ? header >> 1 & 63 : header & 31;
    if (hevc) mark_layer_seen(writer.track, nal_unit_type);
    // Of the H.265 pictures where a stream can start only IDR_W_RADL, deliberately.
    const bool starts_stream = nal_unit_type == (hevc ? HEVC_IDR_W_RADL : AVC_IDR_SLICE);
    if (starts_stream || !writer.track.output.parameter_sets_written) write_parameter_sets(writer);
    if (length_size != START_CODE.size()) {
        write_start_code(writer);
        writer.status |= write_sample_data(writer.track.output, writer.bytes.subspan(begin, size));
        return;
    }
    const size_t start_code = begin - START_CODE.size();
    if (start_code != writer.piece_end) {
        flush_piece(writer);
        writer.piece_begin = start_code;
    }
    std::copy(START_CODE.begin(), START_CODE.end(), writer.bytes.begin() + static_cast<ptrdiff_t>(start_code));
    writer.piece_end = begin + size;
}

// The sample [begin, end) of the writer's bytes. Empty units, and a rest too short for a length field, are passed over.
void write_sample(ByteStreamWriter& writer, size_t begin, size_t end) {
    const size_t length_size = writer.track.video.length_size_minus_one + 1;
    while (end - begin >= length_size && work_remains(writer.limits)) {
        size_t size = load_be(writer.bytes.subspan(begin, length_size), 0, length_size);
        begin += length_size;
        if (size > end - begin) {
            writer.status |= fail(MP4_FINDING, "mp4-nal-size",
                                  "[SV]   : NAL size (%zu) exceeds remaining data (%zu bytes)\n", size, end - begin);
            size = end - begin;
        }
        if (size > 0) write_unit(writer, begin, size, length_size);
        begin += size;
    }
    if (begin < end) ++writer.track.seen.cut;
}

}  // namespace

int write_video_samples(ReadLimits& limits, TrackRecord& track, const AdjacentSamples& samples) {
    ByteStreamWriter writer = {limits, track, samples.bytes};
    size_t begin = 0;
    for (const uint32_t size : samples.sizes) {
        enter_sample(track, samples.offset + begin, size);
        write_sample(writer, begin, begin + size);
        begin += size;
    }
    flush_piece(writer);
    return writer.status;
}

}  // namespace quorlin
