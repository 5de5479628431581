// The walk over boxes and the rules of the movie's boxes: what ends it, what it passes over.
#include "segment_run.h"

namespace quorlin {

namespace {

Bytes nested(uint32_t levels) {
    Bytes inner = zero_bytes(0);
    for (uint32_t i = 0; i < levels; ++i) inner = box("udta", {inner});
    return inner;
}

TEST(BoxWalk, EndsWhereTheRulesSay) {
    const Bytes free8 = box("free", {zero_bytes(8)});
    expect_golden_cases(
        "golden/box_walk.txt",
        {
            {"size 0 runs to the end", {join({free8, box("free", {zero_bytes(20)}, 0)})}},
            {"size 7", {box("free", {}, 7)}},
            {"one byte after it", {join({free8, zero_bytes(1)})}},
            {"largesize in a container, the box after it is no child",
             {join(
                 {box("udta", {box("free", {big_endian(8, {24}), zero_bytes(8)}, 1)}), box("free", {zero_bytes(9)})})}},
            {"largesize 15", {box("free", {big_endian(8, {15})}, 1)}},
            {"largesize of all bits", {box("free", {big_endian(8, {UINT64_MAX})}, 1)}},
            {"child 8 too long", {join({box("udta", {box("free", {}, 16)}), free8})}},
            {"child 9 too long", {join({box("udta", {box("free", {}, 17)}), free8})}},
            {"64 levels", {nested(63)}},
            {"65 levels", {nested(65)}},
            {"uuid of 15 bytes", {box("uuid", {zero_bytes(15)})}},
            {"meta without version", {box("meta", {zero_bytes(2)})}},
            {"no track is current in the movie's metadata",
             {box("moov", {box("udta", {full_box("meta", 0, 0, {full_box("hdlr", 0, 0, {zero_bytes(20)})})})})}},
            {"track boxes outside a track",
             {join({full_box("tkhd", 9, 0, {}), box("edts", {}), full_box("stsd", 0, 0, {}),
                    full_box("stsz", 0, 0, {{0, 0, 0, 9}}), box("avc1", {}), box("dec3", {}), box("hvcC", {})})}},
            {"tkhd version 2", {init_section({{.tkhd_version = 2}})}},
            {"mdhd version 2", {init_section({{.mdhd_version = 2}})}},
            {"two sample descriptions", {init_section({{.entry_count = 2}})}},
            {"no sample description", {init_section({{.entry_count = 0}})}},
            {"fields of a box without payload lie after it",
             {box("moov", {box("trak", {box("stsd", {}), box({"\0\0\0\1", 4}, {})})})}},
            {"the walk goes on after a box that is shorter than its fields",
             {join({box("mvhd", {}), box("free", {text_bytes("these are no boxes")})})}},
            {"256 tracks", {init_section(std::vector<TrakSpec>(256))}},
            {"257 tracks", {init_section(std::vector<TrakSpec>(257))}},
        });
}

}  // namespace

}  // namespace quorlin
