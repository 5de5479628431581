#include "driver/master_playlist.h"

#include <cstdio>
#include <set>
#include <string_view>

#include "bits/report.h"
#include "driver/media_playlist.h"
#include "driver/paths.h"
#include "playlist/codecs.h"
#include "playlist/group_index.h"
#include "playlist/playlist_attributes.h"
#include "playlist/playlist_checks.h"
#include "playlist/ztp_program.h"

namespace {

// A master playlist and its groups, looked up by name.
struct MasterPlaylist {
    const std::string& path;
    const Playlist& playlist;
    GroupIndex audio_variants;                // the first variant of each audio group
    std::set<std::string_view> media_groups;  // of the renditions to be validated
};

// The rendition's TYPE is not looked at, deliberately.
std::set<std::string_view> collect_media_groups(const Playlist& playlist) {
    std::set<std::string_view> groups;
    for (const MediaEntry& entry : playlist.media)
        if (entry.has_uri && entry.group_id) groups.insert(*entry.group_id);
    return groups;
}

// The stem of a media playlist names its output files; a playlist without one is not validated.
bool take_stem(const std::string& address, std::string& stem) {
    if (file_stem(address, stem) == 0) return true;
    report_reason(address, "the name has no extension to take a stem from; the playlist is not validated");
    return false;
}

std::optional<std::array<uint32_t, 4>> program_attributes(const MediaEntry& entry) {
    std::optional<std::array<uint32_t, 4>> programs;
    for (size_t i = 0; i < 4; ++i) {
        if (!entry.ztp_program[i]) continue;
        if (!programs) programs.emplace();
        uint32_t value = 0;
        if (parse_ztp_program(*entry.ztp_program[i], value) != 0)
            std::printf("WARNING: Errors had been found when got ZTP-PROGRAM%zu attribute.\n", i);
        (*programs)[i] = value;
    }
    return programs;
}

int validate_rendition(const MasterPlaylist& master, const MediaEntry& entry,
                       const std::optional<std::string>& output_dir) {
    if (entry.type != "AUDIO") {
        report_reason(*entry.uri, "a rendition that is not of TYPE=AUDIO: the playlist is not validated");
        return 0;
    }
    const VariantStream* variant = find_group(master.audio_variants, entry.group_id);
    std::string stem;
    if (variant == nullptr) {
        report_reason(*entry.uri, "a rendition without GROUP-ID: the playlist is not validated");
        return 0;
    }
    if (!take_stem(*entry.uri, stem)) return 0;
    PlaylistAttributes attrs;
    attrs.codecs = filter_codecs(variant->codecs.value_or(""), CodecsFilter::AUDIO);
    attrs.channels = entry.channels;
    attrs.programs = program_attributes(entry);
    int error_flag = 0;
    validate_media_playlist(*entry.uri, stem, output_dir, &attrs, error_flag);
    return error_flag;
}

int validate_variant(const MasterPlaylist& master, const VariantStream& variant,
                     const std::optional<std::string>& output_dir) {
    std::string stem;
    if (!variant.uri) {
        report_reason(master.path, "a variant has no URI: no playlist of it is validated");
        return 0;
    }
    if (!take_stem(*variant.uri, stem)) return 0;
    const std::string codecs = variant.codecs.value_or("");
    PlaylistAttributes attrs;
    attrs.audio_in_media_group = variant.audio && master.media_groups.contains(*variant.audio);
    attrs.codecs = attrs.audio_in_media_group ? filter_codecs(codecs, CodecsFilter::VIDEO) : codecs;
    int error_flag = 0;
    validate_media_playlist(*variant.uri, stem, output_dir, &attrs, error_flag);
    return error_flag;
}

// What the checks left out without a word: a playlist that an earlier variant names is validated once, with that one's
// CODECS; I-frame playlists are only read.
void report_left_out(const Playlist& playlist) {
    for (const VariantStream& variant : playlist.variants)
        if (!variant.selected && variant.codecs && variant.uri)
            report_reason(*variant.uri,
                          "an earlier variant has the same URI: validated once, with that variant's CODECS");
    for (const VariantStream& variant : playlist.iframe_variants)
        if (variant.uri) report_reason(*variant.uri, "an I-frame playlist: it is not validated");
}

}  // namespace

int validate_master_playlist(const std::string& path, Playlist& playlist,
                             const std::optional<std::string>& output_dir) {
    int error_flag = check_master_playlist(playlist);
    report_left_out(playlist);
    const MasterPlaylist master = {path, playlist, index_groups(playlist, &VariantStream::audio),
                                   collect_media_groups(playlist)};
    for (const MediaEntry& entry : playlist.media)
        if (entry.has_uri && entry.uri) error_flag |= validate_rendition(master, entry, output_dir);
    for (const VariantStream& variant : playlist.variants)
        if (variant.selected) error_flag |= validate_variant(master, variant, output_dir);
    return error_flag;
}
