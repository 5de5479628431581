#include "packed/packed_audio.h"

int validate_packed_audio(FileReader&, const SegmentEntry&, const std::optional<std::string>&, const std::string&, bool,
                          const PlaylistAttributes*) {
    return 0;
}
