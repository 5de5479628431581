#include "driver/master_playlist.h"

#include <cstdio>

#include "bits/report.h"
#include "driver/media_playlist.h"
#include "driver/paths.h"
#include "playlist/codecs.h"
#include "playlist/playlist_attributes.h"
#include "playlist/playlist_checks.h"
#include "playlist/ztp_program.h"

namespace {

// Absent texts are equal to nothing.
bool same_group(const Text& a, const Text& b) {
    return a && b && *a == *b;
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

const VariantStream* variant_of_rendition(const Playlist& playlist, const MediaEntry& entry) {
    if (entry.type != "AUDIO") return nullptr;
    for (const VariantStream& variant : playlist.variants)
        if (same_group(variant.audio, entry.group_id)) return &variant;
    return nullptr;
}

// The rendition's TYPE is not looked at, deliberately.
bool has_rendition(const Playlist& playlist, const VariantStream& variant) {
    for (const MediaEntry& entry : playlist.media)
        if (entry.has_uri && same_group(entry.group_id, variant.audio)) return true;
    return false;
}

int validate_rendition(const Playlist& playlist, const MediaEntry& entry,
                       const std::optional<std::string>& output_dir) {
    const VariantStream* variant = variant_of_rendition(playlist, entry);
    std::string stem;
    if (variant == nullptr || !take_stem(*entry.uri, stem)) return 0;
    PlaylistAttributes attrs;
    attrs.codecs = filter_codecs(variant->codecs.value_or(""), CodecsFilter::AUDIO);
    attrs.channels = entry.channels;
    attrs.programs = program_attributes(entry);
    int error_flag = 0;
    validate_media_playlist(*entry.uri, stem, output_dir, &attrs, error_flag);
    return error_flag;
}

int validate_variant(const Playlist& playlist, const VariantStream& variant,
                     const std::optional<std::string>& output_dir) {
    std::string stem;
    if (!take_stem(*variant.uri, stem)) return 0;
    const std::string codecs = variant.codecs.value_or("");
    PlaylistAttributes attrs;
    attrs.audio_in_media_group = has_rendition(playlist, variant);
    attrs.codecs = attrs.audio_in_media_group ? filter_codecs(codecs, CodecsFilter::VIDEO) : codecs;
    int error_flag = 0;
    validate_media_playlist(*variant.uri, stem, output_dir, &attrs, error_flag);
    return error_flag;
}

}  // namespace

int validate_master_playlist(Playlist& playlist, const std::optional<std::string>& output_dir) {
    int error_flag = check_master_playlist(playlist);
    for (const MediaEntry& entry : playlist.media)
        if (entry.has_uri && entry.uri) error_flag |= validate_rendition(playlist, entry, output_dir);
    for (const VariantStream& variant : playlist.variants)
        if (variant.selected && variant.uri) error_flag |= validate_variant(playlist, variant, output_dir);
    return error_flag;
}
