#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace quorlin {

// What the referring entry of a master playlist says about a media playlist: the segment readers compare against it.
struct PlaylistAttributes {
    std::string codecs;                               // CODECS, filtered to the kind of media it stands for
    std::optional<std::string> channels;              // CHANNELS of the rendition, for example "16/JOC"
    std::optional<std::array<uint32_t, 4>> programs;  // ZTP_PROGRAM0 to ZTP_PROGRAM3 of the rendition
    bool audio_in_media_group = false;                // the audio is a rendition of its own: `codecs` holds only video
};

}  // namespace quorlin
