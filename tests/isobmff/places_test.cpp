// Where findings and reasons are recorded to be, and the facts of a segment's tracks.
#include "bits/recorder.h"
#include "segment_run.h"
#include "support/syncframe_writer.h"

namespace quorlin {

namespace {

std::string described(const Place& place) {
    std::string text = place.segment == nullptr ? "" : std::string(" of ") + place.segment;
    if (place.offset != NO_OFFSET) text += " byte " + std::to_string(place.offset);
    if (place.stream != NO_STREAM) text += " track " + std::to_string(place.stream);
    if (place.time != NO_TIME) text += " time " + std::to_string(place.time);
    return place.repeated ? text + " repeated" : text;
}

void print_stream(const StreamFacts& facts) {
    std::printf("track %d %s: first %lld last %lld end %lld, %llu samples of %llu bytes, %u channels, %u kbit/s\n",
                facts.id, facts.codec, static_cast<long long>(facts.first_time),
                static_cast<long long>(facts.last_time), static_cast<long long>(facts.end_time),
                static_cast<unsigned long long>(facts.units), static_cast<unsigned long long>(facts.payload_bytes),
                facts.channels, facts.data_rate_kbps);
}

Recorder printing_recorder() {
    Recorder recorder = {};
    recorder.finding = [](const Finding& finding) {
        std::printf("%s%s:%s\n", finding.id, finding.fails ? "" : " (verdict untouched)",
                    described(finding.place).c_str());
    };
    recorder.reason = [](const Reason& reason) {
        std::printf("%s%s%s:%s\n", reason.id, reason.fails ? " fails" : "", reason.unvalidated ? " unvalidated" : "",
                    described(reason.place).c_str());
    };
    recorder.segment = [](const SegmentFacts& facts, const Place&) {
        for (const StreamFacts& stream : facts.streams) print_stream(stream);
    };
    return recorder;
}

int validate(const SegmentCase& c) {
    static constexpr const char* NAMES[] = {"init", "first", "second"};
    int status = 0;
    MediaContextPtr context = create_init_context({.attrs = c.attrs ? &*c.attrs : nullptr}, "i");
    for (size_t i = 0; i < c.sections.size(); ++i) {
        FileReader reader = open_bytes(c.sections[i], "segment");
        Place place;
        place.segment = NAMES[i];
        const PlaceScope scope(place);
        SegmentEntry entry;
        entry.kind = i == 0 ? SegmentKind::INIT : SegmentKind::MEDIA;
        status |= validate_mp4_segment(reader, entry, context.get());
        record_segment({});
    }
    return status | release_init_context(context);
}

// A fragment whose first run begins at `tfdt`, with samples of 32 ms at 48 kHz.
Bytes timed(const std::string& tfdt, const std::vector<Bytes>& samples) {
    std::string run = "trun:32 0x301 " + std::to_string(samples.size());
    std::string sizes;
    Bytes data;
    for (const Bytes& sample : samples) {
        sizes += " 1536 " + std::to_string(sample.size());
        data.insert(data.end(), sample.begin(), sample.end());
    }
    const std::string head = "tfhd:32 0x20000 1\n" + tfdt + run;
    const std::string offset = std::to_string(fragment(head + " 0" + sizes, "").size());
    return fragment(head + " " + offset + sizes, {data.begin(), data.end()});
}

TEST(Places, OfFindingsAndFacts) {
    const Bytes frame = syncframes("I");
    const Bytes odd = {0x0B, 0x78};
    const Bytes without_chanmap = syncframes("I:acmod=2,lfeon=0 D:acmod=7,chanmape=0");
    const Bytes ec3 = audio_entry("ec-3", 2, {text_boxes("dec3:8 6 0 0x21 0x0F 0")});
    const Bytes dac4 = text_boxes("dac4:8 0x20 0xBA 1 0 0 0 0 0x1F 0xFF 0xFF 0xFF 0xE0 1 0x0D");
    const Bytes cut_vps = hvcC(4, {{32, {{1}}}});
    const Bytes hevc = visual_entry("hvc1", {box("hvcC", {Bytes(cut_vps.begin() + 8, cut_vps.end() - 1)})});
    const Bytes unit = {0, 0, 0, 1, 2};
    const Bytes long_unit = {0, 0, 0, 9, 2};
    PlaylistAttributes attrs;
    attrs.codecs = "mp4a";
    const auto init = [](const Bytes& entry, uint32_t timescale) {
        return init_section({{.entry = entry, .timescale = timescale}});
    };
    const std::vector<SegmentCase> cases = {
        {"E-AC-3: the second sample is none, later lines are the same failure",
         {init(ec3, 48000), timed("tfdt:32 0 48000\n", {frame, odd, frame}), timed("tfdt:32 0x1000000 1 0\n", {frame})},
         {},
         attrs},
        {"AC-4: the box is said again",
         {init(audio_entry("ac-4", 2, {dac4}), 48000), timed("", {{0x40}}), timed("", {{0x40}})}},
        {"H.265: boxes, the second sample, a cut one",
         {init(hevc, 48000), timed("tfdt:32 0 0\n", {unit, long_unit}),
          fragment("tfhd:32 0x20000 1\ntfdt:32 0 96000\ntrun:32 0x201 1 5000 9", "")}},
        {"times beyond measure", {init(ec3, 1), timed("tfdt:32 0x1000000 0xFFFFFFFF 0xFFFFFFFF\n", {frame})}},
        {"the channels of a dependent substream without a chanmap are those of its acmod",
         {init(ec3, 48000), timed("", {without_chanmap})}},
        {"no timescale", {init(ec3, 0), timed("tfdt:32 0 1\n", {frame})}},
        {"encrypted",
         {init(visual_entry("encv", {avcC(4, {}, {}), box("sinf", {box("frma", {text_bytes("avc1")})})}), 48000),
          timed("tfdt:32 0 0\n", {unit})}},
    };
    const Recorder recorder = printing_recorder();
    set_recorder(&recorder);
    std::string report;
    testing::internal::CaptureStderr();
    for (const SegmentCase& c : cases) report += transcript_entry(c.name, [&] { return validate(c); });
    testing::internal::GetCapturedStderr();
    set_recorder(nullptr);
    expect_golden("golden/places.txt", report);
}

}  // namespace

}  // namespace quorlin
