#include "ts/ts_segment.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <filesystem>
#include <string>

#include "bits/stream_clock.h"
#include "support/files.h"
#include "support/golden.h"
#include "support/place_recorder.h"
#include "support/syncframe_writer.h"
#include "support/ts_writer.h"

namespace quorlin {

namespace {

using Streams = std::vector<PmtSpec::Stream>;

struct Demuxed {
    std::string report;                        // status, findings, reasons, times and the sizes of the files
    std::map<std::string, std::string> files;  // by name
};

// Demultiplexes `bytes` through a buffer of `chunk` bytes.
Demuxed demux(const Bytes& bytes, const char* name = "", uint32_t chunk = READER_CHUNK_SIZE,
              const PlaylistAttributes* attrs = nullptr) {
    const std::string directory = scratch_path("ts");
    std::filesystem::create_directory(directory);
    FileReader reader = open_bytes(bytes, "s.ts", chunk);
    TsSegmentTiming timing;
    Demuxed result;
    result.report = transcript_entry(name, [&] {
        testing::internal::CaptureStderr();
        const int status = ts_process_segment(reader, {directory, "s", attrs}, &timing);
        record_segment({});
        std::printf("%s", testing::internal::GetCapturedStderr().c_str());
        result.files = take_files(directory);
        for (const auto& [file, content] : result.files) std::printf("%s: %zu bytes\n", file.c_str(), content.size());
        for (const TsStreamTiming& audio : std::span(timing.streams).first(timing.audio_count))
            std::printf("type %u: %" PRId64 "..%" PRId64 "\n", audio.stream_type, audio.first_pts, audio.end_pts);
        std::printf("video: %" PRId64 "..%" PRId64 "\n", timing.video_first_pts, timing.video_end_pts);
        return status;
    });
    return result;
}

std::string entry(const char* name, const TsWriter& segment) {
    return demux(segment.bytes, name).report;
}

Bytes numbered(size_t count, size_t first = 0) {
    Bytes bytes(count);
    for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(first + i * 7);
    return bytes;
}

constexpr uint16_t AUDIO_PID = 0x101;
constexpr uint16_t VIDEO_PID = 0x102;

PesSpec pes(size_t size, std::optional<uint16_t> length = {}, std::optional<uint64_t> pts = {}) {
    return {.stream_id = 0xC0, .pts = pts, .payload = numbered(size), .PES_packet_length = length};
}

TsWriter begin_segment(const Streams& streams, const Bytes& program_info = {}) {
    TsWriter writer;
    writer.pat();
    writer.pmt({.streams = streams, .program_info = program_info});
    return writer;
}

TsWriter audio_segment(const std::vector<PesSpec>& packets) {
    TsWriter writer = begin_segment({{0x0F, AUDIO_PID}});
    for (const PesSpec& spec : packets) writer.pes(AUDIO_PID, spec);
    return writer;
}

// AAC in several packets a PES packet, unbounded video, times on both.
TsWriter small_segment(uint64_t pictures = 3) {
    TsWriter writer = begin_segment({{0x0F, AUDIO_PID}, {0x1B, VIDEO_PID}});
    for (uint64_t i = 0; i < pictures; ++i) {
        PesSpec video = {.stream_id = 0xE0, .pts = 10000 + 3000 * i, .dts = 9000 + 3000 * i, .PES_packet_length = 0};
        video.payload = numbered(400 + 100 * i, i);
        writer.pes(VIDEO_PID, video);
        writer.pes(AUDIO_PID, pes(200 + i, {}, 10100 + 2000 * i));
    }
    return writer;
}

std::string text_of(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace

TEST(TsSegment, EverySeamGivesTheSameResult) {
    const Bytes bytes = small_segment().bytes;
    const Demuxed whole = demux(bytes);
    EXPECT_EQ(whole.files.at("s_pid_257.adts"), text_of(numbered(200) + numbered(201) + numbered(202)));
    EXPECT_EQ(whole.files.at("s_pid_258.h264"), text_of(numbered(400) + numbered(500, 1) + numbered(600, 2)));
    for (uint32_t chunk : {1u, 7u, 188u, 189u}) {
        const Demuxed seams = demux(bytes, "", chunk);
        EXPECT_EQ(seams.report, whole.report) << chunk;
        EXPECT_EQ(seams.files, whole.files) << chunk;
    }
}

// Where transport packets cut the header of a PES packet changes nothing.
TEST(TsSegment, EveryCutOfAHeaderGivesTheSameResult) {
    const Bytes unit = pes_packet({.stream_id = 0xC0, .pts = 9000, .dts = 8000, .payload = numbered(300)});
    const auto demux_cut = [&](size_t first, size_t second) {
        TsWriter segment = begin_segment({{0x0F, AUDIO_PID}});
        auto at = unit.begin();
        for (const size_t size : {first, second, size_t{150}, size_t{100}, unit.size() - first - second - 250}) {
            const auto end = at + static_cast<long>(size);
            segment.packet({AUDIO_PID, at == unit.begin(), Bytes(at, end)});
            at = end;
        }
        return demux(segment.bytes);
    };
    const Demuxed whole = demux_cut(50, 1);
    EXPECT_EQ(whole.files.at("s_pid_257.adts"), text_of(numbered(300)));
    for (size_t first = 1; first < 21; ++first)
        for (const size_t second : {size_t{1}, size_t{8}}) {
            const Demuxed cut = demux_cut(first, second);
            EXPECT_EQ(cut.report, whole.report) << first << " " << second;
            EXPECT_EQ(cut.files, whole.files) << first << " " << second;
        }
}

TEST(TsSegment, EveryPrefixWritesAPrefix) {
    const Bytes bytes = small_segment().bytes;
    const Demuxed whole = demux(bytes);
    // Every cut near the edges of packets, and some inside them.
    for (size_t size = 0; size < bytes.size(); size += size % 188 < 4 || size % 188 > 184 ? 1 : 13) {
        const Demuxed part = demux(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(size)), "", 4096);
        ASSERT_NE(part.report.find(size < 188 ? ": 5\n" : ": 0\n"), std::string::npos) << size;
        for (const auto& [name, content] : part.files) ASSERT_TRUE(whole.files.at(name).starts_with(content)) << size;
    }
}

TEST(TsSegment, LostSync) {
    const struct {
        const char* name;
        std::vector<size_t> bad_packets;
        size_t cut = 0;  // bytes taken from the end
    } cases[] = {
        {"first packet bad", {0}},
        {"one bad packet", {3}},
        {"two in a row", {3, 4}},
        {"last packet bad", {10}},
        {"fragment after a good one", {}, 1},
        {"fragment after a bad one", {9}, 1},
    };
    std::string transcript;
    for (const auto& c : cases) {
        TsWriter segment = small_segment();
        segment.bytes.resize(11 * 188);
        for (size_t packet : c.bad_packets) segment.bytes[packet * 188] = 0x46;
        segment.bytes.resize(segment.bytes.size() - c.cut);
        transcript += entry(c.name, segment);
    }
    expect_golden("golden/lost_sync.txt", transcript);
}

TEST(TsSegment, FilesOfStreamTypesAndDescriptors) {
    const Bytes ac4 = ts_descriptor(0x7F, {0x15, 0});
    const Bytes eac3 = ts_descriptor(0x7A, {0x80, 0x52, 0});
    const Bytes ac3 = ts_descriptor(0x6A, {0});
    const Bytes avc = ts_descriptor(0x28, {0});
    const Bytes hevc = ts_descriptor(0x38, {0});
    const std::pair<const char*, Streams> cases[] = {
        {"audio types", {{0x04, 50}, {0x0F, 51}, {0x11, 52}, {0x81, 53}, {0x87, 54}}},
        {"private audio", {{6, 60, ac4}, {6, 61, eac3}, {6, 62, ac3}}},
        {"two marks", {{6, 60, eac3 + ac4}, {6, 61, ac3 + eac3}}},
        {"video types 1", {{0x01, 70}}},
        {"video types 2", {{0x24, 70}}},
        {"private video", {{6, 70, hevc + avc}}},
        {"audio and video marks", {{6, 70, ac3 + hevc}}},
        {"second video", {{0x1B, 70}, {0x24, 71}, {0x1B, 70}}},
        {"nothing to follow", {{0x40, 70}, {0x06, 71}, {0x03, 72}}},
    };
    std::string transcript;
    for (const auto& [name, streams] : cases) transcript += entry(name, begin_segment(streams));
    expect_golden("golden/stream_files.txt", transcript);
}

TEST(TsSegment, WhatAPesPacketLeaves) {
    const std::pair<const char*, std::vector<PesSpec>> cases[] = {
        {"of unknown length", {pes(500, 0)}},
        {"cut short by the next", {pes(500, 600), pes(10)}},
        {"shorter than its packets", {pes(500, 103)}},
        {"length ends in the header: never complete", {pes(500, 7, 6000), pes(10, {}, 8000)}},
        {"length ends with the header: complete", {pes(0, 8, 7000), pes(0, 8, 6000), pes(0, 8, 9000)}},
        {"longer than a slot", {pes(1000500, 0), pes(10)}},
        {"cut by the end of the segment", {pes(500, 60000)}},
        {"no times", {pes(20), pes(20)}},
    };
    std::string transcript = entry("one picture tells no distance", small_segment(1));
    transcript += entry("two pictures", small_segment(2));
    for (const auto& [name, packets] : cases) transcript += entry(name, audio_segment(packets));

    const std::pair<const char*, PmtSpec::Stream> private_data[] = {
        {"stream_ids of AAC", {0x0F, AUDIO_PID}},
        {"stream_ids of AC-3", {0x81, AUDIO_PID}},
        {"stream_ids of E-AC-3", {0x87, AUDIO_PID}},
        {"stream_ids of AC-4", {0x06, AUDIO_PID, ts_descriptor(0x7F, {0x15, 0})}},
        {"a stream with marks of audio and video",
         {0x06, AUDIO_PID, ts_descriptor(0x6A, {}) + ts_descriptor(0x38, {})}},
    };
    for (const auto& [name, stream] : private_data) {
        TsWriter segment = begin_segment({stream});
        for (const uint8_t stream_id : Bytes{0xC0, 0xBD})
            segment.pes(AUDIO_PID, {.stream_id = stream_id, .payload = numbered(20)});
        transcript += entry(name, segment);
    }
    TsWriter outside = audio_segment({});
    for (const uint8_t length : Bytes{200, 183})  // the second leaves an empty payload
        outside.packet({AUDIO_PID, true, numbered(20), length});
    PesSpec header = pes(500);
    header.PES_header_data_length = 255;  // ends in the second packet: nothing of the first is payload
    outside.pes(AUDIO_PID, header);
    outside.packet({0, true, Bytes(184, 250)});  // pointer_field
    transcript += entry("headers that point outside the packet", outside);

    TsWriter pauses = audio_segment({pes(175, 300)});
    pauses.packet({.pid = AUDIO_PID, .payload_unit_start_indicator = true});
    pauses.packet({.pid = AUDIO_PID, .payload = numbered(130)});
    transcript += entry("an adaptation field alone begins nothing", pauses);
    expect_golden("golden/pes_packets.txt", transcript);
}

TEST(TsSegment, ProgramTables) {
    Streams audio;
    for (uint16_t i = 0; i < 11; ++i) audio.push_back({0x0F, static_cast<uint16_t>(200 + i)});
    std::string transcript = entry("eleven audio streams", begin_segment(audio));

    const Bytes descriptors = ts_descriptor(0x0A, {}) + ts_descriptor(0x6A, {});
    transcript += entry("descriptors of a stream", begin_segment({{0x06, 200, descriptors}, {0x0F, 201}}));
    transcript += entry("descriptors of the program", begin_segment({{0x0F, AUDIO_PID}}, descriptors));

    TsWriter writer;
    writer.pat({{0, 99}, {1, 100}, {2, 101}});                         // the network's table is no program's
    writer.pmt({.streams = {{0x0F, 200}}, .program_number = 9}, 100);  // the association table's number holds
    writer.pmt({.streams = {{0x0F, 201}}}, 101);
    transcript += entry("two programs", writer);

    // The PMT's PID becomes an audio PID's once the PAT lists it no more; the program known stays known.
    TsWriter moved = begin_segment({{0x0F, AUDIO_PID}, {0x0F, 0x100}});
    moved.pes(AUDIO_PID, pes(20));
    moved.packet({0, false, Bytes(184)});  // no section
    moved.pes(0x100, pes(30));             // still a program table
    moved.pat({{7, 0x300}});
    moved.pes(0x100, pes(40));
    transcript += entry("another program table", moved);

    TsWriter after_stuffing;
    after_stuffing.pat({{1, 0x100}}, 3);
    after_stuffing.pmt({.streams = {{0x0F, AUDIO_PID}}}, 0x100, 150);
    transcript += entry("sections after a pointer_field", after_stuffing);

    // Its second packet is cut as if it began with a pointer_field, here the high byte of a PID: nothing is complete.
    Streams many(40, {0x40, 0x300});
    many[0] = {0x0F, AUDIO_PID};
    transcript += entry("a section of two packets", begin_segment(many));

    TsWriter repeated = begin_segment({{0x87, AUDIO_PID, ts_descriptor(0xCC, {0xA0, 0xC5, 0x20, 0})}});
    repeated.pmt({.streams = {{0x0F, AUDIO_PID}}});
    repeated.pmt({.streams = {{0x87, AUDIO_PID, ts_descriptor(0x7A, {0x80, 0xC5, 0x20})}}});
    transcript += entry("a table with a finding is parsed anew, one without is not", repeated);

    const Streams wrong_tag = {{0x87, AUDIO_PID, ts_descriptor(0x7A, {0x80, 0xC5, 0x20})}};
    TsWriter once = begin_segment(wrong_tag);
    once.pmt({.streams = wrong_tag});
    transcript += entry("a table is checked once", once);

    // Parsed while another program is followed, compared when its own turn comes.
    TsWriter later;
    later.pat({{1, 0x100}, {2, 0x200}});
    later.pmt({.streams = wrong_tag}, 0x200);
    later.pat({{2, 0x200}});
    later.pmt({.streams = wrong_tag}, 0x200);
    transcript += entry("a table is checked when its program is followed", later);
    expect_golden("golden/program_tables.txt", transcript);
}

// Every kind of stream, three PES packets each.
TsWriter rich_segment() {
    const Bytes ac4 = {0xAC, 0x40, 0, 8, 0x80, 0, 0x20, 0x80, 0, 0, 0, 0};
    const Bytes lmra = ts_descriptor(0xB0, {1, 0, 8 << 1, 6 << 3 | 7});
    const struct {
        PmtSpec::Stream stream;
        Bytes payload;
        uint8_t stream_id = 0xBD;
    } streams[] = {
        {{0x81, 0x110, ts_descriptor(0x81, {0})}, syncframes("A:frmsizecod=0")},
        {{0x87, 0x111, ts_descriptor(0xCC, {0x80, 0xC5, 0x20})}, syncframes("2*I:words=40")},
        {{0x06, 0x112, ts_descriptor(0x7A, {0x80, 0xC2, 0x20})}, syncframes("I:words=40,acmod=2 D:words=40")},
        {{0x06, 0x113, ts_descriptor(0x7F, {0x15, 0})}, ac4 + ac4},
        {{0x0F, 0x114}, numbered(50), 0xC0},
        {{0x24, 0x115, lmra}, numbered(300), 0xE0},
    };
    Streams listed;
    for (const auto& each : streams) listed.push_back(each.stream);
    TsWriter writer = begin_segment(listed);
    for (uint64_t time = 90000; time < 98000; time += 2880)
        for (const auto& each : streams)
            writer.pes(each.stream.elementary_PID,
                       {.stream_id = each.stream_id, .pts = time + 1, .dts = time, .payload = each.payload});
    return writer;
}

// Faults in the headers of packets and sections rather than in what they carry.
TEST(TsSegment, DamagedSegments) {
    const Bytes segments[] = {rich_segment().bytes, small_segment().bytes};
    PlaylistAttributes attrs;
    attrs.codecs = "ac-3,ec-3,ac-4.02.01.00,mp4a,hvc1,lmhe.08.06";
    const auto run = [&](std::mt19937& random) {
        Bytes bytes = segments[random() % 2];
        for (auto faults = 1 + random() % 3; faults > 0; --faults) {
            const size_t packet = random() % 3 == 0 ? random() % 2 : random() % (bytes.size() / 188);
            const size_t at = packet * 188 + random() % (packet < 2 ? 120 : 24);
            bytes[at] = static_cast<uint8_t>(random() % 2 == 0 ? random() : bytes[at] ^ 1u << random() % 8);
        }
        if (random() % 4 == 0) bytes = with_faults(bytes, random);
        reset_stream_clock();
        const Demuxed demuxed = demux(bytes, "", READER_CHUNK_SIZE, random() % 2 == 0 ? &attrs : nullptr);
        std::string text = demuxed.report;
        for (const auto& [name, content] : demuxed.files) text += content;
        return text;
    };
    expect_golden("golden/damaged_segments.txt", transcript_checksums("damaged", 2560, run));
}

TEST(TsSegment, PlacesOfFindingsAndFactsOfStreams) {
    constexpr uint64_t LAST_PTS = 0x1FFFFFFFF;  // before the clock wraps
    TsWriter segment = begin_segment({{0x87, AUDIO_PID}, {0x1B, VIDEO_PID}, {0x03, 0x103}});
    segment.pes(VIDEO_PID, {.stream_id = 0xE0, .pts = LAST_PTS - 1, .dts = LAST_PTS, .payload = numbered(200)});
    segment.pes(AUDIO_PID, pes(10));  // of a stream_id that is refused
    segment.pes(VIDEO_PID, {.stream_id = 0xE0, .pts = 2999, .payload = numbered(200), .PES_packet_length = 0});
    const size_t scrambled = segment.bytes.size();
    segment.pes(AUDIO_PID, {.pts = 2000, .payload = numbered(300)});  // without a descriptor
    segment.bytes[scrambled + 3] |= 0x80;
    segment.pes(AUDIO_PID, {.pts = 4000, .payload = numbered(300)});
    const size_t bad = segment.bytes.size() - 188;  // the end of that packet
    segment.bytes[bad] = 0;
    segment.bytes.resize(bad + 288);
    reset_stream_clock();
    set_recorder(&PLACE_RECORDER);
    const std::string report = entry("places and facts", segment);
    set_recorder(nullptr);
    expect_golden("golden/places.txt", report);
}

}  // namespace quorlin
