// The text of a playlist, master or media: read, and checked when it is a master playlist.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "playlist/codecs.h"
#include "playlist/playlist_checks.h"
#include "playlist/playlist_reader.h"
#include "playlist/ztp_program.h"

namespace quorlin {

namespace {

const bool QUIET = std::freopen("/dev/null", "w", stdout) != nullptr;

void read_attributes(const Playlist& playlist) {
    std::string entry;
    uint32_t value = 0;
    for (const MediaEntry& media : playlist.media) {
        for (const Text& program : media.ztp_program) {
            if (program && parse_ztp_program(*program, value) != 0 && value != 0) std::abort();
        }
    }
    for (const VariantStream& variant : playlist.variants) {
        const std::string codecs = variant.codecs.value_or("");
        if (filter_codecs(codecs, CodecsFilter::VIDEO).size() > codecs.size()) std::abort();
        if (lumora_codecs_entry(codecs, entry) != 0 && entry.size() != 10) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const int file = memfd_create("playlist", 0);
    if (!QUIET || file < 0) return 0;
    const bool written = write(file, data, size) == static_cast<ssize_t>(size);
    Playlist playlist;
    if (written && read_playlist("/proc/self/fd/" + std::to_string(file), playlist) == 0) {
        if (check_master_playlist(playlist) > 0) std::abort();
        read_attributes(playlist);
    }
    close(file);
    return 0;
}

}  // namespace quorlin
