#include "playlist/playlist_reader.h"

#include "playlist/playlist_writer.h"

namespace {

// A text with the playlist's directory shown as "@/", "-" when it is absent.
std::string show(const Text& text) {
    const std::string directory = playlist_directory(test_playlist_path());
    if (!text) return "-";
    return text->starts_with(directory) ? "@/" + text->substr(directory.size()) : *text;
}

std::string show(const SegmentEntry& entry) {
    std::string text = std::to_string(entry.kind) + " " + show(entry.duration) + " " + show(entry.uri);
    if (entry.byte_range) text += " " + entry.byte_range->length + "|" + show(entry.byte_range->offset);
    return text + "\n";
}

std::string show(const VariantStream& v) {
    return show(v.codecs) + " " + show(v.audio) + " " + show(v.bandwidth) + " " + show(v.subtitle) + " " + show(v.uri);
}

struct Case {
    const char* name;
    std::string text;
    std::string expected;
};

TEST(PlaylistReader, SegmentEntries) {
    const std::string long_name(4095 * 2 + 5, 'n');
    const Case cases[] = {
        {"plain", "#EXTM3U\n#EXTINF:4.0,title\na.ts\n#EXT-X-ENDLIST\n", "1 4.0 @/a.ts\n5 - -\n"},
        {"trimmed", " \t#EXTINF:4\r\n \ta b.ts \t\r\r\n", "1 4 @/a b.ts\n"},
        {"absolute", "#EXTINF:,\nhttps://h/a\n#EXTINF:,\nx-http://h\n", "1  https://h/a\n1  @/x-http://h\n"},
        {"byte range", "#EXTINF:1,\n#EXT-X-BYTERANGE:1000@2000@3\na.ts\n", "2 1 @/a.ts 1000|2000@3\n"},
        {"byte range without offset", "#EXTINF:1,\n#EXT-X-BYTERANGE: 9\na.ts\n", "2 1 @/a.ts  9|-\n"},
        {"byte range without colon", "#EXTINF:1,\n#EXT-X-BYTERANGE\na.ts\n", "2 1 @/a.ts |-\n"},
        {"byte range elsewhere", "#EXT-X-BYTERANGE:5\n#EXTINF:1,\na.ts\n", "1 1 @/a.ts\n"},
        {"address missing at the end", "#EXTINF:1,\n#EXT-X-BYTERANGE:1@2", "2 1 @/ 1|2\n"},
        {"empty line is the address", "#EXTINF:1,\n\na.ts\n", "1 1 @/\n"},
        {"a swallowed tag leaves an empty entry", "#EXTINF:1,\n#EXTINF:2,\n#EXT-X-ENDLIST\n",
         "1 1 @/#EXTINF:2,\n5 - -\n0 - -\n"},
        {"discontinuity by prefix", "#EXT-X-DISCONTINUITY-SEQUENCE:1\n#EXT-X-DISCONTINUITY\n", "4 - -\n4 - -\n"},
        {"init section", "#EXT-X-MAP: URI=\"https://h/i.mp4\",BYTERANGE=\"7@\"8\"\n", "3 - @/https://h/i.mp4 7|8\n"},
        {"init section without address", "#EXT-X-MAP:BYTERANGE=7\n", "3 - @/ 7|-\n"},
        {"zero byte ends a line", std::string("#EXTINF:1,\na\0.ts\n#EXT-X-ENDLIST\0\n", 33), "1 1 @/a\n5 - -\n"},
        {"over-long line in pieces", "#EXTINF:1,\n" + long_name, "1 1 @/" + std::string(4095, 'n') + "\n"},
        {"a piece is a line", "#" + std::string(4094, ' ') + "#EXT-X-ENDLIST\n", "5 - -\n"},
        {"ignored", "a.ts\n#EXT-X-KEY:METHOD=NONE\n#ext-x-endlist\n#EXTINF 4\n#EXT-X-MEDIA:TYPE=AUDIO\n", ""},
    };
    for (const Case& test : cases) {
        Playlist playlist;
        EXPECT_EQ(read_playlist_text(test.text, playlist), 0);
        std::string entries;
        for (const SegmentEntry& entry : playlist.entries) entries += show(entry);
        EXPECT_EQ(entries, test.expected) << test.name;
    }
}

TEST(PlaylistReader, StreamAttributes) {
    const Case cases[] = {
        // CODECS, AUDIO, BANDWIDTH, SUBTITLE, the address
        {"all", "CODECS=\"avc1,ec-3\",AUDIO=\"a\",BANDWIDTH=\"1\",SUBTITLES=\"s\",URI=\"u\"\nv\n",
         "avc1,ec-3 a \"1\" - @/v"},
        {"blanks", "\tCODECS =\"a , b\" , AUDIO=\"a\" \n v\n", "a , b a - - @/v"},
        {"leading blanks stay", "AUDIO= \"a\",BANDWIDTH= 1\n", "- \"a  1 - -"},
        {"first and last characters go", "AUDIO=xay,SUBTITLE=,CODECS=\"\"\n", " a -  -"},
        {"short values", "AUDIO=\",SUBTITLE=x,BANDWIDTH=\n", "-    -"},
        {"open CODECS takes the rest", "AUDIO=\"a\",CODECS=\"x,AUDIO=b\n", "x,AUDIO=b a - - -"},
        {"a lone quote opens", "CODECS=\",b\",BANDWIDTH=1\n", ",b - 1 - -"},
        {"the last one wins", "AUDIO=\"a\",audio=\"b\",AUDIO=\"c\",,=,nonsense\n", "- c - - -"},
        {"a tag in place of the address is lost", "AUDIO=\"a\"\n#EXT-X-I-FRAME-STREAM-INF:\n", "- a - - -"},
        {"empty address", "AUDIO=\"a\"\n\n", "- a - - @/"},
    };
    for (const Case& test : cases) {
        Playlist playlist;
        EXPECT_EQ(read_playlist_text("#EXT-X-STREAM-INF:" + test.text, playlist), 0);
        EXPECT_TRUE(playlist.is_master);
        ASSERT_EQ(playlist.variants.size(), 1u);
        EXPECT_EQ(show(playlist.variants[0]), test.expected) << test.name;
    }
}

TEST(PlaylistReader, RenditionsAndIFrameVariants) {
    Playlist playlist;
    read_playlist_text(
        "#EXT-X-MEDIA:TYPE=AUDIO,NAME=\"n,CHARACTERISTICS=\"c\",ZTP_PROGRAM3=\"40\",URI=\"x-http://h\"\n"
        "#EXT-X-STREAM-INF:X\n#EXT-X-MEDIA:URI=\"swallowed\"\n#EXT-X-MEDIA:URI=\"\"\n"
        "#EXT-X-I-FRAME-STREAM-INF:CODECS=\"a,b\",URI=\"i\"\nnot.its.address\n",
        playlist);
    ASSERT_EQ(playlist.media.size(), 3u);
    const MediaEntry& media = playlist.media[0];
    EXPECT_EQ(show(media.type) + show(media.name) + show(media.characteristics) + show(media.ztp_program[3]),
              "AUDIO\"c\"\"40\"");
    EXPECT_EQ(show(media.uri) + " " + show(playlist.media[1].uri) + " " + show(playlist.media[2].uri),
              "x-http://h @/ -");
    ASSERT_EQ(playlist.iframe_variants.size(), 1u);
    EXPECT_EQ(show(playlist.iframe_variants[0]), "a,b - - - @/i");
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
