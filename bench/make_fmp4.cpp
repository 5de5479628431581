// make_fmp4 DIRECTORY MEGABYTES: writes DIRECTORY/media.mp4, a fragmented MP4 file with one H.264 track (init section
// and fragments of two seconds, 50 pictures each), and DIRECTORY/media.m3u8, which names them as byte ranges. The
// slices are filled with a pattern: the file is for readers that do not decode.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/box_writer.h"

using namespace quorlin;

namespace {

constexpr size_t PICTURES_PER_FRAGMENT = 50;
constexpr size_t INTRA_SIZE = 200000;
constexpr size_t INTER_SIZE = 30000;

// 320x180, baseline; no picture is decoded.
const Bytes SPS = {0x67, 0x42, 0xC0, 0x1E, 0xD9, 0x01, 0x41, 0x9F, 0x9E, 0x10, 0x00, 0x00,
                   0x03, 0x00, 0x10, 0x00, 0x00, 0x03, 0x03, 0x20, 0xF1, 0x62, 0xE4, 0x80};
const Bytes PPS = {0x68, 0xCB, 0x83, 0xCB, 0x20};

// One slice behind its length field; no start code inside.
Bytes picture(bool intra, size_t number) {
    const size_t size = intra ? INTRA_SIZE : INTER_SIZE + number * 397 % 9001;
    Bytes unit(size);
    for (size_t i = 0; i < size; ++i) unit[i] = static_cast<uint8_t>(1 + (i * 31 + number) % 251);
    unit[0] = intra ? 0x65 : 0x41;
    return join({big_endian(4, {size}), unit});
}

Bytes fragment(size_t first_picture) {
    RunSpec run;
    run.trun_flags = 0x301;  // data offset, durations, sizes
    for (size_t i = 0; i < PICTURES_PER_FRAGMENT; ++i) run.samples.push_back(picture(i == 0, first_picture + i));
    return media_segment({run});
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_fmp4 DIRECTORY MEGABYTES\n");
        return 2;
    }
    const std::filesystem::path directory = argv[1];
    const size_t wanted = std::strtoull(argv[2], nullptr, 10) << 20;
    std::filesystem::create_directories(directory);
    std::ofstream media(directory / "media.mp4", std::ios::binary);
    std::ofstream playlist(directory / "media.m3u8");

    size_t written = 0;
    const auto write = [&](const Bytes& bytes) {
        media.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        const std::string range = std::to_string(bytes.size()) + "@" + std::to_string(written);
        written += bytes.size();
        return range;
    };
    const TrakSpec track = {
        .entry = visual_entry("avc1", {avcC(4, {SPS}, {PPS})}), .timescale = 25000, .handler_type = "vide"};
    playlist << "#EXTM3U\n#EXT-X-VERSION:7\n#EXT-X-TARGETDURATION:2\n#EXT-X-MEDIA-SEQUENCE:0\n"
             << "#EXT-X-MAP:URI=\"media.mp4\",BYTERANGE=\"" << write(init_section({track})) << "\"\n";
    for (size_t number = 0; written < wanted; number += PICTURES_PER_FRAGMENT)
        playlist << "#EXTINF:2.000,\n#EXT-X-BYTERANGE:" << write(fragment(number)) << "\nmedia.mp4\n";
    playlist << "#EXT-X-ENDLIST\n";
    media.close();
    playlist.close();
    if (media && playlist) return 0;
    std::fprintf(stderr, "make_fmp4: %s cannot be written\n", argv[1]);
    return 1;
}
