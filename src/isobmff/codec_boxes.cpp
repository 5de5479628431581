#include "isobmff/codec_boxes.h"

#include <array>
#include <new>

#include "bits/finding.h"
#include "bits/place.h"
#include "isobmff/box_payload.h"
#include "isobmff/box_report.h"
#include "isobmff/media_context.h"
#include "isobmff/segment_status.h"

namespace quorlin {

namespace {

void report_cut_parameter_set(const FileReader& reader, const Box& box) {
    report_box(reader, box, "reason-mp4-parameter-set-cut",
               "a NAL unit runs past its end: this one and those after it are not read");
}

int read_avc_record(const ReadLimits& limits, FileReader& reader, const Box& box, VideoConfiguration& video) {
    video = {};
    const int status = read_payload(limits, reader, box, video.payload);
    if (status != 0) return status;
    if (!parse_avc_configuration(video)) report_cut_parameter_set(reader, box);
    return 0;
}

// Returns 0, or MP4_FINDING; of a unit that is no parameter set there is only a reason.
int report_overrun(const FileReader& reader, const Box& box, const UnitOverrun& unit) {
    const auto payload_size = static_cast<size_t>(box.payload_size);
    switch (unit.nal_unit_type) {
        case HEVC_VPS:
            return fail(MP4_FINDING, "mp4-hevc-configuration-vps",
                        "[SV]   : VPS offset + length (%zu + %zu) exceeds DSI size (%zu)\n", unit.offset, unit.size,
                        payload_size);
        case HEVC_SPS:
            return fail(MP4_FINDING, "mp4-hevc-configuration-sps",
                        "[SV]   : SPS offset + length (%zu + %zu) exceeds DSI size (%zu)\n", unit.offset, unit.size,
                        payload_size);
        case HEVC_PPS:
            return fail(MP4_FINDING, "mp4-hevc-configuration-pps",
                        "[SV]   : PPS offset + length (%zu + %zu) exceeds DSI size (%zu)\n", unit.offset, unit.size,
                        payload_size);
        default:
            report_cut_parameter_set(reader, box);
            return 0;
    }
}

int read_hevc_record(MediaContext& context, FileReader& reader, const Box& box, VideoConfiguration& video) {
    video = {};
    const int status = read_payload(context.limits, reader, box, video.payload);
    if (status != 0) return status;
    try {
        const std::optional<UnitOverrun> overrun = parse_hevc_configuration(video);
        if (overrun) context.walk.status |= report_overrun(reader, box, *overrun);
    } catch (const std::bad_alloc&) {
        context.walk.status |= fail(MP4_FINDING, "mp4-hevc-configuration-memory", "[SV]   : Allocation failure\n");
        return refuse_box(reader, box, "reason-mp4-parameter-sets-memory", "memory is short for its parameter sets");
    }
    return 0;
}

}  // namespace

int store_configuration(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    track.config_box.place = current_place;
    return read_payload(context.limits, reader, box, track.config.emplace());
}

int read_esds(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    track.codec_kind = CodecKind::AAC;
    return store_configuration(context, reader, box, track);
}

int read_dec3(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    const int status = store_configuration(context, reader, box, track);
    if (status != 0) return status;
    track.ec3 = parse_dec3(*track.config);
    for (uint32_t i = 0; i < track.ec3.reserved_bits_set; ++i)
        note("mp4-dec3-reserved", "ERROR: Reserved field is not zero.\n");
    track.channel_count = count_channels(track.ec3.substreams[0]);
    return 0;
}

int read_avcC(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    return read_avc_record(context.limits, reader, box, track.video);
}

int read_avcE(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    return read_avc_record(context.limits, reader, box, track.enhancement_layer.emplace());
}

int read_hvcC(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    return read_hevc_record(context, reader, box, track.video);
}

int read_hvcE(MediaContext& context, FileReader& reader, const Box& box, TrackRecord& track) {
    return read_hevc_record(context, reader, box, track.enhancement_layer.emplace());
}

int read_lumora_configuration(MediaContext&, FileReader& reader, const Box& box, TrackRecord& track) {
    std::array<uint8_t, LUMORA_CONFIGURATION_SIZE> payload{};
    read_payload_start(reader, box.payload_size, payload);
    track.lumora = parse_lumora_configuration(payload);
    return 0;
}

}  // namespace quorlin
