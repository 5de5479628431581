#include "playlist/playlist_reader.h"

#include "playlist/playlist_writer.h"
#include "support/golden.h"

namespace quorlin {

namespace {

// A text with the playlist's directory shown as "@/", "-" when it is absent.
std::string show(const Text& text) {
    const std::string directory = playlist_directory(test_playlist_path());
    if (!text) return "-";
    return text->starts_with(directory) ? "@/" + text->substr(directory.size()) : *text;
}

std::string show(const VariantStream& v) {
    return show(v.codecs) + " " + show(v.audio) + " " + show(v.bandwidth) + " " + show(v.subtitle) + " " + show(v.uri);
}

// A line an element.
std::string show(const Playlist& playlist) {
    std::string text;
    for (const SegmentEntry& entry : playlist.entries) {
        text += "line " + std::to_string(entry.line) + ": entry of kind " +
                std::to_string(static_cast<int>(entry.kind)) + " " + show(entry.duration) + " " + show(entry.path);
        if (entry.discontinuity_sequence > 0) text += " discontinuity " + std::to_string(entry.discontinuity_sequence);
        if (entry.keys_before > 0) text += " key " + playlist.key_methods[entry.keys_before - 1];
        if (entry.byte_range) text += " " + entry.byte_range->length + "|" + show(entry.byte_range->offset);
        text += "\n";
    }
    const auto line_of = [](const auto& tag) { return "line " + std::to_string(tag.line) + ": "; };
    for (const VariantStream& variant : playlist.variants) text += line_of(variant) + "variant " + show(variant) + "\n";
    for (const VariantStream& variant : playlist.iframe_variants)
        text += line_of(variant) + "i-frame variant " + show(variant) + "\n";
    for (const MediaEntry& media : playlist.media)
        text += line_of(media) + "media " + show(media.type) + " " + show(media.name) + " " +
                show(media.characteristics) + " " + show(media.ztp_program[3]) + " " + show(media.uri) + "\n";
    return text;
}

TEST(PlaylistReader, Elements) {
    const std::string long_name(4095 * 2 + 5, 'n');
    const std::string stream = "#EXT-X-STREAM-INF:";
    const std::pair<const char*, std::string> cases[] = {
        {"plain", "#EXTM3U\n#EXTINF:4.0,title\na.ts\n#EXT-X-ENDLIST\n"},
        {"trimmed", " \t#EXTINF:4\r\n \ta b.ts \t\r\r\n"},
        {"absolute", "#EXTINF:,\nhttps://h/a\n#EXTINF:,\nx-http://h\n"},
        {"byte range", "#EXTINF:1,\n#EXT-X-BYTERANGE:1000@2000@3\na.ts\n"},
        {"byte range without offset", "#EXTINF:1,\n#EXT-X-BYTERANGE: 9\na.ts\n"},
        {"byte range without colon", "#EXTINF:1,\n#EXT-X-BYTERANGE\na.ts\n"},
        {"byte range elsewhere", "#EXT-X-BYTERANGE:5\n#EXTINF:1,\na.ts\n"},
        {"address missing at the end", "#EXTINF:1,\n#EXT-X-BYTERANGE:1@2"},
        {"empty line is the address", "#EXTINF:1,\n\na.ts\n"},
        {"a swallowed tag leaves an empty entry", "#EXTINF:1,\n#EXTINF:2,\n#EXT-X-ENDLIST\n"},
        {"discontinuity by prefix", "#EXT-X-DISCONTINUITY-SEQUENCE:8\n#EXT-X-DISCONTINUITY\n#EXTINF:1,\na\n"},
        {"init section", "#EXT-X-MAP: URI=\"https://h/i.mp4\",BYTERANGE=\"7@\"8\"\n"},
        {"init section without address", "#EXT-X-MAP:BYTERANGE=7\n"},
        {"zero byte ends a line", std::string("#EXTINF:1,\na\0.ts\n#EXT-X-ENDLIST\0\n", 33)},
        {"over-long line in pieces", "#EXTINF:1,\n" + long_name + "\n#EXT-X-ENDLIST"},
        {"keys", "#EXT-X-KEY:METHOD=AES-128,URI=\"k\"\n#EXTINF:1,\na\n#EXT-X-KEY:METHOD=NONE\n#EXTINF:1,\nb\n"},
        {"a piece is a line", "#" + std::string(4094, ' ') + "#EXT-X-ENDLIST\n"},
        {"ignored", "a.ts\n#EXT-X-KEY:METHOD=NONE\n#ext-x-endlist\n#EXTINF 4\n#EXT-X-MEDIA:TYPE=AUDIO\n"},
        {"all", stream + "CODECS=\"avc1,ec-3\",AUDIO=\"a\",BANDWIDTH=\"1\",SUBTITLES=\"s\",URI=\"u\"\nv\n"},
        {"blanks", stream + "\tCODECS =\"a , b\" , AUDIO=\"a\" \n v\n"},
        {"leading blanks stay", stream + "AUDIO= \"a\",BANDWIDTH= 1\n"},
        {"first and last characters go", stream + "AUDIO=xay,SUBTITLE=,CODECS=\"\"\n"},
        {"short values", stream + "AUDIO=\",SUBTITLE=x,BANDWIDTH=\n"},
        {"open CODECS takes the rest", stream + "AUDIO=\"a\",CODECS=\"x,AUDIO=b\n"},
        {"a lone quote opens", stream + "CODECS=\",b\",BANDWIDTH=1\n"},
        {"the last one wins", stream + "AUDIO=\"a\",audio=\"b\",AUDIO=\"c\",,=,nonsense\n"},
        {"a tag in place of the address is lost", stream + "AUDIO=\"a\"\n#EXT-X-I-FRAME-STREAM-INF:\n"},
        {"empty address", stream + "AUDIO=\"a\"\n\n"},
        {"renditions",
         "#EXT-X-MEDIA:TYPE=AUDIO,NAME=\"n,CHARACTERISTICS=\"c\",ZTP_PROGRAM3=\"40\",URI=\"x-http://h\"\n"},
        {"a swallowed rendition", stream + "X\n#EXT-X-MEDIA:URI=\"swallowed\"\n#EXT-X-MEDIA:URI=\"\"\n"},
        {"i-frame variant", "#EXT-X-I-FRAME-STREAM-INF:CODECS=\"a,b\",URI=\"i\"\nnot.its.address\n"},
    };
    const auto entry = [](const char* name, const std::string& text) {
        Playlist playlist;
        const std::string transcript = transcript_entry(name, [&] {
            const int status = read_playlist_text(text, playlist);
            report_playlist_losses("p", playlist.losses);
            return status;
        });
        return transcript + show(playlist);
    };
    std::string transcript;
    for (const auto& c : cases) transcript += entry(c.first, c.second);
    transcript += transcript_checksums("damaged", 2560, [&](std::mt19937& random) {
        std::string text = cases[random() % std::size(cases)].second;
        text += cases[random() % std::size(cases)].second;
        const std::vector<uint8_t> damaged = with_faults({text.begin(), text.end()}, random);
        return entry("", std::string(damaged.begin(), damaged.end()));
    });
    expect_golden("golden/elements.txt", transcript);
}

TEST(PlaylistReader, Failures) {
    Playlist playlist;
    testing::internal::CaptureStdout();
    EXPECT_EQ(read_playlist("no/such.m3u8", playlist), 1);
    EXPECT_EQ(read_playlist(testing::TempDir(), playlist), 1);
    const std::string message = "ERROR: Invalid manifest path: ";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), message + "no/such.m3u8\n" + message + testing::TempDir() + "\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(read_playlist_text("#EXT-X-STREAM-INF:\nv\n#EXT-X-ENDLIST\n", playlist), 1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(test_playlist_path()), std::string::npos);
}

// In linear time: a quadratic walk runs into the test's time limit.
TEST(PlaylistReader, AMillionSegments) {
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += "#EXTINF:4,\na.ts\n";
    Playlist playlist;
    read_playlist_text(text, playlist);
    EXPECT_EQ(playlist.entries.size(), 1000000u);
}

TEST(PlaylistDirectory, Separators) {
    const char* const cases[][2] = {{"a", ""},           {"d/a", "d/"},       {"d\\a", "d\\"},   {"/a", ""},
                                    {"d\\e/a", "d\\e/"}, {"d/e\\a", "d/e\\"}, {"\\a/b", "\\a/"}, {"/d/e/", "/d/e/"},
                                    {"d\\", "d\\"},      {"/", "/"},          {"", ""},          {"\\a", ""}};
    for (const auto& [path, directory] : cases) EXPECT_EQ(playlist_directory(path), directory) << path;
}

}  // namespace

}  // namespace quorlin
