// Audio samples against their sample description.
#include <sstream>

#include "segment_run.h"
#include "support/syncframe_writer.h"

namespace quorlin {

namespace {

// A 5.1 frame as "I" with additional BSI.
Bytes frame_with_addbsi(std::istringstream& addbsi) {
    Eac3Bsi bsi = {.frmsiz = 255, .numblkscod = 3, .acmod = 7, .lfeon = 1, .bsid = 16, .dialnorm = 31};
    bsi.addbsie = 1;
    uint16_t count = 0;
    for (uint32_t value = 0; addbsi >> value;) bsi.addbsi[count++] = static_cast<uint8_t>(value);
    bsi.addbsil = static_cast<uint16_t>(count - 1);
    return write_frame(bsi);
}

Bytes sample(const std::string& description) {
    std::istringstream words(description);
    std::string kind;
    words >> kind;
    if (kind == "addbsi") return frame_with_addbsi(words);
    return kind == "empty" ? Bytes() : syncframes(description);
}

SegmentCase ec3_case(const std::string& name, const std::string& text) {
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    const Bytes init = init_with_entry(audio_entry("ec-3", 2, {text_boxes(line)}));
    RunSpec run;
    while (std::getline(lines, line)) run.samples.push_back(sample(line));
    return {name, {init, media_segment({run})}};
}

TEST(AudioSamples, AgainstTheSampleDescription) {
    std::vector<SegmentCase> cases = cases_from("data/ec3_samples.txt", ec3_case);
    const Bytes ac3 = init_with_entry(audio_entry("ac-3", 2, {box("dac3", {{0, 0, 0}})}));
    cases.push_back({"AC-3 is analyzed and not compared", {ac3, media_segment({{.samples = {syncframes("A")}}})}});
    const Bytes ac4 = init_with_entry(audio_entry("ac-4", 2, {}));
    const Bytes ac4_segment = media_segment({{.samples = {{0x40}, {0x40}}}});
    cases.push_back({"AC-4: the first sample of every segment", {ac4, ac4_segment, ac4_segment}});
    // One presentation with 5.1; the sample has none.
    const Bytes dac4 = text_boxes(
        "dac4:8 0x20 0xBA 1 0 0 0 0 0x1F 0xFF 0xFF 0xFF 0xE0 1 0x0D 0xF9 0 0 9 0 0 0x11 0xCA 2 0 0 0x11 0xC0");
    cases.push_back({"AC-4: no presentation of the description",
                     {init_with_entry(audio_entry("ac-4", 2, {dac4})),
                      media_segment({{.samples = {{0x80, 0, 0x20, 0x80, 0, 0, 0, 0}}}})}});
    expect_golden_cases("golden/audio_samples.txt", cases);
}

}  // namespace

}  // namespace quorlin
