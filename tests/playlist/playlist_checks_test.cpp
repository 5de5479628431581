#include "playlist/playlist_checks.h"

#include "playlist/playlist_writer.h"

namespace {

// A rendition of audio group "a", and a variant that no check objects to.
std::string media(const std::string& attributes) {
    return "#EXT-X-MEDIA:" + attributes + "\n";
}
std::string variant(const std::string& codecs, const std::string& group = "a", const std::string& uri = "v") {
    return "#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"" + codecs + "\",AUDIO=\"" + group + "\"\n" + uri + "\n";
}

TEST(PlaylistChecks, FindingsAndMarks) {
    const std::string fine = "TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"n\",URI=\"u\"";
    const std::string no_name = "TYPE=AUDIO,GROUP-ID=\"a\",URI=\"u\"";
    const std::string ec3 = variant("avc1,ec-3");
    const std::string no_uri = "WARNING: #EXT-X-MEDIA does not have a URI attribute.\n";
    const std::string length =
        "ERROR: The LANGUAGE attribute of #EXT-X-MEDIA should be 2 characters, please refer to [RFC5646].\n";
    const std::string unknown = "WARNING: Unknown LANGUAGE attribute EN of #EXT-X-MEDIA has been found.\n";
    const std::string name = "ERROR: #EXT-X-MEDIA parameter must include a NAME attribute.\n";
    const std::string no_audio = "WARNING: No match AUDIO= \"b\" found in #EXT-X-STREAM-INF.\n";
    const std::string no_video = "WARNING: No match VIDEO= \"a\" found in #EXT-X-STREAM-INF.\n";
    const std::string no_codecs = "ERROR: No CODECS attribute found in #EXT-X-STREAM-INF.\n";
    const std::string differs =
        "ERROR: Inaccordance audio codec found in #EXT-X-STREAM-INF which has the same attribute of AUDIO=\"a\".\n";
    const std::string missing =
        "ERROR: Backward-compatible Lumora stream was indicated in the CODECS string of #EXT-X-STREAM-INF but, "
        "meanwhile, SDR fourcc code is missing.\n";
    const std::string surplus =
        "ERROR: Non-backward-compatible Lumora stream profile was indicated in the CODECS string of "
        "#EXT-X-STREAM-INF but, meanwhile, SDR fourcc code exist too.\n";
    const std::string nowhere =
        "Warning: Neither URL nor AUDIO/VIDEO group id has been specified in the #EXT-X-STREAM-INF.\n";
    const std::string bandwidth =
        "ERROR: The BANDWIDTH attribute of #EXT-X-STREAM-INF parameter in the playlist must match what is written "
        "in the reference stream.\n";
    const struct {
        std::string text;
        int status;
        std::string printed;
        std::string marks;  // has_uri of every rendition, selected of every variant
    } cases[] = {
        {media(fine) + ec3, 0, "", "1/1"},
        {media("TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"\"") + ec3, 0, no_uri, "0/1"},
        {media(fine + ",LANGUAGE=\"es\"") + ec3, 0, "", "1/1"},
        {media(fine + ",LANGUAGE=\"EN\"") + ec3, 0, unknown, "1/1"},
        {media(fine + ",LANGUAGE=\"eng\"") + ec3, -1, length, "1/1"},
        {media(fine + ",LANGUAGE=\"\"") + ec3, -1, length, "1/1"},
        {media(no_name) + ec3, -1, name, "1/1"},
        {media(no_name) + variant("mp4a") + variant("ec-3", "b"), 0, "", "1/10"},
        {media("TYPE=audio,GROUP-ID=\"b\",URI=\"u\"") + ec3, 0, "", "1/1"},
        {media("TYPE=AUDIO,URI=\"\"") + ec3, 0, "", "1/1"},
        {media(fine + ",GROUP-ID=\"b\"") + ec3, -1, no_audio, "0/1"},
        {media(fine + ",TYPE=VIDEO") + ec3, -1, no_video, "0/1"},
        // Reported for every variant that a later one of its group differs from, once.
        {ec3 + variant("hvc1,ec-3", "a", "w") + variant("mp4a", "a", "x") + variant("ec-3", "a", "y") +
             variant("ac-3", "b", "z"),
         -1, differs + differs + differs, "/11111"},
        {ec3 + "#EXT-X-STREAM-INF:AUDIO=\"a\"\nw\n", -1, no_codecs, "/10"},
        {variant("lmav.09.02,avc3"), 0, "", "/1"},
        {variant("lmav.09.02,lma1.09.05,avc1"), -1, missing, "/1"},
        {variant("lma1.09.05,lmhe.08.01"), -1, missing + missing, "/1"},
        {variant("lmhe.08.01,hev1,lmh1.08.07,hvc1,lma1,avc1"), 0, "", "/1"},
        {variant("lmh1.08.07,hev1"), -1, missing, "/1"},
        {variant("lmhe.05.03") + variant("lmh1.05.03", "b", "w"), 0, "", "/11"},
        {variant("lmh1.05.03,hvc1"), -1, surplus, "/1"},
        {variant("lmhe.05.03,lmav,avc1"), -1, missing + surplus, "/1"},
        {"#EXT-X-STREAM-INF:CODECS=\"x\"\n#\n", -1, nowhere + bandwidth, "/0"},
        {"#EXT-X-STREAM-INF:BANDWIDTH=,CODECS=\"\",VIDEO=\"\"\n#\n", 0, "", "/1"},
        {variant("x", "a", "u") + variant("x") + variant("x", "b", "u") + variant("x", "a", "u"), 0, "", "/1100"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        Playlist playlist;
        ASSERT_EQ(read_playlist_text(test.text, playlist), 0);
        testing::internal::CaptureStdout();
        EXPECT_EQ(check_master_playlist(playlist), test.status);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), test.printed);
        std::string marks;
        for (const MediaEntry& entry : playlist.media) marks += entry.has_uri ? '1' : '0';
        marks += '/';
        for (const VariantStream& stream : playlist.variants) marks += stream.selected ? '1' : '0';
        EXPECT_EQ(marks, test.marks);
    }
}

}  // namespace
