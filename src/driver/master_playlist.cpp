#include "driver/master_playlist.h"

#include <map>
#include <set>
#include <string_view>

#include "bits/finding.h"
#include "bits/place.h"
#include "bits/report.h"
#include "driver/media_playlist.h"
#include "driver/paths.h"
#include "driver/segment_facts.h"
#include "playlist/codecs.h"
#include "playlist/group_index.h"
#include "playlist/playlist_attributes.h"
#include "playlist/playlist_checks.h"
#include "playlist/playlist_reader.h"
#include "playlist/ztp_program.h"

namespace quorlin {

namespace {

// A master playlist and its groups, looked up by name.
struct MasterPlaylist {
    const std::string& path;
    const Playlist& playlist;
    const std::optional<std::string>& output_dir;
    GroupIndex audio_variants;                // the first variant of each audio group
    std::set<std::string_view> media_groups;  // of the renditions to be validated
};

// The rendition's TYPE is not looked at, deliberately.
std::set<std::string_view> collect_media_groups(const Playlist& playlist) {
    std::set<std::string_view> groups;
    for (const MediaEntry& entry : playlist.media)
        if (entry.selected && entry.group_id) groups.insert(*entry.group_id);
    return groups;
}

// The stem of a media playlist names its output files; a playlist without one is not validated.
bool take_stem(const std::string& address, std::string& stem) {
    if (file_stem(address, stem) == 0) return true;
    report_reason(ReasonEffect::UNVALIDATED, "reason-playlist-no-stem", address,
                  "the name has no extension to take a stem from; the playlist is not validated");
    return false;
}

std::optional<std::array<uint32_t, 4>> program_attributes(const MediaEntry& entry) {
    std::optional<std::array<uint32_t, 4>> programs;
    for (size_t i = 0; i < 4; ++i) {
        if (!entry.ztp_program[i]) continue;
        if (!programs) programs.emplace();
        uint32_t value = 0;
        if (parse_ztp_program(*entry.ztp_program[i], value) != 0)
            note("playlist-ztp-program", "WARNING: Errors had been found when got ZTP-PROGRAM%zu attribute.\n", i);
        (*programs)[i] = value;
    }
    return programs;
}

int validate_rendition(const MasterPlaylist& master, const MediaEntry& entry) {
    using enum ReasonEffect;
    current_place.line = entry.line;
    if (entry.type != "AUDIO") {
        const bool is_video = entry.type == "VIDEO";
        report_reason(is_video ? UNVALIDATED : REMARK, "reason-playlist-not-audio", *entry.uri,
                      "a rendition that is not of TYPE=AUDIO: the playlist is not validated");
        return 0;
    }
    const VariantStream* variant = find_group(master.audio_variants, entry.group_id);
    std::string stem;
    if (variant == nullptr) {
        report_reason(UNVALIDATED, "reason-playlist-no-group", *entry.uri,
                      "a rendition without GROUP-ID: the playlist is not validated");
        return 0;
    }
    if (!take_stem(*entry.uri, stem)) return 0;
    PlaylistAttributes attrs;
    attrs.codecs = filter_codecs(variant->codecs.value_or(""), CodecsFilter::AUDIO);
    attrs.channels = entry.channels;
    attrs.programs = program_attributes(entry);
    MediaPlaylistJob job = {*entry.uri, {master.output_dir, stem, &attrs}};
    job.facts.group_id = text_or_null(entry.group_id);
    job.facts.name = text_or_null(entry.name);
    job.facts.language = text_or_null(entry.language);
    job.facts.codecs = attrs.codecs.c_str();
    return validate_media_playlist(job);
}

bool has_audio_rendition(const MasterPlaylist& master, const VariantStream& variant) {
    return variant.audio && master.media_groups.contains(*variant.audio);
}

// The CODECS that the variant's media playlist is compared with.
std::string compared_codecs(const MasterPlaylist& master, const VariantStream& variant) {
    const std::string codecs = variant.codecs.value_or("");
    return has_audio_rendition(master, variant) ? filter_codecs(codecs, CodecsFilter::VIDEO) : codecs;
}

int validate_variant(const MasterPlaylist& master, const VariantStream& variant) {
    current_place.line = variant.line;
    std::string stem;
    // An empty line is joined to the directory, as every address is.
    const bool line_was_empty = variant.uri && *variant.uri == playlist_directory(master.path);
    if (!variant.uri || (line_was_empty && file_stem(*variant.uri, stem) != 0)) {
        report_reason(
            ReasonEffect::UNVALIDATED, "reason-playlist-variant-without-uri", master.path,
            "line %u: a variant has no URI, or a line with \"#\" stands where it is read: no playlist of it is "
            "validated",
            variant.line);
        return 0;
    }
    if (!take_stem(*variant.uri, stem)) return 0;
    PlaylistAttributes attrs;
    attrs.audio_in_media_group = has_audio_rendition(master, variant);
    attrs.codecs = compared_codecs(master, variant);
    MediaPlaylistJob job = {*variant.uri, {master.output_dir, stem, &attrs}};
    job.facts.codecs = text_or_null(variant.codecs);
    job.facts.bandwidth = text_or_null(variant.bandwidth);
    job.facts.average_bandwidth = text_or_null(variant.average_bandwidth);
    job.facts.resolution = text_or_null(variant.resolution);
    return validate_media_playlist(job);
}

// Variants whose media playlist is not validated for their own sake: without CODECS there is nothing to compare it
// with, and one that an earlier variant names is validated once, with that one's CODECS.
void report_passed_over_variants(const MasterPlaylist& master) {
    using enum ReasonEffect;
    std::map<std::string_view, const VariantStream*> first_variants;
    for (const VariantStream& variant : master.playlist.variants) {
        current_place.line = variant.line;
        if (!variant.uri) continue;
        if (!variant.codecs) {
            report_reason(UNVALIDATED, "reason-playlist-variant-without-codecs", *variant.uri,
                          "a variant without CODECS: its playlist is not validated");
            continue;
        }
        const auto [first, is_first] = first_variants.try_emplace(*variant.uri, &variant);
        if (is_first) continue;
        if (compared_codecs(master, *first->second) == compared_codecs(master, variant))
            report_reason(REMARK, "reason-playlist-same-uri", *variant.uri,
                          "an earlier variant has the same URI: validated once");
        else
            report_reason(UNVALIDATED, "reason-playlist-same-uri-other-codecs", *variant.uri,
                          "an earlier variant has the same URI: validated once, with that variant's CODECS");
    }
}

void report_iframe_playlists(const Playlist& playlist) {
    for (const VariantStream& variant : playlist.iframe_variants) {
        current_place.line = variant.line;
        if (variant.uri)
            report_reason(ReasonEffect::REMARK, "reason-playlist-iframes", *variant.uri,
                          "an I-frame playlist: it is not validated");
    }
}

}  // namespace

int validate_master_playlist(const std::string& path, Playlist& playlist,
                             const std::optional<std::string>& output_dir) {
    const PlaceScope scope({.playlist = path.c_str()});
    record_playlist_facts(path, {}, playlist);
    int error_flag = check_master_playlist(playlist);
    const MasterPlaylist master = {path, playlist, output_dir, index_groups(playlist, &VariantStream::audio),
                                   collect_media_groups(playlist)};
    report_passed_over_variants(master);
    report_iframe_playlists(playlist);
    for (const MediaEntry& entry : playlist.media)
        if (entry.selected && entry.uri) error_flag |= validate_rendition(master, entry);
    for (const VariantStream& variant : playlist.variants)
        if (variant.selected) error_flag |= validate_variant(master, variant);
    return error_flag;
}

}  // namespace quorlin
