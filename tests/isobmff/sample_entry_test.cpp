// Sample entries against CODECS and CHANNELS, and the rules of Lumora.
#include <map>
#include <sstream>

#include "segment_run.h"

namespace quorlin {

namespace {

std::optional<PlaylistAttributes> attributes(const std::string& codecs, std::optional<std::string> channels = {}) {
    PlaylistAttributes attrs;
    if (codecs != "none") attrs.codecs = codecs;
    attrs.channels = std::move(channels);
    return attrs;
}

TEST(SampleEntry, AgainstThePlaylist) {
    // bitstream_version 2, one presentation of version 1 with mdcompat 1 and six channels.
    const char* const dac4 =
        "dac4:8 0x20 0xBA 1 0 0 0 0 0x1F 0xFF 0xFF 0xFF 0xE0 1 0x0D 0xF9 0 0 9 0 0 0x11 0xCA 2 0 0 0x11 0xC0";
    const std::map<std::string, Bytes> entries = {
        {"mp4a", audio_entry("mp4a", 2, {})},
        {"ac-3", audio_entry("ac-3", 2, {})},
        {"ec-3", audio_entry("ec-3", 2, {text_boxes("dec3:8 6 0 0x20 0x0F 0")})},
        {"objects", audio_entry("ec-3", 2, {text_boxes("dec3:8 6 0 0x20 0x0F 0 1 16")})},
        {"ac-4", audio_entry("ac-4", 2, {text_boxes(dac4)})},
        {"bare", audio_entry("ac-4", 2, {})},
        {"avc1", visual_entry("avc1", {})},
        {"hev1", visual_entry("hev1", {})},
        {"wvtt", box("wvtt", {})},
    };
    const auto entry_case = [&entries](const std::string& name, const std::string& text) {
        std::istringstream words(text);
        std::string entry, codecs;
        std::optional<std::string> channels;
        words >> entry >> codecs;
        if (words.get() == ' ') std::getline(words, channels.emplace());
        return SegmentCase{name, {init_with_entry(entries.at(entry))}, {}, attributes(codecs, channels)};
    };
    expect_golden_cases("golden/sample_entries.txt", cases_from("data/sample_entries.txt", entry_case));
}

SegmentCase lumora_case(const std::string& name, const std::string& text) {
    const auto has = [&text](const char* word) { return text.find(word) != std::string::npos; };
    std::string format, layers, codecs;
    uint32_t profile = 0, level = 0;
    std::istringstream(text) >> format >> profile >> level >> layers >> codecs;
    const bool hevc = format.find('h') != std::string::npos;
    const uint32_t announced = has("RPU") * 4u + has("EL") * 2u + has("BL") * 1u;
    const Bytes lmcC = box("lmcC", {{1, static_cast<uint8_t>(has("minor=1"))},
                                    big_endian(2, {profile << 9 | level << 3 | announced}),
                                    zero_bytes(20)});
    const Bytes el_box = has("el_box") ? box("hvcE", {zero_bytes(30)}) : Bytes();
    Bytes file = init_with_entry(visual_entry(format, {hevc ? hvcC(4, {}) : avcC(4, {}, {}), lmcC, el_box}));
    Bytes sample;
    if (has(" rpu")) sample = {0, 0, 0, 2, 62 << 1, 1};
    if (has(" el\n")) sample = join({sample, {0, 0, 0, 2, 63 << 1, 1}});
    if (!sample.empty()) file = join({file, media_segment({{.samples = {sample}}})});
    return {name, {file}, {}, attributes(codecs)};
}

TEST(SampleEntry, Lumora) {
    expect_golden_cases("golden/lumora.txt", cases_from("data/lumora.txt", lumora_case));
}

}  // namespace

}  // namespace quorlin
