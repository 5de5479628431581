#include "isobmff/segment_validation.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <utility>

#include "bits/report.h"
#include "isobmff/audio_sample_checks.h"
#include "isobmff/box_reader.h"
#include "isobmff/lumora_checks.h"
#include "isobmff/media_context.h"
#include "isobmff/read_limits.h"
#include "isobmff/sample_entry_checks.h"
#include "isobmff/sample_extraction.h"
#include "isobmff/track_output.h"

namespace {

// Samples that go to their file without a check: said once for a track.
void report_unchecked_samples(const MediaContext& context, TrackRecord& track, const std::string& path) {
    if (track.samples.sample_count == 0 || context.init_refused) return;
    if (std::exchange(track.output.unchecked_reported, true)) return;
    if (track.codec_kind == CODEC_AC4) report_uncompared_presentations(track, path);
    if (track.codec_kind != CODEC_UNKNOWN) return;
    report_reason(path, "track %d: %s: its samples are not checked", static_cast<int32_t>(track.track_ID),
                  track.encrypted ? "protected, of a codec not known" : "its sample entry is of no known codec");
}

// Returns false when the track's file cannot be opened: the tracks behind it are not looked at then.
bool validate_track(MediaContext& context, FileReader& reader, TrackRecord& track, int& status) {
    status |= check_sample_entry(context, track, reader.path);
    status |= check_lumora_configuration(context, track, reader.path);
    const int opened = open_track_output(context, track);
    status |= opened;
    if (opened != 0) return false;
    status |= extract_samples(context, reader, track);
    report_unchecked_samples(context, track, reader.path);
    status |= check_lumora_layers(track);
    return true;
}

// A segment without a finding, in which there was nothing to look at.
void report_empty_segment(const MediaContext& context, const SegmentEntry& segment, const std::string& path) {
    const auto has_samples = [](const auto& track) { return track->samples.sample_count > 0; };
    const bool is_media = segment.kind == SegmentKind::MEDIA || segment.kind == SegmentKind::BYTE_RANGE;
    if (segment.kind == SegmentKind::INIT && context.tracks.empty())
        report_reason(path, "the init section has no track: nothing is validated");
    else if (is_media && std::none_of(context.tracks.begin(), context.tracks.end(), has_samples))
        report_reason(path, "no sample of a known track is in it: nothing is validated");
}

}  // namespace

void MediaContextDeleter::operator()(MediaContext* context) const {
    std::default_delete<MediaContext>()(context);
}

MediaContextPtr create_init_context(const std::optional<std::string>& output_dir, const std::string& stem,
                                    const std::string& init_stem, const PlaylistAttributes* attrs) {
    MediaContextPtr context(std::make_unique<MediaContext>().release());
    context->output_dir = output_dir;
    context->stem = stem;
    context->init_stem = init_stem;
    if (attrs != nullptr) context->attrs = *attrs;
    return context;
}

int release_init_context(MediaContextPtr& context) {
    if (!context) return 0;
    int status = 0;
    for (const std::unique_ptr<TrackRecord>& track : context->tracks) status |= close_track_output(track->output);
    context.reset();
    return status;
}

int validate_mp4_segment(FileReader& reader, const SegmentEntry& segment, MediaContext* context) {
    if (context == nullptr) {
        report_reason(reader.path, "no init section (EXT-X-MAP) came before this segment");
        return 1;
    }
    context->file_size = reader_file_size(reader);
    context->range_length = reader.limited ? static_cast<uint64_t>(reader.remaining) : 0;
    start_work(*context);
    const int walk_status = parse_media(*context, reader);
    const bool walked = walk_status == 0;
    if (segment.kind == SegmentKind::INIT) context->init_refused = !walked;
    int status = walked ? context->status : walk_status;
    if (walked)
        for (const std::unique_ptr<TrackRecord>& track : context->tracks)
            if (!validate_track(*context, reader, *track, status)) break;
    if (reader.read_error) {
        report_reason(reader.path, "read error at byte %" PRIu64, reader.error_offset);
        status |= SEGMENT_FINDING;
    }
    if (status == 0) report_empty_segment(*context, segment, reader.path);
    return status;
}
