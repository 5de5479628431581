// A program map section: its descriptors, then the checks against playlists of every kind.
#include <cstdio>

#include "ts/pmt.h"
#include "ts/pmt_checks.h"

namespace quorlin {

namespace {

const bool QUIET = std::freopen("/dev/null", "w", stdout) != nullptr;

PlaylistAttributes attributes(const char* codecs) {
    PlaylistAttributes attrs;
    attrs.codecs = codecs;
    attrs.programs = {0x45, 0, 0, 0};
    return attrs;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || !QUIET) return 0;
    static const PlaylistAttributes PLAYLISTS[] = {attributes("avc1,lmav.0"), attributes("hvc1,lmh1.08.06"),
                                                   attributes("lmhe.+5.6,x"), attributes("mp4a,ac-4.02.01.03")};
    PsiTables tables;
    if (parse_pmt(tables, 0x100, std::span(data, size)) != 0 || tables.programs.empty()) return 0;
    int status = check_pmt_against_playlist(tables.programs[0], nullptr);
    for (const PlaylistAttributes& playlist : PLAYLISTS)
        status |= check_pmt_against_playlist(tables.programs[0], &playlist);
    return status == 0 || status == 11 ? 0 : -1;
}

}  // namespace quorlin
