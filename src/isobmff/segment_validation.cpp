#include "isobmff/segment_validation.h"

#include <algorithm>
#include <cinttypes>

#include "bits/place.h"
#include "bits/recorder.h"
#include "bits/report.h"
#include "isobmff/lumora_checks.h"
#include "isobmff/media_context.h"
#include "isobmff/media_walk.h"
#include "isobmff/sample_entry_checks.h"
#include "isobmff/sample_extraction.h"
#include "isobmff/track_output.h"
#include "isobmff/unvalidated_samples.h"

namespace quorlin {

namespace {

// What the sample entry says, at the place of its box.
int check_description(TrackRecord& track, const PlaylistAttributes& attrs, const std::string& path) {
    const PlaceScope scope(place_of_check(track.entry_box));
    return check_sample_entry(track, attrs, path) | check_lumora_configuration(track, attrs.codecs, path);
}

// The layers of a segment, at the first of the samples that show them, or where the sample entry announces them.
int check_layers(const TrackRecord& track) {
    const PlaceScope scope(track.samples.sample_count > 0 ? current_place : track.entry_box.place);
    if (track.samples.sample_count > 0) current_place.offset = track.seen.first_offset;
    return check_lumora_layers(track);
}

void record_track(const TrackRecord& track) {
    const SeenSamples& seen = track.seen;
    if (current_recorder() == nullptr || track.samples.sample_count == 0) return;
    StreamFacts facts;
    facts.id = static_cast<int32_t>(track.track_ID);
    facts.codec = track.format.data();
    facts.first_time = seen.first_time;
    facts.last_time = seen.last_time;
    facts.end_time = seen.end_time;
    facts.units = seen.count;
    facts.payload_bytes = seen.bytes;
    facts.channels = seen.channels;
    facts.data_rate_kbps = seen.data_rate_kbps;
    record_stream(facts);
}

// Returns false when the track's file cannot be opened: the tracks after it are not looked at then.
bool validate_track(MediaContext& context, FileReader& reader, TrackRecord& track, int& status) {
    const PlaceScope scope;
    current_place.stream = static_cast<int32_t>(track.track_ID);
    current_place.offset = NO_OFFSET;
    status |= check_description(track, context.attrs, reader.path);
    const int opened = open_track_output(track.output, context.output, track.track_ID, track.codec_kind);
    status |= opened;
    if (opened != 0) return false;
    {
        const PlaceScope sample_scope;
        status |= extract_samples(context, reader, track);
    }
    record_track(track);
    if (!context.init_refused) report_unvalidated_samples(track, reader.path);
    status |= check_layers(track);
    return true;
}

// A segment without a finding, in which there was nothing to look at.
void report_empty_segment(const MediaContext& context, const SegmentEntry& segment, const std::string& path) {
    const auto has_samples = [](const auto& track) { return track->samples.sample_count > 0; };
    const bool is_media = segment.kind == SegmentKind::MEDIA || segment.kind == SegmentKind::BYTE_RANGE;
    if (segment.kind == SegmentKind::INIT && context.tracks.empty())
        report_reason(ReasonEffect::UNVALIDATED, "reason-mp4-no-track", path,
                      "the init section has no track: nothing is validated");
    else if (is_media && std::none_of(context.tracks.begin(), context.tracks.end(), has_samples))
        report_reason(ReasonEffect::UNVALIDATED, "reason-mp4-no-sample", path,
                      "no sample of a known track is in it: nothing is validated");
}

}  // namespace

void MediaContextDeleter::operator()(MediaContext* context) const {
    std::default_delete<MediaContext>()(context);
}

MediaContextPtr create_init_context(const SegmentJob& job, const std::string& init_stem) {
    MediaContextPtr context(std::make_unique<MediaContext>().release());
    context->output = {job.output_dir, job.stem, init_stem};
    if (job.attrs != nullptr) context->attrs = *job.attrs;
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
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-mp4-no-init-section", reader.path,
                      "no init section (EXT-X-MAP) came before this segment");
        return MP4_REFUSED;
    }
    const PlaceScope scope;
    context->limits = limits_of(reader);
    const int walk_status = parse_media(*context, reader);
    const bool walked = walk_status == 0;
    if (segment.kind == SegmentKind::INIT) context->init_refused = !walked;
    int status = walked ? context->walk.status : walk_status;
    if (walked)
        for (const std::unique_ptr<TrackRecord>& track : context->tracks)
            if (!validate_track(*context, reader, *track, status)) break;
    if (reader.read_error) {
        current_place.offset = static_cast<int64_t>(reader.error_offset);
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-mp4-read-error", reader.path,
                      "read error at byte %" PRIu64, reader.error_offset);
        status |= MP4_FINDING;
    }
    if (status == 0) report_empty_segment(*context, segment, reader.path);
    return status;
}

}  // namespace quorlin
