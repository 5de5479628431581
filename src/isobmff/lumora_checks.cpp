#include "isobmff/lumora_checks.h"

#include <cstdio>
#include <string>

#include "bits/finding.h"
#include "bits/report.h"
#include "isobmff/segment_status.h"
#include "playlist/codecs.h"

namespace quorlin {

namespace {

constexpr uint32_t MAX_PROFILE = 9;
constexpr uint32_t MAX_LEVEL = 9;
constexpr uint32_t SINGLE_LAYER_AVC_PROFILE = 9;
constexpr uint32_t MAX_HEVC_PROFILE = 8;
constexpr uint32_t HEVC_PROFILE_WITH_EL_BOX = 8;

bool is_lumora_video(const TrackRecord& track) {
    return track.lumora && (is_avc(track) || is_hevc(track));
}

// ".PP.LL" as it follows the sample entry's name in CODECS.
std::string profile_and_level(const LumoraConfiguration& lumora) {
    char text[32];
    std::snprintf(text, sizeof(text), ".%02d.%02d", static_cast<int>(lumora.profile), static_cast<int>(lumora.level));
    return text;
}

int check_avc_codecs(const TrackRecord& track, const std::string& codecs) {
    const bool lma1 = track.hdr_video_kind != HdrVideoKind::LMAV;
    const bool lmav = track.hdr_video_kind != HdrVideoKind::LMA1;
    const std::string suffix = profile_and_level(*track.lumora);
    if (lma1 && codecs_contain(codecs, "lma1" + suffix)) return 0;
    if (lmav && codecs_contain(codecs, "lmav" + suffix)) return 0;
    if (lma1 && codecs_contain(codecs, "lma1"))
        return fail(
            MP4_FINDING, "mp4-lumora-codecs-lma1",
            "[SV]   : ERROR: Mismatch profile or level is found in the codec attribute value between the LMA1SampleEntry and the CODECS string in the master manifest.\n");
    if (lmav && codecs_contain(codecs, "lmav"))
        return fail(
            MP4_FINDING, "mp4-lumora-codecs-lmav",
            "[SV]   : ERROR: Mismatch profile or level is found in the codec attribute value between the LMAVSampleEntry and the CODECS string in the master manifest.\n");
    if (lma1 && lmav)
        return fail(MP4_FINDING, "mp4-lumora-codecs-none",
                    "[SV]   : ERROR: Missing lmav or lma1 in CODECS string in master manifest.\n");
    if (lma1)
        return fail(MP4_FINDING, "mp4-lumora-codecs-no-lma1",
                    "[SV]   : ERROR: Missing lma1 in CODECS string in master manifest.\n");
    return fail(MP4_FINDING, "mp4-lumora-codecs-no-lmav",
                "[SV]   : ERROR: Missing lmav in CODECS string in master manifest.\n");
}

// Of H.265 only the entries that Lumora names itself are compared.
int check_hevc_codecs(const TrackRecord& track, const std::string& codecs, const std::string& path) {
    if (track.hdr_video_kind != HdrVideoKind::LMHE && track.hdr_video_kind != HdrVideoKind::LMH1) return 0;
    const std::string name =
        (track.hdr_video_kind == HdrVideoKind::LMHE ? "lmhe" : "lmh1") + profile_and_level(*track.lumora);
    if (codecs_contain(codecs, name)) return 0;
    report_reason(ReasonEffect::FAILS, "reason-mp4-lumora-hevc-codecs", path, "track %d: CODECS does not name its %s",
                  static_cast<int32_t>(track.track_ID), name.c_str());
    return MP4_FINDING;
}

int check_version(const LumoraConfiguration& lumora) {
    if (lumora.version_major == 1 && lumora.version_minor == 0) return 0;
    return fail(MP4_FINDING, "mp4-lumora-version",
                "[SV]   : ERROR: lumora stream compliant with this Lumora stream within ISO BMFF spec!\n");
}

int check_profile_and_level(const TrackRecord& track) {
    const uint32_t profile = track.lumora->profile;
    const uint32_t level = track.lumora->level;
    int status = 0;
    if (is_avc(track) && profile != 0 && profile != 1 && profile != SINGLE_LAYER_AVC_PROFILE) {
        status |= fail(MP4_FINDING, "mp4-lumora-avc-profile",
                       "[SV]   : ERROR: lumora avc stream, profile should be 0 or 1 or 9!\n");
    }
    // Profile 1 passes although the text says larger than 1, deliberately.
    if (is_hevc(track) && (profile < 1 || profile > MAX_HEVC_PROFILE)) {
        status |= fail(MP4_FINDING, "mp4-lumora-hevc-profile",
                       "[SV]   : ERROR: lumora hevc stream, profile should be larger than 1, less than 9!\n");
    }
    if (profile > MAX_PROFILE) {
        status |= fail(MP4_FINDING, "mp4-lumora-profile", "[SV]   : ERROR: lumora profile setting not correct!\n");
    }
    if (level < 1 || level > MAX_LEVEL) {
        status |= fail(MP4_FINDING, "mp4-lumora-level", "[SV]   : ERROR: lumora level setting not correct!\n");
    }
    return status;
}

bool is_single_track(const LumoraConfiguration& lumora) {
    return lumora.el_present && lumora.bl_present;
}

int check_enhancement_layer_box(const TrackRecord& track) {
    if (!is_single_track(*track.lumora) || track.enhancement_layer) return 0;
    if (is_avc(track)) {
        return fail(MP4_FINDING, "mp4-lumora-avc-el-box",
                    "[SV]   : ERROR: single track lumora, must have EL config box\n");
    }
    if (track.lumora->profile != HEVC_PROFILE_WITH_EL_BOX) return 0;
    return fail(MP4_FINDING, "mp4-lumora-hevc-el-box",
                "[SV]   : ERROR: single track lumora must have EL config box.\n");
}

}  // namespace

int check_lumora_configuration(const TrackRecord& track, const std::string& codecs, const std::string& path) {
    if (!is_lumora_video(track)) return 0;
    int status = 0;
    if (!codecs.empty())
        status |= is_avc(track) ? check_avc_codecs(track, codecs) : check_hevc_codecs(track, codecs, path);
    status |= check_version(*track.lumora);
    status |= check_profile_and_level(track);
    status |= check_enhancement_layer_box(track);
    return status;
}

int check_lumora_layers(const TrackRecord& track) {
    if (!is_lumora_video(track)) return 0;
    const LumoraConfiguration& lumora = *track.lumora;
    // An announced enhancement layer must show in the units; without samples the announcement stands.
    const bool look_at_units = is_hevc(track) && lumora.el_present && track.samples.sample_count > 0;
    const bool el = look_at_units ? track.seen.el : lumora.el_present;
    const bool rpu = look_at_units ? track.seen.rpu : lumora.rpu_present;
    if (lumora.profile == SINGLE_LAYER_AVC_PROFILE) {
        if (lumora.bl_present && rpu) return 0;
        return fail(MP4_FINDING, "mp4-lumora-layers-profile-9",
                    "[SV]   : ERROR: lumora profile 9, BL and RPU must be present!\n");
    }
    if (is_single_track(lumora)) {
        if (el && rpu) return 0;
        return fail(MP4_FINDING, "mp4-lumora-layers-single-track",
                    "[SV]   : ERROR: lumora single track stream, BL, EL and RPU must be present!\n");
    }
    if (rpu) return 0;
    return fail(MP4_FINDING, "mp4-lumora-layers-rpu", "[SV]   : ERROR: lumora stream, RPU must be present!\n");
}

}  // namespace quorlin
