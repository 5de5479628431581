#include "playlist/playlist_checks.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include "bits/finding.h"
#include "bits/place.h"
#include "playlist/codecs.h"
#include "playlist/group_index.h"

namespace quorlin {

namespace {

int check_language(const Text& language) {
    constexpr std::string_view LANGUAGES[] = {"en", "fr", "de", "ja", "zh", "es"};
    if (!language) return 0;
    if (language->size() != 2) {
        return fail(
            -1, "playlist-language-length",
            "ERROR: The LANGUAGE attribute of #EXT-X-MEDIA should be 2 characters, please refer to [RFC5646].\n");
    }
    if (std::find(std::begin(LANGUAGES), std::end(LANGUAGES), *language) == std::end(LANGUAGES))
        note("playlist-language-unknown", "WARNING: Unknown LANGUAGE attribute %s of #EXT-X-MEDIA has been found.\n",
             language->c_str());
    return 0;
}

int check_media(MediaEntry& media, const GroupIndex& audio_groups, const GroupIndex& video_groups) {
    current_place.line = media.line;
    media.selected = media.uri.has_value();
    if (!media.selected) note("playlist-media-no-uri", "WARNING: #EXT-X-MEDIA does not have a URI attribute.\n");
    int status = check_language(media.language);
    const bool is_audio = media.type == "AUDIO";
    const bool is_video = media.type == "VIDEO";
    if (!is_audio && !is_video) return status;
    const VariantStream* variant = find_group(is_audio ? audio_groups : video_groups, media.group_id);
    // A name is required for E-AC-3 alone.
    if (is_audio && variant != nullptr && variant->codecs && codecs_contain(*variant->codecs, "ec-3") && !media.name)
        status |= fail(-1, "playlist-media-no-name", "ERROR: #EXT-X-MEDIA parameter must include a NAME attribute.\n");
    if (media.group_id && variant == nullptr) {
        // Worded as warnings, but they fail the playlist: deliberate.
        const char* group = media.group_id->c_str();
        status |= is_audio ? fail(-1, "playlist-no-audio-group",
                                  "WARNING: No match AUDIO= \"%s\" found in #EXT-X-STREAM-INF.\n", group)
                           : fail(-1, "playlist-no-video-group",
                                  "WARNING: No match VIDEO= \"%s\" found in #EXT-X-STREAM-INF.\n", group);
        media.selected = false;
    }
    return status;
}

// For every variant: does a later one of the same audio group carry other audio codecs? Variants without CODECS or
// without an audio group take no part. Walks backwards, so that one look at the group's last seen variant is enough.
std::vector<bool> find_audio_differences(const Playlist& playlist) {
    struct LaterVariants {
        std::string codecs;
        bool differ = false;
    };
    std::map<std::string_view, LaterVariants> groups;
    std::vector<bool> differs(playlist.variants.size());
    for (size_t i = playlist.variants.size(); i-- > 0;) {
        const VariantStream& variant = playlist.variants[i];
        if (!variant.codecs || !variant.audio) continue;
        std::string codecs = filter_codecs(*variant.codecs, CodecsFilter::AUDIO);
        const auto [group, is_last] = groups.try_emplace(*variant.audio);
        LaterVariants& later = group->second;
        if (!is_last && later.codecs != codecs) later.differ = true;
        differs[i] = later.differ;
        later.codecs = std::move(codecs);
    }
    return differs;
}

// A Lumora entry that other players take as the SDR entry beside it, unless its profile says otherwise.
struct CompatibleEntry {
    std::string_view lumora;
    std::string_view incompatible_profile;  // empty when every profile is compatible
    std::string_view sdr;
};

constexpr CompatibleEntry COMPATIBLE_ENTRIES[] = {
    {"lmav", "", "avc3"},
    {"lma1", "", "avc1"},
    {"lmhe", "lmhe.05", "hev1"},
    {"lmh1", "lmh1.05", "hvc1"},
};

int check_lumora(const std::string& codecs) {
    const auto has = [&](std::string_view name) { return codecs_contain(codecs, name); };
    int status = 0;
    for (const CompatibleEntry& entry : COMPATIBLE_ENTRIES) {
        const bool incompatible = !entry.incompatible_profile.empty() && has(entry.incompatible_profile);
        if (!has(entry.lumora) || incompatible || has(entry.sdr)) continue;
        status |= fail(
            -1, "playlist-lumora-no-sdr",
            "ERROR: Backward-compatible Lumora stream was indicated in the CODECS string of #EXT-X-STREAM-INF but, meanwhile, SDR fourcc code is missing.\n");
    }
    if ((has("lmhe.05") || has("lmh1.05")) && (has("avc3") || has("avc1") || has("hev1") || has("hvc1")))
        status |= fail(
            -1, "playlist-lumora-with-sdr",
            "ERROR: Non-backward-compatible Lumora stream profile was indicated in the CODECS string of #EXT-X-STREAM-INF but, meanwhile, SDR fourcc code exist too.\n");
    return status;
}

int check_variant(VariantStream& variant, bool audio_differs) {
    current_place.line = variant.line;
    if (!variant.codecs)
        return fail(-1, "playlist-no-codecs", "ERROR: No CODECS attribute found in #EXT-X-STREAM-INF.\n");
    int status = 0;
    if (audio_differs)
        status |= fail(
            -1, "playlist-audio-codecs-differ",
            "ERROR: Inaccordance audio codec found in #EXT-X-STREAM-INF which has the same attribute of AUDIO=\"%s\".\n",
            variant.audio->c_str());
    status |= check_lumora(*variant.codecs);
    variant.selected = variant.uri || variant.audio || variant.video;
    if (!variant.selected)
        status |= fail(-1, "playlist-variant-empty",
                       "Warning: Neither URL nor AUDIO/VIDEO group id has been specified in the #EXT-X-STREAM-INF.\n");
    // Only the presence is tested.
    if (!variant.bandwidth)
        status |= fail(
            -1, "playlist-no-bandwidth",
            "ERROR: The BANDWIDTH attribute of #EXT-X-STREAM-INF parameter in the playlist must match what is written in the reference stream.\n");
    return status;
}

// Of the selected variants with one address only the first stays selected.
void unselect_duplicates(Playlist& playlist) {
    std::set<std::string_view> seen;
    for (VariantStream& variant : playlist.variants) {
        if (variant.selected && variant.uri && !seen.insert(*variant.uri).second) variant.selected = false;
    }
}

}  // namespace

int check_master_playlist(Playlist& playlist) {
    const PlaceScope scope;
    int status = 0;
    const GroupIndex audio_groups = index_groups(playlist, &VariantStream::audio);
    const GroupIndex video_groups = index_groups(playlist, &VariantStream::video);
    for (MediaEntry& media : playlist.media) status |= check_media(media, audio_groups, video_groups);
    const std::vector<bool> audio_differs = find_audio_differences(playlist);
    for (size_t i = 0; i < playlist.variants.size(); ++i)
        status |= check_variant(playlist.variants[i], audio_differs[i]);
    unselect_duplicates(playlist);
    return status;
}

}  // namespace quorlin
