// Audio samples against their sample description.
#include "isobmff/audio_sample_checks.h"

#include "segment_run.h"
#include "support/syncframe_writer.h"

namespace {

struct Ec3Case {
    const char* name;
    Bytes dec3;
    std::vector<const char*> samples;  // as `syncframes` takes them
};

// 5.1: data rate 128, fscod 0, bsid 16, bsmod 0, acmod 7, lfeon 1.
const Bytes PLAIN = {4, 0, 0x20, 0x0F, 0};
const Bytes OBJECTS = {4, 0, 0x20, 0x0F, 0, 1, 16};

const Ec3Case EC3_CASES[] = {
    {"equal", PLAIN, {"I", "I"}},
    {"data rate", {6, 0, 0x20, 0x0F, 0}, {"I"}},
    {"bsid, fscod", {4, 0, 0x5E, 0x0F, 0}, {"I"}},
    {"bsmod, acmod, lfeon", {4, 0, 0x20, 0x14, 0}, {"I"}},
    {"second programme", PLAIN, {"I I1"}},
    {"second programme announced, its acmod wrong", {8, 1, 0x20, 0x0F, 0, 0x20, 0x05, 0}, {"I I1"}},
    {"7.1", {6, 0, 0x20, 0x0F, 2, 2}, {"I D"}},
    {"7.1 with another location", {6, 0, 0x20, 0x0F, 2, 1}, {"I D"}},
    {"7.1 not announced", {6, 0, 0x20, 0x0F, 0}, {"I D"}},
    {"objects", OBJECTS, {"addbsi 0110"}},
    {"objects not in the stream", OBJECTS, {"I"}},
    {"objects, one byte", OBJECTS, {"addbsi 01"}},
    {"objects, other flag and index", OBJECTS, {"addbsi 0208"}},
    {"objects not announced", PLAIN, {"addbsi 0110"}},
    {"only the first sample is compared", PLAIN, {"I", "I:words=512"}},
    {"broken first sample", PLAIN, {"x:0B78", "I"}},
    {"empty first sample", OBJECTS, {"", "I"}},
};

// A 5.1 frame as "I" whose additional BSI is the hexadecimal number.
Bytes frame_with_addbsi(const std::string& digits) {
    Eac3Bsi bsi = {.frmsiz = 255, .numblkscod = 3, .acmod = 7, .lfeon = 1, .bsid = 16, .dialnorm = 31};
    bsi.addbsie = 1;
    bsi.addbsil = static_cast<uint16_t>(digits.size() / 2 - 1);
    for (size_t i = 0; i < digits.size() / 2; ++i)
        bsi.addbsi[i] = static_cast<uint8_t>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
    return write_frame(bsi);
}

Bytes sample(const std::string& description) {
    const std::string addbsi = "addbsi ";
    if (description.starts_with(addbsi)) return frame_with_addbsi(description.substr(addbsi.size()));
    return description.empty() ? Bytes() : syncframes(description);
}

TEST(AudioSamples, Ec3AgainstDec3) {
    std::string report;
    for (const Ec3Case& c : EC3_CASES) {
        RunSpec run_spec;
        for (const char* description : c.samples) run_spec.samples.push_back(sample(description));
        const Bytes init = init_with_entry(audio_entry("ec-3", 2, {box("dec3", {c.dec3})}));
        const SegmentRun run = run_segments({init, media_segment({run_spec})});
        report += "== " + std::string(c.name) + ": " + std::to_string(run.statuses[1]) + "\n" + run.out;
        EXPECT_EQ(run.track("track_id_1.ec3").size(),
                  run_spec.samples[0].size() + (c.samples.size() > 1 ? run_spec.samples[1].size() : 0));
    }
    expect_golden("golden/ec3_samples.txt", report);
}

TEST(AudioSamples, Ac3IsAnalyzedAndNotCompared) {
    const Bytes init = init_with_entry(audio_entry("ac-3", 2, {box("dac3", {{0, 0, 0}})}));
    const SegmentRun run = run_segments({init, media_segment({{.samples = {sample("A")}}})});
    EXPECT_EQ(run.statuses[1], 11);
    EXPECT_EQ(run.out.find("[SV]"), std::string::npos);
    EXPECT_NE(run.out.find("ERROR: Zentra Plus info tool returns errors when parsing the payload data.\n"),
              std::string::npos);
}

TEST(AudioSamples, Ac4FirstSampleOfEverySegment) {
    const Bytes init = init_with_entry(audio_entry("ac-4", 2, {}));
    const Bytes segment = media_segment({{.samples = {{0x40}, {0x40}}}});
    const SegmentRun run = run_segments({init, segment, segment});
    const std::string once =
        "ERROR: Failed to parse the Vexro AC-4 dsi.\nERROR: Failed to parse the Vexro AC-4 elementary stream.\n";
    EXPECT_EQ(run.out, once + once);
    EXPECT_EQ(run.statuses, (std::vector<int>{0, 11, 11, 0}));
}

}  // namespace
