// What a movie's boxes say about its tracks, codec configurations among it.
#include "isobmff/media_walk.h"
#include "segment_run.h"

namespace quorlin {

namespace {

void print_ec3(const TrackRecord& t) {
    std::printf("%u channels, rate %u type a %u index %u\n", t.channel_count, t.ec3.data_rate,
                t.ec3.flag_ec3_extension_type_a, t.ec3.complexity_index_type_a);
    for (size_t i = 0; i < t.ec3.num_ind_sub; ++i) {
        const Ec3IndependentSubstream& s = t.ec3.substreams[i];
        std::printf("  fscod %u bsid %u asvc %u bsmod %u acmod %u lfeon %u num_dep_sub %u chan_loc 0x%X\n", s.fscod,
                    s.bsid, s.asvc, s.bsmod, s.acmod, s.lfeon, s.num_dep_sub, s.chan_loc);
    }
}

void print_parameter_sets(const TrackRecord& t) {
    std::printf("lengths of %u", t.video.length_size_minus_one + 1);
    for (const auto& [kind, sets] : {std::pair("VPS", &t.video.vps), {"SPS", &t.video.sps}, {"PPS", &t.video.pps}})
        for (const ParameterSet& set : *sets) std::printf(" %s %zu+%zu", kind, set.offset, set.size);
    std::printf("\n");
}

void print_track(const TrackRecord& t) {
    std::printf("track %u: handler %u codec %u hdr %u encrypted %d channels %u rate %u size %ux%u\n", t.track_ID,
                static_cast<uint32_t>(t.handler_kind), static_cast<uint32_t>(t.codec_kind),
                static_cast<uint32_t>(t.hdr_video_kind), t.encrypted, t.channel_count, t.samplerate, t.width, t.height);
    std::printf("  %s timescale %u offset %d duration %u; samples %d times %zu offsets %zu chunks %zu",
                t.language.data(), t.media_timescale, static_cast<int>(t.presentation_offset), t.samples.media_duration,
                static_cast<int>(t.samples.sample_count), t.samples.time_to_sample.size(),
                t.samples.composition_offsets.size(), t.samples.chunk_offsets.size());
    for (const uint32_t number : t.samples.sync_samples) std::printf(" sync %u", number);
    for (const TimeToSample& row : t.samples.time_to_sample) std::printf(" %ux%u", row.sample_count, row.sample_delta);
    for (const CompositionOffset& row : t.samples.composition_offsets)
        std::printf(" %u+%u", row.sample_count, row.sample_offset);
    std::printf("\n");
}

// The tracks after the last file, printed by `print`.
int print_movie(const std::vector<Bytes>& files, void (*print)(const TrackRecord&)) {
    MediaContext context;
    int status = 0;
    for (const Bytes& file : files) {
        FileReader reader = open_bytes(file, "segment");
        context.limits.file_size = file.size();
        status |= parse_media(context, reader) | context.walk.status;
    }
    if (print == print_track)
        std::printf("timescale %u metadata of %d\n", context.movie_timescale,
                    static_cast<int>(context.metadata_length));
    for (const std::unique_ptr<TrackRecord>& track : context.tracks) print(*track);
    return status;
}

void expect_golden_movies(const std::string& path, const std::vector<SegmentCase>& cases,
                          void (*print)(const TrackRecord&)) {
    std::string report;
    for (const SegmentCase& c : cases)
        report += transcript_entry(c.name, [&] { return print_movie(c.sections, print); });
    testing::internal::CaptureStderr();
    report += transcript_checksums("damaged", 640, [&](std::mt19937& random) {
        const SegmentCase c = damaged(cases[random() % cases.size()], random);
        return transcript_entry("", [&] { return print_movie(c.sections, print); });
    });
    testing::internal::GetCapturedStderr();
    expect_golden(path, report);
}

SegmentCase entry_case(const std::string& name, const Bytes& entry) {
    return {name, {init_with_entry(entry)}};
}

TEST(Movie, Tracks) {
    const auto protect = [](const char* entry, const char* format) {
        return visual_entry(entry, {box("sinf", {box("frma", {text_bytes(format)})})});
    };
    const Bytes entry = audio_entry("mp4a", 2, {});
    const TrakSpec version_1 = {
        .track_ID = 7, .entry = entry, .tkhd_version = 1, .mdhd_version = 1, .handler_type = "sbtl"};
    const Bytes metadata = box("uuid", {text_bytes("VXRO-METADATA-00"), zero_bytes(5)});
    const Bytes metx = box("metx", {zero_bytes(8), text_bytes("gzip"), {0}, text_bytes("urn:vexro:mobile-metadata")});
    const Bytes times = text_boxes("stts:32 0 1 2 512\nctts:32 0 1 2 1024\nstss:32 0 1 2");
    const Bytes init = init_with_entry(box("wvtt", {}));
    const Bytes runs = fragment(
        "tfhd:32 0x20008 1 30\ntrun:32 0x205 2 0 0x2000000 1 1\n"
        "tfhd:32 0x20000 1\ntrun:32 0xB05 1 0 0x2000000 1024 1 512",
        "");
    std::vector<SegmentCase> cases = {
        {"tkhd and mdhd version 1", {init_section({version_1}, {metadata})}},
        entry_case("protected Lumora", protect("encv", "lmav")),
        entry_case("protected E-AC-3 has no kind", protect("encv", "ec-3")),
        entry_case("a clear Lumora entry keeps its HDR kind", protect("lmhe", "hvc1")),
        {"a trak given again, with one inside",
         {init, init_section({{.entry = entry, .before_mdia = trak({.track_ID = 2, .entry = entry})}})}},
        {"timed metadata", {init_section({{.entry = metx, .handler_type = "meta"}})}},
        {"times of samples", {init_section({{.entry = entry, .tables = times, .handler_type = "hint"}})}},
        {"tables grow by the fields of runs", {init, runs}},
        {"a segment begins with empty tables", {init, runs, media_segment({})}},
    };
    for (const auto& [name, text] : read_texts("data/edits.txt"))
        cases.push_back(
            {name, {init_section({{.entry = box("mp4v", {}), .before_mdia = box("edts", {text_boxes(text)})}})}});
    expect_golden_movies("golden/tracks.txt", cases, print_track);
}

TEST(Movie, Ec3Configurations) {
    expect_golden_movies("golden/ec3_configurations.txt",
                         cases_from("data/ec3_configurations.txt",
                                    [](const std::string& name, const std::string& text) {
                                        return entry_case(name, audio_entry("ec-3", 2, {text_boxes(text)}));
                                    }),
                         print_ec3);

    EXPECT_EQ(chanmap_to_chan_loc(0xF801), 0u) << "the channels of 5.1 are no locations";
    EXPECT_EQ(chanmap_to_chan_loc(0x0004), 0u) << "Lts/Rts has none";
    EXPECT_EQ(chanmap_to_chan_loc(0x07FA), 0x1FFu);
}

// A video entry with a configuration box of which only the first `size` bytes are there.
SegmentCase cut(const char* format, const Bytes& configuration, size_t size) {
    const std::string type(configuration.begin() + 4, configuration.begin() + 8);
    const Bytes payload(configuration.begin() + 8, configuration.begin() + static_cast<ptrdiff_t>(size));
    return entry_case(type + " cut to " + std::to_string(size), visual_entry(format, {box(type, {payload})}));
}

TEST(Movie, VideoConfigurations) {
    const Bytes piff = {'P', 'I', 'F', 'F', 0, 0, 0, 1, 7, 7, 0, 0, 0, 1, 8, 0, 0, 0, 1, 9};
    const Bytes avc = avcC(2, {{7, 7}}, {{8}, {8}});
    const Bytes hevc = hvcC(4, {{32, {{1}}}, {39, {{1}}}, {33, {{1}}}, {34, {{1}, {2, 2, 2}}}});
    std::vector<SegmentCase> cases = {entry_case("PIFF form", visual_entry("avc1", {box("avcC", {piff})})),
                                      cut("hvc1", hevc, hevc.size())};
    const Bytes other_sets = {1, 2, 3, 4, 0xFF, 0xE1, 0, 9, 7};
    cases.push_back(
        entry_case("enhancement layer with sets of its own", visual_entry("avc1", {avc, box("avcE", {other_sets})})));
    cases.push_back(entry_case("enhancement layer cut",
                               visual_entry("hvc1", {hevc, box("hvcE", {zero_bytes(22), {1, 34, 0, 1, 0, 9, 1}})})));
    // Inside the PPS, SPS, SEI and VPS.
    for (const size_t size : {58u, 48u, 42u, 36u}) cases.push_back(cut("hvc1", hevc, size));
    // Without anything, inside the SPS, before the PPS, inside and after the first PPS, whole.
    for (const size_t size : {8u, 17u, 18u, 21u, 22u, 25u}) cases.push_back(cut("avc1", avc, size));
    expect_golden_movies("golden/video_configurations.txt", cases, print_parameter_sets);
}

}  // namespace

}  // namespace quorlin
