// Every place where a run fails or leaves something out without a finding: the reason on standard error that says so.
#include <gtest/gtest.h>

#include <string_view>

#include "program/program_folder.h"
#include "support/id3_writer.h"

namespace quorlin {

namespace {

struct Case {
    std::string name;
    Files files;
    std::string arguments = "-i p.m3u8";
};

Bytes repeat(const Bytes& bytes, int count) {
    Bytes all;
    for (int i = 0; i < count; ++i) all.insert(all.end(), bytes.begin(), bytes.end());
    return all;
}

// ---- Transport streams.

Bytes tables(const std::vector<PmtSpec::Stream>& streams) {
    TsWriter writer;
    writer.pat();
    writer.pmt({.streams = streams});
    return writer.bytes;
}

Bytes pes(const PesSpec& spec) {
    TsWriter writer;
    writer.pes(0x101, spec);
    return writer.bytes;
}

const Bytes AAC = tables({{0x0F, 0x101}});
const Bytes FRAME = pes({.stream_id = 0xC0, .pts = 0, .payload = {0xFF, 0xFF}});
const Bytes GOOD = AAC + FRAME;

Case ts(const std::string& name, const Bytes& bytes) {
    return {name, {{"a.ts", bytes}}, "-i a.ts"};
}

std::vector<Case> transport_streams() {
    const Bytes eac3 = tables({{0x87, 0x101, ts_descriptor(0xCC, {0x80, 0x44, 0})}});
    const Bytes opus = tables({{0x06, 0x101, ts_descriptor(5, text_bytes("Opus")) + ts_descriptor(0x7F, {0x80, 2})}});
    const Bytes sound_and_pictures = tables({{0x0F, 0x101}, {0x1B, 0x102}});
    Bytes scrambled = FRAME;
    scrambled[3] |= 0x80;
    return {
        ts("no association table", FRAME),
        ts("a stream without PES packets", sound_and_pictures + FRAME),
        ts("no PES packet at all", sound_and_pictures),
        ts("streams that are not followed", tables({{0x15, 300}, {0x03, 301}, {0x0F, 0x101}}) + FRAME),
        ts("Opus", opus + FRAME + opus),
        ts("a packet before the tables", FRAME + GOOD),
        ts("audio without a length", eac3 + pes({.pts = 0, .payload = {0x0B, 0x77}, .PES_packet_length = 0})),
        ts("a scrambled packet", AAC + scrambled),
    };
}

// ---- Playlists and what their segments begin with.

Case playlist(const std::string& name, const std::string& lines, const Bytes& segment = GOOD) {
    return {name, {{"p.m3u8", media_playlist(lines)}, {"a.ts", segment}}};
}

Case start(const std::string& name, const Bytes& bytes, const std::string& key = "") {
    return playlist(name, "#EXT-X-KEY:METHOD=AES-128,URI=\"k\"\n#EXT-X-KEY:METHOD=NONE\n" + key + entries({"a.ts"}),
                    bytes);
}

std::vector<Case> starts() {
    const Bytes noise = {0x8A, 0x17, 0xFF, 0, 0x33};
    const Bytes sync = Bytes{0x47} + Bytes(187, 0);
    return {
        start("empty", {}),
        start("noise", noise),
        start("encrypted", noise, "#EXT-X-KEY:METHOD=AES-128,URI=\"k\"\n"),
        start("a playlist", text_bytes("#EXTM3U")),
        start("text", text_bytes("#M3U")),
        start("HTML", text_bytes("<html>404</html>")),
        start("ADTS", {0xFF, 0xF1, 0x50, 0x80}),
        start("E-AC-3", {0x0B, 0x77, 0, 0}),
        start("ISO media from another box on", box("sidx", {{0}})),
        start("a program stream", {0, 0, 1, 0xBA, 0x44}),
        start("Matroska", {0x1A, 0x45, 0xDF, 0xA3}),
        start("packets of 192 bytes", repeat(Bytes(4, 0) + sync, 3)),
        start("no packet at the start", Bytes(2, 0) + repeat(sync, 3)),
    };
}

std::vector<Case> playlists() {
    std::vector<Case> cases = {
        {"variants and segments", {{"p.m3u8", text_bytes("#EXT-X-STREAM-INF:\nv.m3u8\n" + entries({"a.ts"}))}}},
        {"a series ends at what cannot be opened", {{"s_0.ts", GOOD}, {"s_1.ts/", {}}, {"s_2.ts", GOOD}}, "-i s_%d.ts"},
        {"a gap in a series", {{"s_0.ts", GOOD}, {"s_2.ts", GOOD}}, "-i s_%d.ts"},
        {"no segment", {{"p.m3u8", {}}}},
        {"a blank in the name",
         {{"p.m3u8", media_playlist(entries({"a%20b.ts", "a b.ts?c", "a%20b.ts?c"}))}, {"a b.ts", {}}}},
        playlist("an empty address", "#EXTINF:4,\n#EXT-X-BYTERANGE:9@0\n\n"),
        playlist("a map without an address", "#EXT-X-MAP:BYTERANGE=\"9@0\"\n"),
        playlist("another scheme", entries({"https://h/a.ts"})),
        playlist("a byte range that is none", "#EXTINF:4,\n#EXT-X-BYTERANGE:1x@-1\na.ts\n"),
        playlist("a byte range before its segment", "#EXT-X-BYTERANGE:188@0\n" + entries({"a.ts"})),
        playlist("low latency", "#EXT-X-PART:DURATION=1,URI=\"p.ts\"\n" + entries({"a.ts"}) +
                                    "#EXT-X-PRELOAD-HINT:TYPE=PART,URI=\"q.ts\"\n"),
        playlist("a line that is too long", "#EXT-X-KEY:" + std::string(5000, 'x') + "\n" + entries({"a.ts"})),
    };
    for (const std::string line : {"#EXT-X-DISCONTINUITY", "#EXT-X-PROGRAM-DATE-TIME:2026-01-01T00:00:00Z", "# no tag"})
        cases.push_back(playlist("in the place of an address: " + line, "#EXTINF:4,\n" + line + "\na.ts\n"));
    return cases;
}

std::vector<Case> masters() {
    const std::string variant = "#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"mp4a.40.2\",AUDIO=\"a\"\n";
    const std::string other = "#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"mp4a.40.5\"\n";
    const Bytes good = media_playlist(entries({"a.ts"}));
    // After a variant that is validated.
    const std::pair<const char*, std::string> lines[] = {
        {"a rendition of another type", "#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=\"s\",URI=\"s.m3u8\"\n"},
        {"a rendition without a group", "#EXT-X-MEDIA:TYPE=AUDIO,URI=\"s.m3u8\"\n"},
        {"a rendition without a stem", "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",URI=\"s\"\n"},
        {"a variant without a stem", variant + "v\n"},
        {"a variant without an address", variant + "#EXT-X-VERSION:7\n"},
        {"one address twice", variant + "a.m3u8\n"},
        {"one address, two CODECS", other + "a.m3u8\n"},
        {"two playlists of one stem", variant + "b/a.m3u8\n"},
        {"an I-frame playlist", "#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=1,URI=\"i.m3u8\"\n"},
        {"a master playlist as a variant", other + "v.m3u8\n"},
    };
    std::vector<Case> cases;
    for (const auto& [name, more] : lines)
        cases.push_back({name,
                         {{"m.m3u8", text_bytes("#EXTM3U\n" + variant + "a.m3u8\n" + more)},
                          {"v.m3u8", text_bytes(variant + "a.m3u8\n")},
                          {"a.m3u8", good},
                          {"a.ts", GOOD},
                          {"b/a.m3u8", good},
                          {"b/a.ts", GOOD}},
                         "-i m.m3u8 -o out"});
    return cases;
}

// ---- Fragmented MP4.

const Bytes FTYP = box("ftyp", {text_bytes("isom"), zero_bytes(4)});
const Bytes TKHD = text_boxes("tkhd:32 0 0 0 1 0 0");
const std::string MAP = "#EXT-X-MAP:URI=\"i.mp4\"\n";

Bytes stsd(const Bytes& entry) {
    return full_box("stsd", 0, 0, {big_endian(4, {1}), entry});
}

const Bytes AVC = stsd(visual_entry("avc1", {avcC(4, {}, {})}));

// An init section of one track, whose trak holds this after its tkhd.
Bytes init(const Bytes& boxes) {
    return FTYP + box("moov", {box("trak", {TKHD, boxes})});
}

Case init_file(const std::string& name, const Bytes& file, const std::string& map = MAP) {
    return {name, {{"p.m3u8", media_playlist(map)}, {"i.mp4", file}, {"i", file}}};
}

Case mp4(const std::string& name, const Bytes& description, const Bytes& segment) {
    return {name,
            {{"p.m3u8", media_playlist(MAP + entries({"s.m4s"}))}, {"i.mp4", init(description)}, {"s.m4s", segment}}};
}

std::vector<Case> init_sections() {
    const Bytes long_sps = visual_entry("avc1", {text_boxes("avcC:8 1 0x4D 0 0x1F 0xFF 0xE1 0 0xFF")});
    const Bytes long_sei = visual_entry("hvc1", {box("hvcC", {zero_bytes(22), {1, 39, 0, 1, 0, 0xFF}})});
    // Its trak, in a byte range that is longer than the file, holds a box of more bytes than there are.
    const Bytes beyond = FTYP + box("moov", {box("trak", {TKHD, box("dac4", {}, 2048)}, 3840)}, 4096);
    return {
        init_file("a type that is no text", init(big_endian(4, {4, 0x10203}))),
        init_file("an edit list of version 2", init(box("edts", {text_boxes("elst:32 0x02000000 1")}))),
        init_file("no edits", init(box("edts", {text_boxes("elst:32 0 0")}))),
        init_file("two edits of another kind", init(box("edts", {text_boxes("elst:32 0 2 0 0 0 0 0 0")}))),
        init_file("an SPS that is too long", init(stsd(long_sps))),
        init_file("an SEI that is too long", init(stsd(long_sei))),
        init_file("a box after the end of the file", beyond, "#EXT-X-MAP:URI=\"i.mp4\",BYTERANGE=\"5000@0\"\n"),
        init_file("no stem", init(AVC), "#EXT-X-MAP:URI=\"i\"\n"),
        init_file("no track", FTYP),
        init_file("a byte range that is none", init(AVC), "#EXT-X-MAP:URI=\"i.mp4\",BYTERANGE=\"x\"\n"),
    };
}

std::vector<Case> mp4_segments() {
    const auto fragment = [](const Bytes& sample) { return media_segment({{.samples = {sample}}}); };
    const Bytes unit = {0, 0, 0, 1, 0x65};
    const Bytes endless = box("moof", {box("traf", {text_boxes("tfhd:32 0x20000 1\ntrun:32 0 0xFFFFFFFF")})});
    const Bytes sinf = box("sinf", {box("frma", {text_bytes("avc1")}),
                                    full_box("schm", 0, 0, {text_bytes("cenc"), big_endian(4, {0x10000})})});
    const Bytes mp3 = audio_entry("mp4a", 2, {text_boxes("esds:8 0 0 0 0 3 0x80 13 0 1 0xE0 0 9 1 65 0 8 4 5 0x6B")});
    const Bytes later = audio_entry("ac-4", 2, {text_boxes("dac4:8 0x20 0x60 1 0 0 0 0 0 0 0 0 0 3 0")});
    return {
        {"one file as init section and segment",
         {{"p.m3u8", media_playlist(MAP + entries({"i.mp4"}))}, {"i.mp4", init(AVC) + fragment(unit)}}},
        {"no init section", {{"p.m3u8", media_playlist(entries({"s.m4s"}))}, {"s.m4s", fragment(unit)}}},
        mp4("no sample", AVC, box("styp", {text_bytes("msdh")})),
        mp4("an unknown codec", stsd(visual_entry("abcd", {})), fragment({0})),
        mp4("a protected track", stsd(visual_entry("encv", {avcC(4, {}, {}), sinf})), fragment(unit)),
        mp4("MP3 in an mp4a entry", stsd(mp3), fragment({0})),
        mp4("samples without end", AVC, endless),
        mp4("a presentation of a later version", stsd(later), fragment({0, 0})),
    };
}

// ---- Packed audio. The payload is at byte 73.

Case packed(const std::string& name, const Bytes& payload, const Id3Tag& tag = {.timestamp = 126000}) {
    return {name, {{"p.m3u8", media_playlist(entries({"a.aac"}))}, {"a.aac", packed_segment(tag, payload)}}};
}

std::vector<Case> packed_audio() {
    const Bytes frame = {0x0B, 0x77, 0, 1, 0, 0x80};  // E-AC-3, of four bytes as far as its size goes
    return {
        packed("another frame", {}, {.frame_id = "TIT2"}),
        packed("another owner", {}, {.owner = std::string(45, 'x')}),
        packed("a short tag", {}, {.size = 1}),
        packed("a cut tag", {}, {.size = 64}),
        packed("an unknown format", {0x12, 0x34, 0x56, 0x78}),
        packed("nothing after the tag", {}),
        packed("a short syncframe", {0x0B, 0x77}),
        packed("ADTS with a CRC", {0xFF, 0xF8}),
        packed("MP3", {0xFF, 0xFB}),
        packed("bsid 9", {0x0B, 0x77, 0, 0, 0, 0x48}),
        packed("an AC-4 frame with a CRC", {0xAC, 0x41, 0, 0}),
        packed("no AC-4 sync word", {0xAC, 0x40, 0, 4, 0x80, 0, 0x20, 0x80, 0}),
        packed("an AC-4 frame that is cut", {0xAC, 0x40, 0, 4, 0x80, 0}),
        packed("an AC-4 frame that is too large", {0xAC, 0x40, 0xFF, 0xFF, 0xA0, 0, 1}),
        packed("no sync word at the end", frame + Bytes{0, 0}),
        packed("bytes before a sync word", frame + Bytes{0x0B, 0x77, 0, 1}),
        packed("a frame header that is cut", frame + Bytes{0x0B, 0x77}),
        {"a range after the tag",
         {{"p.m3u8", media_playlist("#EXTINF:4,\n#EXT-X-BYTERANGE:20@5\na.aac\n")},
          {"a.aac", packed_segment({}, frame)}}},
    };
}

}  // namespace

TEST(Program, Reasons) {
    std::string transcripts;
    for (const auto& make : {playlists, starts, masters, transport_streams, init_sections, mp4_segments, packed_audio})
        for (const Case& c : make()) {
            const ProgramFolder folder;
            folder.write(c.files);
            transcripts += folder.transcript(c.name, c.arguments);
        }
    expect_golden("golden/reasons.txt", transcripts);
}

}  // namespace quorlin
