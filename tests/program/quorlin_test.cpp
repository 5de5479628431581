// quorlin as a user runs it: its command line, and what reaches the checks, the verdict and the files through all
// layers.
#include <gtest/gtest.h>

#include "program/program_folder.h"
#include "support/syncframe_writer.h"

namespace quorlin {

namespace {

constexpr uint8_t AAC = 0x0F, AVC = 0x1B, EAC3 = 0x87;

// Audio and pictures: of a stream type, from a time on (90 kHz), `pictures` of them 3000 ticks apart.
struct SegmentSpec {
    uint64_t first = 90000;
    int pictures = 3;
    uint8_t audio_stream_id = 0xC0;
    uint8_t audio_type = AAC;
    uint64_t audio_offset = 0;
};

// E-AC-3 is 15 frames of 2880 ticks each for 12 pictures of 3600.
Bytes segment(const SegmentSpec& spec) {
    const bool eac3 = spec.audio_type == EAC3;
    const Bytes descriptor = eac3 ? ts_descriptor(0xCC, {0x80, 0x44, 0}) : Bytes();
    TsWriter writer;
    writer.pat();
    writer.pmt({.streams = {{spec.audio_type, 0x101, descriptor}, {AVC, 0x102}}});
    const auto pes = [&writer](uint16_t pid, uint8_t stream_id, uint64_t pts, Bytes payload) {
        writer.pes(pid, {.stream_id = stream_id, .pts = pts, .payload = std::move(payload)});
    };
    for (int i = 0; i < spec.pictures; ++i)
        pes(0x102, 0xE0, spec.first + (eac3 ? 3600u : 3000u) * static_cast<uint64_t>(i), Bytes(300, 0));
    for (int i = 0; i < (eac3 ? spec.pictures * 5 / 4 : spec.pictures); ++i)
        pes(0x101, spec.audio_stream_id,
            spec.first + spec.audio_offset + (eac3 ? 2880u : 3000u) * static_cast<uint64_t>(i),
            eac3 ? syncframes("I") : Bytes(300, 0));
    return writer.bytes;
}

// The n-th of a series whose sound keeps in step with the pictures, or comes `offset` ticks after them.
Bytes eac3_segment(uint64_t n, uint64_t offset = 0) {
    return segment({90000 + 43200 * n, 12, 0xBD, EAC3, offset});
}

std::string media(const std::string& attributes) {
    return "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"n\"," + attributes + "\n";
}

std::string variant(const std::string& attributes, const std::string& uri) {
    return "#EXT-X-STREAM-INF:BANDWIDTH=1," + attributes + "\n" + uri + "\n";
}

Files transport_streams() {
    const Bytes fine = segment({});
    const Bytes failing = segment({.pictures = 2, .audio_stream_id = 0xBD});  // which is not AAC's
    const std::string size = std::to_string(fine.size());
    return {
        {"a.ts", fine},
        {"s_5.ts", fine},
        {"s_6.ts", fine},
        {"s_7.ts/", {}},
        {"d0.ts", failing},
        // The sound of the second is late, as in the third; of the last later than it may be.
        {"t_0.ts", eac3_segment(0)},
        {"t_1.ts", eac3_segment(1, 1000)},
        {"t_2.ts", eac3_segment(2, 1000)},
        {"t_3.ts", eac3_segment(3, 2880)},
        {"u_0.ts", failing},
        {"u_1.ts", eac3_segment(0)},
        {"u_2.ts", eac3_segment(1, 1000)},
        {"u_3.ts/", {}},
        {"joined.ts", fine + segment({.first = 99000})},
        {"list.m3u8", media_playlist(entries({"a.ts"}) + "#EXT-X-DISCONTINUITY\n" +
                                     entries({"missing.ts", "http://host/a.ts", "junk.bin", "junk.bin"}))},
        {"nothing.m3u8", media_playlist(entries({"missing.ts"}))},
        {"clean.m3u8", media_playlist(entries({"a.ts", "s_5.ts"}))},
        {"failing.m3u8", media_playlist(entries({"d0.ts", "a.ts"}))},
        {"timing.m3u8", media_playlist(entries({"t_0.ts", "t_1.ts", "t_2.ts", "t_3.ts"}))},
        {"in_step.m3u8", media_playlist(entries({"t_0.ts"}))},
        // Two segments in one file, then a range that is none.
        {"ranges.m3u8",
         media_playlist("#EXTINF:4,\n#EXT-X-BYTERANGE:" + size + "@0\njoined.ts\n#EXTINF:4,\n#EXT-X-BYTERANGE:" + size +
                        "\njoined.ts\n#EXTINF:4,\n#EXT-X-BYTERANGE:x@0\njoined.ts\n")},
        {"full/", {}},
        {"blocked/a_pid_257.adts/", {}},
    };
}

// An init section and its segments as files, and the playlist of them.
Files fragmented_mp4() {
    const auto init = [](const Bytes& entry) { return init_section({{.entry = entry}}); };
    const auto fragment = [](const Bytes& sample) { return media_segment({{.samples = {sample}}}); };
    const auto list = [](const std::string& name, const std::vector<std::string>& segments) {
        return "#EXT-X-MAP:URI=\"" + name + "\"\n" + entries(segments);
    };
    const Bytes unknown = init(box("abcd", {zero_bytes(70)}));
    const Bytes refused = join({Bytes(unknown.begin(), unknown.end()), {0, 0, 0, 4}, text_bytes("free")});
    const Bytes avc = init(visual_entry("avc1", {avcC(4, {}, {})}));
    return {
        {"ec3.mp4", init(audio_entry("ec-3", 2, {text_boxes("dec3:8 4 0 0x20 0x0F 0")}))},
        {"aac.mp4", init(audio_entry("mp4a", 2, {}))},
        {"avc.mp4", avc},
        {"avc_2.mp4", avc},
        {"unknown.mp4", unknown},
        {"refused.mp4", refused},
        {"avc.m4s", fragment({0, 0, 0, 1, 'a'})},
        {"frame.m4s", fragment(syncframes("I"))},
        {"of_track_2.m4s", media_segment({{.track_ID = 2, .samples = {{1}}}})},
        {"broken.m4s", join({box("moof", {}), {0, 0, 0, 4}, text_bytes("free")})},
        {"ec3.m3u8", media_playlist(list("ec3.mp4", {"frame.m4s"}))},
        {"aac.m3u8", media_playlist(list("aac.mp4", {}))},
        {"avc.m3u8", media_playlist(list("avc.mp4", {"avc.m4s"}))},
        {"open.m3u8", text_bytes(list("avc.mp4", {"avc.m4s"}))},
        {"two.m3u8", media_playlist(list("avc.mp4", {"avc.m4s"}) + list("avc_2.mp4", {}))},
        {"refused.m3u8", media_playlist(list("refused.mp4", {"avc.m4s", "of_track_2.m4s"}))},
        {"unknown.m3u8", media_playlist(list("unknown.mp4", {"broken.m4s", "avc.m4s"}))},
    };
}

Files masters() {
    const std::string fine = variant("CODECS=\"avc1.4d,mp4a.40.2\"", "clean.m3u8");
    const std::string bad = variant("CODECS=\"avc1.4d,mp4a.40.2\"", "failing.m3u8");
    const std::string ec3 = variant("CODECS=\"avc1.4d,ec-3\",AUDIO=\"a\"", "clean.m3u8");
    return {
        {"both.m3u8", text_bytes(variant("CODECS=\"x\"", "v.m3u8") + entries({"a.ts"}))},
        {"programs.m3u8", text_bytes(media("URI=\"in_step.m3u8\",ZTP_PROGRAM0=44,ZTP_PROGRAM1=11") +
                                     media("URI=\"in_step.m3u8\",ZTP_PROGRAM0=x") + ec3)},
        {"channels.m3u8", text_bytes(media("URI=\"ec3.m3u8\",CHANNELS=\"2\"") + ec3)},
        // Of CODECS a rendition takes the audio entries, the variant the others.
        {"filtered.m3u8",
         text_bytes(media("URI=\"ec3.m3u8\"") + variant("CODECS=\"avc1.4d,ec-3,mp4a.40.2\",AUDIO=\"a\"", "aac.m3u8"))},
        {"check.m3u8", text_bytes(media("URI=\"ec3.m3u8\",LANGUAGE=\"eng\"") + ec3)},
        {"rendition.m3u8", text_bytes(media("URI=\"failing.m3u8\"") + media("URI=\"ec3.m3u8\"") + ec3)},
        {"variant.m3u8", text_bytes(bad + fine)},
    };
}

std::string without_build_date(std::string text) {
    const std::string lead = "built on ";
    const size_t at = text.find(lead);
    if (at != std::string::npos) text.replace(at + lead.size(), text.find(" ***\n", at) - at - lead.size(), "DATE");
    return text;
}

}  // namespace

TEST(Program, Transcripts) {
    const char* const commands[] = {
        "-v",
        "-i a.ts -h",
        "-x",
        "-i a.ts -o",
        "-o out",
        "-i a.ts -s",
        "-i a.mp4",
        "-i list.M3U8",
        "-i missing.ts",
        "-i s_7.ts",
        "-i http://host/a.ts",
        "-i a.ts -o out",
        "-i a.ts -o out/deep",
        "-i d0.ts -o out",
        "-i a.ts -o full",
        "-i a.ts -o blocked",
        "-i a.ts >&-",
        // Series.
        "-i s_%d.ts -o out",
        "-i s_%d.ts -s 5 -o out",
        "-i s_%d.ts -s 4x -o out",
        "-i d%x.ts -o out",
        "-i s_%d%d.ts -s 5",
        "-i t_%d.ts -o out",
        "-i u_%d.ts",
        // Nothing more is read when nothing can be said.
        "-i u_%d.ts >/dev/full",
        "-i list.m3u8 >/dev/full",
        // Playlists.
        "-i missing.m3u8",
        "-i both.m3u8",
        "-i list.m3u8 -s 3 -o out",
        "-i nothing.m3u8 -o out",
        "-i clean.m3u8 -o out",
        "-i failing.m3u8",
        "-i ranges.m3u8 -o out",
        "-i timing.m3u8",
        "-i programs.m3u8",
        "-i channels.m3u8",
        "-i filtered.m3u8",
        "-i check.m3u8",
        "-i rendition.m3u8",
        "-i variant.m3u8",
        // Fragmented MP4.
        "-i refused.m3u8",
        "-i unknown.m3u8",
        "-i two.m3u8 -o out",
        "-i avc.m3u8 -o full",
        "-i open.m3u8 -o full",
        "-i two.m3u8 -o full",
    };
    const ProgramFolder folder;
    for (const Files& files :
         {transport_streams(), fragmented_mp4(), masters(), Files{{"junk.bin", text_bytes("junk")}}})
        folder.write(files);
    for (const char* file :
         {"a_pid_258.h264", "avc_avc_track_id_1.264", "open_avc_track_id_1.264", "two_avc_track_id_1.264"})
        folder.link("/dev/full", std::string("full/") + file);
    const std::string help = without_build_date(folder.run("").out);
    std::string transcript = help;
    for (const char* command : commands) {
        std::string run = without_build_date(folder.transcript(std::string("quorlin ") + command, command));
        const size_t help_at = run.find(help);
        if (help_at != std::string::npos) run.replace(help_at, help.size(), "<the help>\n");
        transcript += run;
    }
    expect_golden("golden/quorlin.txt", transcript);
}

TEST(Program, FindingsAndReasonsStayInOrderInAPipe) {
    const ProgramFolder folder;
    folder.write({{"list.m3u8", media_playlist("#EXT-X-DISCONTINUITY\n" + entries({"junk.bin"}))},
                  {"junk.bin", text_bytes("junk")}});
    const ProgramResult result = folder.run("-i list.m3u8 2>&1 | cat");
    const size_t reason = result.out.find("quorlin: junk.bin: ");
    ASSERT_NE(reason, std::string::npos);
    EXPECT_LT(result.out.find("#EXT-X-DISCONTINUITY"), reason);
    EXPECT_LT(reason, result.out.find("validation result"));
}

TEST(Program, ASeriesReportsItsTimingAndPasses) {
    const ProgramFolder folder;
    folder.write({{"t_0.ts", eac3_segment(0)}, {"t_1.ts", eac3_segment(1, 1000)}});
    const std::string events = folder.run("-i t_%d.ts", QUORLIN_JSON_PROGRAM).out;
    EXPECT_NE(events.find("\"ts-av-offset-change\""), std::string::npos);
    EXPECT_EQ(events.find("\"fails\":true"), std::string::npos) << events;
}

}  // namespace quorlin
