// The walk over boxes and the rules of the movie's boxes: what ends it, what it passes over.
#include "isobmff/box_reader.h"

#include "segment_run.h"

namespace {

struct WalkCase {
    const char* name;
    Bytes file;
    int status = 0;
};

Bytes nested(uint32_t levels) {
    Bytes inner = zero_bytes(0);
    for (uint32_t i = 0; i < levels; ++i) inner = box("udta", {inner});
    return inner;
}

Bytes with_edits(uint8_t version, std::initializer_list<uint64_t> numbers, uint32_t count) {
    const Bytes entries = big_endian(4, numbers);
    return init_section(
        {{.entry = box("mp4v", {}),
          .before_mdia = box("edts", {full_box("elst", version, 0, {big_endian(4, {count}), entries})})}});
}

constexpr uint64_t MINUS_1 = 0xFFFFFFFF;
constexpr uint64_t RATE = 0x10000;

std::vector<WalkCase> walk_cases() {
    const Bytes free8 = box("free", {zero_bytes(8)});
    return {
        {"size 0 runs to the end", join({free8, box("free", {zero_bytes(20)}, 0)})},
        {"size 7", box("free", {}, 7), 1},
        {"size 0 with 4 bytes left", join({free8, zero_bytes(4)}), 1},
        {"one byte behind", join({free8, zero_bytes(1)}), 1},
        {"largesize", box("free", {big_endian(8, {24}), zero_bytes(8)}, 1)},
        {"largesize 15", box("free", {big_endian(8, {15})}, 1), 1},
        {"largesize of all bits", box("free", {big_endian(8, {UINT64_MAX})}, 1), 1},
        {"child 8 too long", join({box("udta", {box("free", {}, 16)}), free8})},
        {"child 9 too long", join({box("udta", {box("free", {}, 17)}), free8}), 1},
        {"64 levels", nested(63)},
        {"65 levels", nested(65), 1},
        {"uuid of 15 bytes", box("uuid", {zero_bytes(15)}), 1},
        {"meta without version", box("meta", {zero_bytes(2)})},
        {"no track is current in the movie's metadata",
         box("moov", {box("udta", {full_box("meta", 0, 0, {full_box("hdlr", 0, 0, {zero_bytes(20)})})})})},
        {"track boxes outside a track",
         join({full_box("tkhd", 9, 0, {}), box("edts", {}), full_box("stsd", 0, 0, {}), table_box("stsz", 9, {}),
               box("avc1", {}), box("dec3", {}), box("hvcC", {})})},
        {"tkhd and mdhd version 1", init_section({{.tkhd_version = 1, .mdhd_version = 1, .entry_count = 1}})},
        {"tkhd version 2", init_section({{.tkhd_version = 2}}), 1},
        {"mdhd version 2", init_section({{.mdhd_version = 2}}), 1},
        {"two sample descriptions", init_section({{.entry_count = 2}}), 1},
        {"no sample description", init_section({{.entry_count = 0}}), 1},
        {"one edit", with_edits(0, {0, 1024, RATE}, 1)},
        {"empty edit and one from 0", with_edits(0, {500, MINUS_1, RATE, 0, 0, RATE}, 2)},
        {"empty edit and one from 1024", with_edits(0, {500, MINUS_1, RATE, 0, 1024, RATE}, 2), 1},
        {"version 1 edits", with_edits(1, {0, 500, MINUS_1, MINUS_1, RATE, 0, 0, 0, 0, RATE}, 2)},
        {"no edits", with_edits(0, {}, 0), 1},
        {"three edits", with_edits(0, {5, MINUS_1, RATE, 0, 0, RATE, 0, 0, RATE}, 3), 1},
        {"second edit missing", with_edits(0, {500, MINUS_1, RATE}, 2), 1},
        {"fields of a box without payload lie behind it",
         box("moov", {box("trak", {box("stsd", {}), box({"\0\0\0\1", 4}, {})})})},
        {"edit list version 2", with_edits(2, {0, 0, RATE}, 1), 1},
        {"256 tracks", init_section(std::vector<TrakSpec>(256))},
        {"257 tracks", init_section(std::vector<TrakSpec>(257)), 1},
    };
}

TEST(BoxWalk, EndsWhereTheRulesSay) {
    for (const WalkCase& c : walk_cases()) {
        SCOPED_TRACE(c.name);
        const int status = run_segments({c.file}).statuses[0];
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(run_segments({c.file}, {.chunk_size = 5}).statuses[0], status) << "with a small buffer";
    }
}

MediaContext parse(const Bytes& file) {
    MediaContext context;
    FileReader reader = open_bytes(file);
    context.file_size = file.size();
    EXPECT_EQ(parse_media(context, reader), 0);
    return context;
}

TEST(BoxWalk, KeepsTheMovieAndItsTracks) {
    const MediaContext context = parse(init_section({{.track_ID = 7,
                                                      .entry = audio_entry("ec-3", 2, {}),
                                                      .tkhd_version = 1,
                                                      .mdhd_version = 1,
                                                      .timescale = 90000}},
                                                    {box("uuid", {text_bytes("VXRO-METADATA-00"), zero_bytes(5)})}));
    EXPECT_EQ(context.movie_timescale, 1000u);
    EXPECT_EQ(context.metadata_length, 5u);
    ASSERT_EQ(context.tracks.size(), 1u);
    const TrackRecord& track = *context.tracks[0];
    EXPECT_EQ(track.track_ID, 7u);
    EXPECT_EQ(track.handler_kind, HANDLER_SOUND);
    EXPECT_EQ(track.media_timescale, 90000u);
    EXPECT_EQ(track.codec_kind, CODEC_EC3);
    EXPECT_EQ(track.channel_count, 2u);
    EXPECT_EQ(track.samplerate, 48000u);
    EXPECT_STREQ(track.language.data(), "und");
}

TEST(BoxWalk, EditsBecomeThePresentationOffset) {
    EXPECT_EQ(parse(with_edits(0, {0, 1024, RATE}, 1)).tracks[0]->presentation_offset, -1024);
    // Whole seconds only: 2500 units of 1/1000 s count as 2.
    EXPECT_EQ(parse(with_edits(0, {2500, MINUS_1, RATE, 0, 0, RATE}, 2)).tracks[0]->presentation_offset, 96000);
}

TEST(BoxWalk, ProtectedEntriesTakeTheKindOfTheirFormat) {
    const auto protect = [](const char* format) {
        return visual_entry("encv", {box("sinf", {box("frma", {text_bytes(format)})})});
    };
    const TrackRecord lmav = std::move(*parse(init_with_entry(protect("lmav"))).tracks[0]);
    EXPECT_TRUE(lmav.encrypted);
    EXPECT_EQ(lmav.codec_kind, CODEC_AVC3);
    EXPECT_EQ(lmav.hdr_video_kind, HDR_LMAV);
    EXPECT_EQ(lmav.height, 180u);
    EXPECT_EQ(parse(init_with_entry(protect("ec-3"))).tracks[0]->codec_kind, CODEC_UNKNOWN);
}

}  // namespace
