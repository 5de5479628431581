#pragma once

#include <string>

#include "ts/lumora_descriptor.h"

namespace quorlin {

// The rules for a Lumora descriptor, alone and against a CODECS value of the playlist. Each prints its findings and
// returns 0 or TS_CHECK_FAILED.

// Version and presence flags: what every Lumora stream must announce.
[[nodiscard]] int check_lumora_descriptor(const LmraDescriptorFields& fields);

// The entry "lmav" or "lma1" of CODECS against the descriptor of an H.264 stream.
[[nodiscard]] int check_lumora_avc_entry(const std::string& codecs, const LmraDescriptorFields& fields);

// The entry "lmhe" or "lmh1" of CODECS against the descriptor of an H.265 stream.
[[nodiscard]] int check_lumora_hevc_entry(const std::string& codecs, const LmraDescriptorFields& fields);

// Profile and level of the single Lumora entry of CODECS against the descriptor; an entry of `el_profile` needs an
// enhancement layer.
[[nodiscard]] int check_lumora_codecs_profile(const std::string& codecs, const LmraDescriptorFields& fields,
                                              int el_profile);

}  // namespace quorlin
