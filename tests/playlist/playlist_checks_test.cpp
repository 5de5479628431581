#include "playlist/playlist_checks.h"

#include "playlist/playlist_writer.h"
#include "support/golden.h"

namespace quorlin {

namespace {

std::string media(const std::string& attributes) {
    return "#EXT-X-MEDIA:" + attributes + "\n";
}

// A variant that no check objects to, but for its CODECS.
std::string variant(const std::string& codecs, const std::string& group = "a", const std::string& uri = "v") {
    return "#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"" + codecs + "\",AUDIO=\"" + group + "\"\n" + uri + "\n";
}

// Each playlist, its findings, the result and what is marked: the selected renditions and variants.
TEST(PlaylistChecks, FindingsAndMarks) {
    const std::string ec3 = variant("avc1,ec-3");
    const std::string unnamed = "TYPE=AUDIO,GROUP-ID=\"a\",URI=\"u\"";
    const std::string fine = unnamed + ",NAME=\"n\"";
    const std::string playlists[] = {
        media(fine) + ec3,
        media("TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"\"") + ec3,
        media(fine + ",LANGUAGE=\"es\"") + media(fine + ",LANGUAGE=\"EN\"") + ec3,
        media(fine + ",LANGUAGE=\"eng\"") + media(fine + ",LANGUAGE=\"\"") + ec3,
        media(unnamed) + ec3,
        media(unnamed) + variant("mp4a") + variant("ec-3", "b"),
        media("TYPE=audio,GROUP-ID=\"b\",URI=\"u\"") + media("TYPE=AUDIO,URI=\"\"") + ec3,
        media(fine + ",GROUP-ID=\"b\"") + media(fine + ",TYPE=VIDEO") + ec3,
        ec3 + variant("hvc1,ec-3", "a", "w") + variant("mp4a", "a", "x") + variant("ec-3", "a", "y") +
            variant("ac-3", "b", "z"),
        "#EXT-X-STREAM-INF:AUDIO=\"a\"\nv\n" + ec3,
        variant("lmav.09.02,avc3"),
        variant("lmav.09.02,lma1.09.05,avc1"),
        variant("lma1.09.05,lmhe.08.01"),
        variant("lmhe.08.01,hev1,lmh1.08.07,hvc1,lma1,avc1"),
        variant("lmh1.08.07,hev1"),
        variant("lmhe.05.03") + variant("lmh1.05.03", "b", "w"),
        variant("lmh1.05.03,hvc1"),
        variant("lmhe.05.03,lmav,avc1"),
        "#EXT-X-STREAM-INF:CODECS=\"x\"\n#\n",
        "#EXT-X-STREAM-INF:BANDWIDTH=,CODECS=\"\",VIDEO=\"\"\n#\n",
        variant("x", "a", "u") + variant("x") + variant("x", "b", "u") + variant("x", "a", "u"),
    };
    const auto entry = [](const std::string& text) {
        Playlist playlist;
        if (read_playlist_text(text, playlist) != 0) return std::string("not read");
        int status = 1;
        std::string report = text + printed_by([&] { status = check_master_playlist(playlist); });
        report += std::to_string(status) + " ";
        for (const MediaEntry& media : playlist.media) report += media.selected ? 'U' : '-';
        for (const VariantStream& stream : playlist.variants) report += stream.selected ? 'S' : '-';
        return report + "\n\n";
    };
    std::string report;
    for (const std::string& text : playlists) report += entry(text);
    report += transcript_checksums("damaged", 2560, [&](std::mt19937& random) {
        std::string text = playlists[random() % std::size(playlists)];
        text += playlists[random() % std::size(playlists)];
        const std::vector<uint8_t> damaged = with_faults({text.begin(), text.end()}, random);
        return entry(std::string(damaged.begin(), damaged.end()));
    });
    expect_golden("golden/master_checks.txt", report);
}

}  // namespace

}  // namespace quorlin
