#include "isobmff/sample_entry_checks.h"

#include <cstdlib>
#include <string>

#include "ac4/ac4_dsi.h"
#include "bits/finding.h"
#include "bits/report.h"
#include "isobmff/segment_status.h"
#include "playlist/codecs.h"

namespace quorlin {

namespace {

// The search runs from the short text to the long one, deliberately: a CODECS value that lists more is not found in it.
bool codecs_lie_within(const std::string& codecs, const std::string& text) {
    return text.find(codecs) != std::string::npos;
}

bool channels_equal(const std::string& channels, uint32_t count) {
    return std::strtoll(channels.c_str(), nullptr, 10) == count;
}

int check_aac_entry(const std::string& codecs) {
    if (codecs_contain(codecs, "mp4a")) return 0;
    return fail(
        MP4_FINDING, "mp4-codecs-aac",
        "[SV]   : ERROR: Mismatch in the codecs attribute value between the AACSampleEntry and the CODECS string in the master manifest.\n");
}

int check_ac3_entry(const std::string& codecs) {
    if (codecs_lie_within(codecs, "ac-3")) return 0;
    return fail(
        MP4_FINDING, "mp4-codecs-ac3",
        "[SV]   : ERROR: Mismatch in the codecs attribute value between the AC3SampleEntry and the CODECS string in the master manifest.\n");
}

int check_ec3_channels(const TrackRecord& track, const std::string& channels) {
    const bool objects = track.ec3.flag_ec3_extension_type_a != 0;
    if (objects ? channels == "16/JOC" : channels_equal(channels, track.channel_count)) return 0;
    int status = fail(
        MP4_FINDING, "mp4-channels-ec3",
        "[SV]   : ERROR: Mismatch in the channels attribute value between the Representation 0 element in the EC3SampleEntry and the CHANNELS string in the master manifest.\n");
    if (objects)
        status |= fail(MP4_FINDING, "mp4-channels-16-joc", "[SV]   : ERROR: CHANNELS attribute should be \"16/JOC\"\n");
    return status;
}

int check_ec3_entry(const TrackRecord& track, const std::string& codecs, const std::optional<std::string>& channels) {
    int status = 0;
    if (!codecs_lie_within(codecs, "ec-3")) {
        status |= fail(
            MP4_FINDING, "mp4-codecs-ec3",
            "[SV]   : ERROR: Mismatch in the codecs attribute value between the EC3SampleEntry and the CODECS string in the master manifest.\n");
    }
    if (channels) status |= check_ec3_channels(track, *channels);
    return status;
}

int check_ac4_entry(const TrackRecord& track, const std::string& codecs, const std::optional<std::string>& channels,
                    const std::string& path) {
    int status = 0;
    if (!codecs_contain(codecs, "ac-4")) {
        report_reason(ReasonEffect::FAILS, "reason-mp4-codecs-ac4", path, "track %d is AC-4, but CODECS names no ac-4",
                      static_cast<int32_t>(track.track_ID));
        status = MP4_FINDING;
    }
    Ac4Dsi dsi;
    if (track.config) ac4_dsi_parse(*track.config, dsi);
    if (!codecs_lie_within(codecs, ac4_dsi_codec_string(dsi))) {
        status |= fail(
            MP4_FINDING, "mp4-codecs-ac4",
            "[SV]   : ERROR: Mismatch in the codecs attribute value between the Representation 0 element in the AC4SampleEntry and the CODECS string in the master manifest.\n");
    }
    const uint32_t channel_count = ac4_dsi_channel_count(dsi);
    if (channels && channel_count != 0 && !channels_equal(*channels, channel_count)) {
        status |= fail(
            MP4_FINDING, "mp4-channels-ac4",
            "[SV]   : ERROR: Mismatch in the channels attribute value between the Representation 0 element in the AC4SampleEntry and the CHANNELS string in the master manifest.\n");
    }
    return status;
}

int check_hevc_entry(const std::string& codecs) {
    for (const char* name : {"hvc1", "hev1", "lmhe", "lmh1"})
        if (codecs_contain(codecs, name)) return 0;
    return fail(
        MP4_FINDING, "mp4-codecs-hevc",
        "[SV]   : ERROR: Mismatch in the codecs attribute value between the HEVC SampleEntry and the CODECS string in the master manifest.\n");
}

int check_avc_entry(const std::string& codecs) {
    for (const char* name : {"avc1", "avc3", "lmav", "lma1"})
        if (codecs_contain(codecs, name)) return 0;
    return fail(
        MP4_FINDING, "mp4-codecs-avc",
        "[SV]   : ERROR: Mismatch in the codecs attribute value between the AVC SampleEntry and the CODECS string in the master manifest.\n");
}

}  // namespace

int check_sample_entry(const TrackRecord& track, const PlaylistAttributes& attrs, const std::string& path) {
    const std::string& codecs = attrs.codecs;
    if (codecs.empty()) return 0;
    if (is_hevc(track)) return check_hevc_entry(codecs);
    if (is_avc(track)) return check_avc_entry(codecs);
    switch (track.codec_kind) {
        case CodecKind::AAC:
            return check_aac_entry(codecs);
        case CodecKind::AC3:
            return check_ac3_entry(codecs);
        case CodecKind::EC3:
            return check_ec3_entry(track, codecs, attrs.channels);
        case CodecKind::AC4:
            return check_ac4_entry(track, codecs, attrs.channels, path);
        default:
            return 0;
    }
}

}  // namespace quorlin
