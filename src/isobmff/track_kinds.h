#pragma once

#include <cstdint>

namespace quorlin {

// What the media of a track is.

enum class HandlerKind : uint32_t {
    OTHER = 0,
    SOUND = 1,
    VIDEO = 2,
    TEXT = 3,
    META = 4,
    HINT = 5,
};

enum class CodecKind : uint32_t {
    UNKNOWN = 0,
    AAC = 1,
    AVC1 = 2,
    AVC3 = 4,
    AC3 = 6,
    EC3 = 7,
    TIMED_METADATA = 8,
    MLPA = 10,
    S263 = 11,
    HEV1 = 12,
    HVC1 = 13,
    AC4 = 14,
};

enum class HdrVideoKind : uint32_t {
    NONE = 0,
    LMAV = 1,
    LMA1 = 2,
    LMHE = 3,
    LMH1 = 4,
};

}  // namespace quorlin
