#include "ts/ts_segment.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "support/golden.h"
#include "support/ts_writer.h"

namespace {

struct Demuxed {
    int status = -1;
    std::string printed;
    std::string reasons;                       // on standard error
    std::map<std::string, std::string> files;  // by suffix
    TsSegmentTiming timing;
};

std::map<std::string, std::string> take_files(const std::filesystem::path& directory) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        files[entry.path().filename().string()] = {std::istreambuf_iterator<char>(stream), {}};
    }
    return files;
}

// Demultiplexes `bytes` through a buffer of `chunk` bytes into files that are read back.
Demuxed demux(Bytes bytes, uint32_t chunk = READER_CHUNK_SIZE, bool with_output = true) {
    char name[] = "/tmp/ts_segment_testXXXXXX";
    const std::filesystem::path directory = mkdtemp(name);
    std::optional<std::string> output;
    if (with_output) output = directory.string();
    Demuxed result;
    FileReader reader;
    reader.file = bytes.empty() ? open_input_stream("/dev/null") : File(fmemopen(bytes.data(), bytes.size(), "rb"));
    reader.path = "s.ts";
    reader.chunk_size = chunk;
    reader_start(reader);
    testing::internal::CaptureStderr();
    result.printed =
        printed_by([&] { result.status = ts_process_segment(reader, output, "s", true, nullptr, &result.timing); });
    result.reasons = testing::internal::GetCapturedStderr();
    result.files = take_files(directory);
    std::filesystem::remove_all(directory);
    return result;
}

Bytes numbered(size_t count, uint8_t first = 0) {
    Bytes bytes(count);
    for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(first + i * 7);
    return bytes;
}

std::string text_of(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

constexpr uint16_t AUDIO_PID = 0x101;
constexpr uint16_t VIDEO_PID = 0x102;

PesSpec pes(const Bytes& payload, uint8_t stream_id = 0xC0) {
    PesSpec spec;
    spec.stream_id = stream_id;
    spec.payload = payload;
    return spec;
}

TsWriter begin_segment(const std::vector<PmtSpec::Stream>& streams) {
    TsWriter writer;
    writer.pat({});
    PmtSpec pmt;
    pmt.streams = streams;
    writer.pmt(pmt);
    return writer;
}

// AAC in several packets a PES packet, unbounded video, times on both.
TsWriter small_segment() {
    TsWriter writer = begin_segment({{0x0F, AUDIO_PID}, {0x1B, VIDEO_PID}});
    for (uint64_t i = 0; i < 3; ++i) {
        PesSpec video = pes(numbered(400 + 100 * i, static_cast<uint8_t>(i)), 0xE0);
        video.pts = 10000 + 3000 * i;
        video.dts = 9000 + 3000 * i;
        video.PES_packet_length = 0;
        writer.pes(VIDEO_PID, video);
        PesSpec audio = pes(numbered(200 + i));
        audio.pts = 10100 + 2000 * i;
        writer.pes(AUDIO_PID, audio);
    }
    return writer;
}

}  // namespace

TEST(TsSegment, EverySeamGivesTheSameResult) {
    const Bytes bytes = small_segment().bytes;
    const Demuxed whole = demux(bytes);
    EXPECT_EQ(whole.status, 0) << whole.printed;
    EXPECT_EQ(whole.files.at("s_pid_257.adts"),
              text_of(numbered(200)) + text_of(numbered(201)) + text_of(numbered(202)));
    EXPECT_EQ(whole.files.at("s_pid_258.h264"),
              text_of(numbered(400)) + text_of(numbered(500, 1)) + text_of(numbered(600, 2)));
    EXPECT_EQ(whole.timing.audio_count, 1u);
    EXPECT_EQ(whole.timing.streams[0].stream_type, 0x0Fu);
    EXPECT_EQ(whole.timing.streams[0].first_pts, 10100);
    EXPECT_EQ(whole.timing.streams[0].end_pts, 14100);
    EXPECT_EQ(whole.timing.video_first_pts, 10000);
    EXPECT_EQ(whole.timing.video_end_pts, 19000);
    for (uint32_t chunk : {1u, 7u, 188u, 189u}) {
        const Demuxed seams = demux(bytes, chunk);
        EXPECT_EQ(seams.status, whole.status) << chunk;
        EXPECT_EQ(seams.printed, whole.printed) << chunk;
        EXPECT_EQ(seams.files, whole.files) << chunk;
    }
    const Demuxed checks_alone = demux(bytes, READER_CHUNK_SIZE, false);
    EXPECT_EQ(checks_alone.status, 0);
    EXPECT_TRUE(checks_alone.files.empty());
}

TEST(TsSegment, EveryPrefixWritesAPrefix) {
    const Bytes bytes = small_segment().bytes;
    const Demuxed whole = demux(bytes);
    // Every cut near the edges of packets, and some inside them.
    for (size_t size = 0; size < bytes.size(); size += size % 188 < 4 || size % 188 > 184 ? 1 : 13) {
        const Demuxed part = demux(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(size)), 4096);
        ASSERT_EQ(part.status, size < 188 ? 5 : 0) << size;
        for (const auto& [name, content] : part.files) ASSERT_TRUE(whole.files.at(name).starts_with(content)) << size;
    }
}

TEST(TsSegment, LostSync) {
    struct Case {
        const char* name;
        std::vector<size_t> bad_packets;
        size_t cut;  // bytes taken from the end
        int status;
    };
    const Case cases[] = {
        {"first packet bad", {0}, 0, 5},          {"one bad packet", {3}, 0, 0},
        {"two bad packets, apart", {3, 5}, 0, 0}, {"two in a row", {3, 4}, 0, 5},
        {"last packet bad", {10}, 0, 5},          {"fragment behind a good one", {}, 1, 0},
        {"fragment behind a bad one", {9}, 1, 5},
    };
    for (const Case& c : cases) {
        Bytes bytes = small_segment().bytes;
        bytes.resize(11 * 188);
        for (size_t packet : c.bad_packets) bytes[packet * 188] = 0x46;
        bytes.resize(bytes.size() - c.cut);
        const Demuxed result = demux(bytes);
        EXPECT_EQ(result.status, c.status) << c.name;
        EXPECT_EQ(result.printed, c.status == 5 ? "ERROR: Lost sync, or did not find sync frame where expected.\n" : "")
            << c.name;
        EXPECT_EQ(result.timing.audio_count, c.status == 0 ? 1u : 0u) << c.name;
    }
}

TEST(TsSegment, FilesOfStreamTypesAndDescriptors) {
    struct Case {
        const char* name;
        std::vector<PmtSpec::Stream> streams;
        std::vector<std::string> files;
        int status = 0;
        std::string printed = "";
    };
    const Bytes ac4 = ts_descriptor(0x7F, {0x15, 0});
    const Bytes eac3 = ts_descriptor(0x7A, {0x80, 0x52, 0});
    const Bytes ac3 = ts_descriptor(0x6A, {0});
    const Bytes avc = ts_descriptor(0x28, {0});
    const Bytes hevc = ts_descriptor(0x38, {0});
    const auto both = [](Bytes a, const Bytes& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    const Case cases[] = {
        {"audio types",
         {{0x04, 50}, {0x0F, 51}, {0x11, 52}, {0x81, 53}, {0x87, 54}},
         {"s_pid_50.mpa", "s_pid_51.adts", "s_pid_52.aac", "s_pid_53.ac3", "s_pid_54.ec3"},
         0,
         "WARNING: Unknown stream type = 0x4 in PMT.\n"},
        {"private audio",
         {{6, 60, ac4}, {6, 61, eac3}, {6, 62, ac3}},
         {"s_pid_60.ac4", "s_pid_61.ec3", "s_pid_62.ac3"}},
        {"two marks", {{6, 60, both(eac3, ac4)}, {6, 61, both(ac3, eac3)}}, {"s_pid_60.ec3", "s_pid_61.ac3"}},
        {"video types 1", {{0x01, 70}}, {"s_pid_70.mpeg"}},
        {"video types 2", {{0x24, 70}}, {"s_pid_70.h265"}},
        {"private video", {{6, 70, both(hevc, avc)}}, {"s_pid_70.h264"}},
        {"audio and video marks", {{6, 70, both(ac3, hevc)}}, {"s_pid_70.ac3", "s_pid_70.h265"}},
        {"second video",
         {{0x1B, 70}, {0x24, 71}, {0x1B, 70}},
         {"s_pid_70.h264"},
         5,
         "ERROR: Multiple video pid case has not been supported yet.\n"},
        {"nothing to follow",
         {{0x40, 70}, {0x06, 71}, {0x03, 72}},
         {},
         0,
         "WARNING: Unknown stream type = 0x3 in PMT.\n"},
    };
    for (const Case& c : cases) {
        const Demuxed result = demux(begin_segment(c.streams).bytes);
        std::vector<std::string> files;
        for (const auto& [name, content] : result.files) files.push_back(name);
        EXPECT_EQ(files, c.files) << c.name;
        EXPECT_EQ(result.status, c.status) << c.name;
        EXPECT_EQ(result.printed, c.printed) << c.name;
    }
}

TEST(TsSegment, WhatAPesPacketLeavesInItsFile) {
    const auto bounded = [](const Bytes& payload, uint16_t length) {
        PesSpec spec = pes(payload);
        spec.PES_packet_length = length;
        return spec;
    };
    struct Case {
        const char* name;
        std::vector<PesSpec> packets;
        size_t bytes_written;
    };
    const Case cases[] = {
        {"of unknown length", {bounded(numbered(500), 0)}, 500},
        {"cut short by the next", {bounded(numbered(500), 600), pes(numbered(10))}, 510},
        {"shorter than its packets", {bounded(numbered(500), 103)}, 100},
        {"length ends in the header", {bounded(numbered(500), 2), pes(numbered(10))}, 10},
        {"longer than a slot", {bounded(numbered(1000500), 0), pes(numbered(10))}, 1000010},
        {"cut by the end of the segment", {bounded(numbered(500), 60000)}, 500},
    };
    for (const Case& c : cases) {
        TsWriter writer = begin_segment({{0x0F, AUDIO_PID}});
        for (const PesSpec& spec : c.packets) writer.pes(AUDIO_PID, spec);
        const Demuxed result = demux(writer.bytes);
        EXPECT_EQ(result.status, 0) << c.name << result.printed;
        EXPECT_EQ(result.files.at("s_pid_257.adts").size(), c.bytes_written) << c.name;
    }
}

TEST(TsSegment, HeadersThatPointOutsideThePacket) {
    TsWriter writer = begin_segment({{0x0F, AUDIO_PID}});
    TsPacketSpec packet;
    packet.pid = AUDIO_PID;
    packet.payload_unit_start_indicator = true;
    packet.payload = numbered(20);
    packet.adaptation_field_length = 200;
    writer.packet(packet);
    packet.adaptation_field_length = 183;  // an empty payload
    writer.packet(packet);
    PesSpec spec = pes(numbered(500));
    spec.PES_header_data_length = 255;  // the header ends in the second packet: nothing of the first is payload
    writer.pes(AUDIO_PID, spec);
    packet = {.pid = 0, .payload_unit_start_indicator = true, .payload = Bytes(184, 250)};  // pointer_field
    writer.packet(packet);
    const Demuxed result = demux(writer.bytes);
    EXPECT_EQ(result.status, 0) << result.printed;
    EXPECT_LT(result.files.at("s_pid_257.adts").size(), 500u);
}

TEST(TsSegment, SurplusIsRefusedWithAReasonAndTheRestFollowed) {
    std::vector<PmtSpec::Stream> audio;
    for (uint16_t i = 0; i < 11; ++i) audio.push_back({0x0F, static_cast<uint16_t>(200 + i)});
    Demuxed result = demux(begin_segment(audio).bytes);
    EXPECT_EQ(result.status, 11);
    EXPECT_EQ(result.files.size(), 10u);
    EXPECT_EQ(result.reasons, "quorlin: s.ts: more than 10 audio streams; PID 210 is not followed\n");

    Bytes descriptors;
    for (int i = 0; i < 11; ++i) {
        const Bytes one = ts_descriptor(i < 10 ? 0x0A : 0x6A, {});
        descriptors.insert(descriptors.end(), one.begin(), one.end());
    }
    result = demux(begin_segment({{0x06, 200, descriptors}, {0x0F, 201}}).bytes);
    EXPECT_EQ(result.status, 11);
    EXPECT_EQ(result.files.size(), 1u);
    EXPECT_EQ(result.reasons, "quorlin: s.ts: more than 10 descriptors for PID 200; the others are not read\n");

    TsWriter writer;
    PatSpec pat;
    pat.programs.clear();
    for (uint16_t i = 0; i < 25; ++i)
        pat.programs.push_back({static_cast<uint16_t>(i + 1), static_cast<uint16_t>(100 + i)});
    writer.pat(pat);
    for (uint16_t i = 0; i < 25; ++i) {
        PmtSpec pmt;
        pmt.program_number = static_cast<uint16_t>(i + 1);
        pmt.streams = {{0x0F, static_cast<uint16_t>(200 + i)}};
        writer.pmt(pmt, static_cast<uint16_t>(100 + i));
    }
    result = demux(writer.bytes);
    EXPECT_EQ(result.status, 11);
    EXPECT_EQ(result.files.size(), 1u);  // of the first program
    EXPECT_NE(result.reasons.find("25 programs; the first, number 1, is followed"), std::string::npos);
    EXPECT_NE(result.reasons.find("more than 10 programs; the one with PMT PID 110"), std::string::npos);
    EXPECT_NE(result.reasons.find("more than 20 PIDs carry program tables; PID 119"), std::string::npos);
}

TEST(TsSegment, ProgramTablesThatChange) {
    // The PMT's PID becomes an audio PID's once the PAT lists it no more; the program known stays known.
    TsWriter writer = begin_segment({{0x0F, AUDIO_PID}, {0x0F, 0x100}});
    writer.pes(AUDIO_PID, pes(numbered(20)));
    writer.pes(0x100, pes(numbered(30)));  // still a program table
    PatSpec other;
    other.programs = {{7, 0x300}};
    writer.pat(other);
    writer.pes(0x100, pes(numbered(40)));
    const Demuxed result = demux(writer.bytes);
    EXPECT_EQ(result.files.at("s_pid_257.adts").size(), 20u);
    EXPECT_EQ(result.files.at("s_pid_256.adts").size(), 40u);

    // The PAT says whose PMT it is, not the number inside.
    TsWriter renumbered;
    renumbered.pat({});
    PmtSpec pmt;
    pmt.program_number = 9;
    pmt.streams = {{0x0F, AUDIO_PID}};
    renumbered.pmt(pmt);
    EXPECT_EQ(demux(renumbered.bytes).files.size(), 1u);
}

TEST(TsSegment, TimesThatAreMissing) {
    TsWriter writer = begin_segment({{0x0F, AUDIO_PID}, {0x1B, VIDEO_PID}});
    writer.pes(AUDIO_PID, pes(numbered(20)));
    PesSpec picture = pes(numbered(20), 0xE0);
    picture.pts = 5000;
    writer.pes(VIDEO_PID, picture);
    const Demuxed result = demux(writer.bytes);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.timing.streams[0].first_pts, -1);
    EXPECT_EQ(result.timing.streams[0].end_pts, -1);
    EXPECT_EQ(result.timing.video_first_pts, -1);  // one picture tells no distance

    // A packet that ends with its header is complete, and counts.
    TsWriter empty = begin_segment({{0x0F, AUDIO_PID}});
    for (const uint64_t pts : {7000, 9000}) {
        PesSpec spec = pes({});
        spec.pts = pts;
        spec.PES_packet_length = 8;
        empty.pes(AUDIO_PID, spec);
    }
    EXPECT_EQ(demux(empty.bytes).timing.streams[0].first_pts, 7000);
}

TEST(TsSegment, AnOutputThatCannotBeCreatedLeavesTheOthers) {
    FileReader reader;
    Bytes bytes = begin_segment({{0x0F, AUDIO_PID}, {0x1B, VIDEO_PID}}).bytes;
    reader.file = File(fmemopen(bytes.data(), bytes.size(), "rb"));
    reader_start(reader);
    const std::string printed = printed_by(
        [&] { EXPECT_EQ(ts_process_segment(reader, "/no/such/directory", "s", true, nullptr, nullptr), 3); });
    EXPECT_EQ(printed,
              "ERROR: Failed to create elementary stream path: /no/such/directory/s_pid_257.adts\n"
              "ERROR: Failed to create elementary stream path: /no/such/directory/s_pid_258.h264\n");
}
