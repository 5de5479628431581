// A packed audio segment: ID3 tag and payload, against playlists of every kind and through buffers of two sizes, which
// must not make a difference.
#include "packed/packed_audio.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace quorlin {

namespace {

const bool QUIET = std::freopen("/dev/null", "w", stdout) != nullptr;

int validate(const uint8_t* data, size_t size, uint32_t chunk_size, const PlaylistAttributes* attrs) {
    FileReader reader;
    // The stream only reads.
    reader.file.reset(fmemopen(const_cast<uint8_t*>(data), size, "rb"));
    reader.chunk_size = chunk_size;
    reader_start(reader);
    return validate_packed_audio(reader, SegmentEntry(), {.attrs = attrs});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || !QUIET) return 0;
    PlaylistAttributes attrs;
    attrs.codecs = "ac-3,ec-3,mp4a,ac-4.02.01.03";
    attrs.programs = {0xC4, 0x80, 0x80, 0x80};
    if (validate(data, size, 7, &attrs) != validate(data, size, 4096, &attrs)) std::abort();
    if (validate(data, size, 64, nullptr) > 0) std::abort();
    return 0;
}

}  // namespace quorlin
