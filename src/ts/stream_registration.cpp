#include "ts/stream_registration.h"

#include <utility>

#include "bits/finding.h"
#include "bits/place.h"
#include "bits/report.h"
#include "ts/ts_status.h"

namespace quorlin {

namespace {

// What the descriptors of a private data stream (stream type 0x06) say that it carries.
struct DescriptorMarks {
    bool ac4 = false;
    bool eac3 = false;
    bool ac3 = false;
    bool avc = false;
    bool hevc = false;
};

DescriptorMarks scan_descriptors(const EsRecord& es) {
    DescriptorMarks marks;
    if (es.stream_type != STREAM_TYPE_PES_PRIVATE_DATA) return marks;
    for (const StreamDescriptor& descriptor : es.descriptors) {
        switch (descriptor.tag) {
            case DESCRIPTOR_DVB_EXTENSION:
                marks.ac4 = true;
                break;
            case DESCRIPTOR_ATSC_EAC3:
            case DESCRIPTOR_DVB_EAC3:
                marks.eac3 = true;
                break;
            case DESCRIPTOR_DVB_AC3:
                marks.ac3 = true;
                break;
            case DESCRIPTOR_AVC_VIDEO:
                marks.avc = true;
                break;
            case DESCRIPTOR_HEVC_VIDEO:
                marks.hevc = true;
                break;
            default:
                break;
        }
    }
    return marks;
}

// How the reader treats an elementary stream.
struct StreamKind {
    const char* suffix = nullptr;  // of its file; null when it is not followed
    const char* codec = "";        // as in StreamFacts
};

// The first match decides: a stream_type of its own comes before the descriptors.
StreamKind audio_kind(const EsRecord& es, const DescriptorMarks& marks) {
    switch (es.stream_type) {
        case STREAM_TYPE_MPEG2_AUDIO:
            return {".mpa", "mp4a"};
        case STREAM_TYPE_ADTS_AAC:
            return {".adts", "mp4a"};
        case STREAM_TYPE_LATM_AAC:
            return {".aac", "mp4a"};
        case STREAM_TYPE_ATSC_AC3:
            return {".ac3", "ac-3"};
        case STREAM_TYPE_ATSC_EAC3:
            return {".ec3", "ec-3"};
        default:
            break;
    }
    if (marks.ac3) return {".ac3", "ac-3"};
    if (marks.eac3) return {".ec3", "ec-3"};
    if (marks.ac4) return {".ac4", "ac-4"};
    return {};
}

StreamKind video_kind(const EsRecord& es, const DescriptorMarks& marks) {
    if (marks.avc || es.stream_type == STREAM_TYPE_AVC) return {".h264", "avc1"};
    if (marks.hevc || es.stream_type == STREAM_TYPE_HEVC) return {".h265", "hvc1"};
    if (es.stream_type == STREAM_TYPE_MPEG1_VIDEO || es.stream_type == STREAM_TYPE_MPEG2_VIDEO)
        return {".mpeg", "mp4v"};
    return {};
}

int open_stream(TsDemuxContext& context, size_t slot, const EsRecord& es, const StreamKind& kind) {
    PesStream& stream = context.pes[slot];
    if (context.job.output_dir) {
        const std::string name = "_pid_" + std::to_string(es.elementary_PID) + kind.suffix;
        const std::string path = output_path(*context.job.output_dir, context.job.stem, name);
        if (elementary_stream_open(stream.output, path, context.job.first_segment) != 0) return TS_OUTPUT_FAILED;
    }
    stream.pid = es.elementary_PID;
    stream.codec = kind.codec;
    stream.audio = slot == TS_VIDEO_SLOT ? nullptr : &context.stream_table.audio[slot];
    stream.listed = &context.psi.streams[es.elementary_PID];
    stream.log.starts_at_dts = slot == TS_VIDEO_SLOT;
    return 0;
}

// A PID that is audio already keeps its audio slot: the payload of a stream with both marks goes there.
void route_stream(TsDemuxContext& context, uint16_t pid, size_t slot) {
    PidRoute& route = context.routes[pid];
    if (slot == TS_VIDEO_SLOT && route.slot != TS_NO_SLOT) return;
    route.slot = static_cast<uint8_t>(slot);
    if (route.kind == PidKind::OTHER) route.kind = PidKind::PES;
}

int register_audio(TsDemuxContext& context, const EsRecord& es, const StreamKind& kind) {
    TsStreamTable& table = context.stream_table;
    if (find_audio_stream(table, es.elementary_PID) != nullptr) return 0;
    if (table.audio_count >= TS_MAX_AUDIO_STREAMS) {
        // The program table comes again and again.
        if (!std::exchange(context.routes[es.elementary_PID].reported, true))
            report_reason(ReasonEffect::UNVALIDATED, "reason-ts-audio-streams", context.psi.path,
                          "more than %u audio streams; PID %u is not followed", TS_MAX_AUDIO_STREAMS,
                          es.elementary_PID);
        return 0;
    }
    const size_t slot = table.audio_count;
    const int status = open_stream(context, slot, es, kind);
    if (status != 0) return status;
    table.audio[slot].pid = es.elementary_PID;
    table.audio[slot].stream_type = es.stream_type;
    ++table.audio_count;
    route_stream(context, es.elementary_PID, slot);
    return 0;
}

int register_video(TsDemuxContext& context, const EsRecord& es, const StreamKind& kind) {
    if (context.video_pid) {
        if (*context.video_pid == es.elementary_PID) return 0;
        return fail(TS_LOST_SYNC_OR_SECOND_VIDEO, "ts-second-video",
                    "ERROR: Multiple video pid case has not been supported yet.\n");
    }
    const int status = open_stream(context, TS_VIDEO_SLOT, es, kind);
    if (status != 0) return status;
    context.video_pid = es.elementary_PID;
    route_stream(context, es.elementary_PID, TS_VIDEO_SLOT);
    return 0;
}

// What accompanies audio and video, and has no payload that a check could know.
bool is_metadata(const EsRecord& es) {
    return es.stream_type == STREAM_TYPE_PRIVATE_SECTIONS || es.stream_type == STREAM_TYPE_PES_METADATA ||
           es.stream_type == STREAM_TYPE_SPLICE_INFO;
}

void report_not_followed(TsDemuxContext& context, const EsRecord& es) {
    // The program table comes again and again.
    if (std::exchange(context.routes[es.elementary_PID].reported, true)) return;
    if (is_metadata(es)) {
        report_reason(ReasonEffect::REMARK, "reason-ts-metadata", context.psi.path,
                      "PID %u of stream type 0x%02x: metadata: not validated", es.elementary_PID, es.stream_type);
        return;
    }
    report_reason(ReasonEffect::UNVALIDATED, "reason-ts-stream-not-followed", context.psi.path,
                  "PID %u of stream type 0x%02x: nothing names audio or video that is written: not followed",
                  es.elementary_PID, es.stream_type);
}

}  // namespace

int register_streams(TsDemuxContext& context, const ProgramRecord& program) {
    int status = 0;
    const PlaceScope scope;
    for (const EsRecord& es : program.streams) {
        current_place.stream = es.elementary_PID;
        const DescriptorMarks marks = scan_descriptors(es);
        const StreamKind audio = audio_kind(es, marks);
        const StreamKind video = video_kind(es, marks);
        if (audio.suffix != nullptr) status |= register_audio(context, es, audio);
        if (video.suffix != nullptr) status |= register_video(context, es, video);
        if (audio.suffix == nullptr && video.suffix == nullptr) report_not_followed(context, es);
    }
    return status;
}

}  // namespace quorlin
