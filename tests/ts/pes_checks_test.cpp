#include "ts/pes_checks.h"

#include <gtest/gtest.h>

#include "support/bit_writer.h"
#include "support/golden.h"
#include "support/ts_writer.h"

namespace {

constexpr uint16_t PID = 0x101;

// What differs from a stereo main program with its descriptor.
struct Eac3Case {
    const char* name;
    // Descriptor.
    uint8_t full = 1;
    uint8_t service = 0;
    uint8_t channels = 2;
    uint8_t substream1_flag = 0;
    uint8_t flag_a = 0;
    uint8_t complexity = 0;
    // Payload.
    uint32_t programs = 1;  // the last one carries its number as substreamid
    uint32_t acmod = 2;
    uint32_t dependent = 0;  // 1: the addbsi bytes are those of the dependent substream
    uint32_t addbsie = 0;
    std::vector<uint8_t> addbsi = {};
};

const Eac3Case EAC3_CASES[] = {
    {.name = "stereo"},
    {.name = "second program not announced", .programs = 2},
    {.name = "second program announced", .substream1_flag = 1, .programs = 2},
    {.name = "third program not announced", .programs = 3},
    {.name = "fourth program not announced", .programs = 4},
    {.name = "channels 000", .channels = 0, .acmod = 7},
    {.name = "channels 001", .channels = 1},
    {.name = "channels 001, dual mono", .channels = 1, .acmod = 0},
    {.name = "channels 010", .acmod = 3},
    {.name = "channels 011", .channels = 3},
    {.name = "channels 100", .channels = 4},
    {.name = "channels 100, three channels", .channels = 4, .acmod = 3},
    {.name = "channels 101", .channels = 5, .acmod = 7},
    {.name = "channels 101, other service", .service = 2, .channels = 5, .acmod = 7},
    {.name = "channels 101, everything wrong", .full = 0, .channels = 5},
    {.name = "channels 110", .channels = 6},
    {.name = "channels 111", .channels = 7},
    {.name = "objects", .flag_a = 1, .complexity = 16, .addbsie = 1, .addbsi = {1, 16}},
    {.name = "objects, dependent", .flag_a = 1, .complexity = 9, .dependent = 1, .addbsie = 1, .addbsi = {1, 9}},
    {.name = "objects without programs", .complexity = 1, .programs = 0},
    {.name = "objects without addbsi", .flag_a = 1},
    {.name = "objects with one addbsi byte", .flag_a = 1, .addbsie = 1, .addbsi = {1}},
    {.name = "objects, other flag", .flag_a = 1, .addbsie = 1, .addbsi = {16, 0}},
    {.name = "objects, other complexity", .flag_a = 1, .complexity = 16, .addbsie = 1, .addbsi = {1, 12}},
    {.name = "objects not announced", .addbsie = 1, .addbsi = {1}},
    {.name = "addbsi of zeros", .addbsie = 1, .addbsi = {0, 1}},
};

ZtpStreamSummary summary_of(const Eac3Case& c) {
    ZtpStreamSummary summary;
    summary.num_programs = c.programs;
    if (c.programs > 1) summary.programs[c.programs - 1].independent.substreamid = c.programs - 1;
    ZtpProgramSummary& main = summary.programs[0];
    main.independent.acmod = c.acmod;
    main.num_dep_substreams = c.dependent;
    ZtpSubstreamSummary& carrier = c.dependent != 0 ? main.dependent[0] : main.independent;
    carrier.addbsie = c.addbsie;
    carrier.addbsi_bytes = static_cast<uint32_t>(c.addbsi.size());
    std::copy(c.addbsi.begin(), c.addbsi.end(), carrier.addbsi.begin());
    return summary;
}

TEST(PesChecks, Eac3DescriptorAgainstThePayload) {
    std::string transcript;
    for (const Eac3Case& c : EAC3_CASES) {
        Eac3DescriptorFields descriptor;
        descriptor.full_service_flag = c.full;
        descriptor.service_type = c.service;
        descriptor.number_of_channels = c.channels;
        descriptor.substream1_flag = c.substream1_flag;
        descriptor.flag_ec3_extension_type_a = c.flag_a;
        descriptor.complexity_index_type_a = c.complexity;
        transcript += transcript_entry(c.name, [&] { return compare_eac3_descriptor(descriptor, summary_of(c)); });
    }
    expect_golden("golden/eac3_pes.txt", transcript);
}

// A raw frame of 8 bytes: a table of contents of bitstream_version 2 without presentations, then zeros.
Bytes ac4_frame(bool iframe = true) {
    BitWriter w;
    w.put(2, 2);   // bitstream_version
    w.put(10, 0);  // sequence_counter
    w.put(1, 0);   // b_wait_frames
    w.put(5, 0);   // fs_index, frame_rate_index
    w.put(1, iframe);
    w.put(4, 0);  // b_single_presentation, b_more_presentations, b_payload_base, b_program_id
    w.put(2, 1);  // n_substreams
    w.put(1, 0);  // b_size_present
    w.bytes.resize(8);
    return w.bytes;
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

struct Ac4Case {
    const char* name;
    Bytes payload;
    const char* codecs = nullptr;
    uint32_t audio_pes_count = 2;
    uint32_t frames = 0;
};

const Bytes F = ac4_frame();
const Bytes SYNC = {0xAC, 0x40};
const Bytes SYNC_CRC = {0xAC, 0x41};
const Bytes SIZE = {0, 8};
const Bytes LARGE_SIZE = {0xFF, 0xFF, 0, 0, 8};

const Ac4Case AC4_CASES[] = {
    {"one frame", joined({SYNC, SIZE, F}), "mp4a,ac-4.02.01.00", 1, 1},
    {"two frames, any second sync word", joined({SYNC, LARGE_SIZE, F, {1, 2}, SIZE, F}), nullptr, 2, 2},
    {"a sync word behind the last frame", joined({SYNC, SIZE, F, SYNC}), nullptr, 2, 1},
    {"empty", {}},
    {"no sync word", joined({{0xAB, 0x40}, SIZE, F})},
    {"other sync word", joined({{0xAC, 0x42}, SIZE, F})},
    {"sync word alone", SYNC},
    {"sync byte alone", {0xAC}},
    {"with crc", joined({SYNC_CRC, SIZE, F, {0, 0}}), nullptr, 2, 1},
    {"with crc, frame into the crc", joined({SYNC_CRC, SIZE, F, {0}})},
    {"with crc, no room for it", joined({SYNC_CRC, {}})},
    {"spans", joined({SYNC, {0, 9}, F})},
    {"size far behind the end", joined({SYNC, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, F})},
    {"size 0 behind the escape", joined({SYNC, {0xFF, 0xFF, 0, 0, 0}, F})},
    {"second size cut", joined({SYNC, SIZE, F, SYNC, {1}})},
    {"table of contents behind the frame", joined({SYNC, {0, 3}, F})},
    {"other codecs", joined({SYNC, SIZE, F}), "ac-4.02.01.03"},
    {"no i-frame in the first pes", joined({SYNC, SIZE, ac4_frame(false)}), nullptr, 1},
    {"no i-frame in a later pes", joined({SYNC, SIZE, ac4_frame(false)}), nullptr, 2, 1},
    {"no i-frame behind the first frame", joined({SYNC, SIZE, F, SYNC, SIZE, ac4_frame(false)}), nullptr, 1, 2},
};

ProgramRecord program(uint8_t stream_type, std::initializer_list<uint32_t> tags) {
    ProgramRecord record;
    record.streams.push_back(
        {.stream_type = stream_type, .elementary_PID = PID, .ES_info_length = 0, .descriptors = {}});
    for (uint32_t tag : tags) record.streams[0].descriptors.push_back({.tag = tag});
    return record;
}

int check_pes(TsStreamTable& table, std::span<const uint8_t> payload, const std::vector<ProgramRecord>& programs,
              const char* codecs) {
    PlaylistAttributes attrs;
    if (codecs != nullptr) attrs.codecs = codecs;
    table.path = "a.ts";
    table.audio_count = 2;
    table.audio[0].pid = PID + 1;
    table.audio[1].pid = PID;
    // Exactly the payload, so that a byte read too far is caught.
    const auto block = std::make_unique<uint8_t[]>(payload.size());
    std::copy(payload.begin(), payload.end(), block.get());
    const PesCheckInput pes = {PID, 0xBD, std::span<const uint8_t>(block.get(), payload.size())};
    return check_audio_pes(pes, programs, table, codecs != nullptr ? &attrs : nullptr);
}

TEST(PesChecks, Ac4Frames) {
    testing::internal::CaptureStderr();
    std::string transcript;
    for (const Ac4Case& c : AC4_CASES) {
        TsStreamTable table;
        table.audio[0].audio_pes_count = c.audio_pes_count;  // of another stream
        transcript += transcript_entry(c.name, [&] {
            return check_pes(table, c.payload, {program(0x06, {0x0A, 0x7F})}, c.codecs);
        });
        EXPECT_EQ(c.frames, table.audio[1].frames_in_pes) << c.name;
        EXPECT_EQ(0u, table.audio[1].frame_ticks) << c.name;
    }
    expect_golden("golden/ac4_pes.txt", transcript + testing::internal::GetCapturedStderr());
}

TEST(PesChecks, Ac4FramesCutAnywhere) {
    testing::internal::CaptureStderr();
    for (const Ac4Case& c : AC4_CASES) {
        for (size_t size = 0; size < c.payload.size(); ++size) {
            TsStreamTable table;
            const auto cut = std::span(c.payload).first(size);
            printed_by([&] { EXPECT_LE(0, check_pes(table, cut, {program(0x06, {0x7F})}, c.codecs)) << c.name; });
        }
    }
    testing::internal::GetCapturedStderr();
}

TEST(PesChecks, TheDescriptorsChooseTheCheck) {
    const std::string info = "ERROR: Zentra Plus info tool returns errors when parsing the payload data.\n";
    const std::string ec3 = "ERROR: Cannot get the ec3 descriptor.\n";
    const std::string ac4 =
        "ERROR: No AC-4 sync word found in the elementary stream.\nERROR: Cannot get the ac4 descriptor.\n";
    const struct {
        std::vector<ProgramRecord> programs;
        int status;
        std::string printed;
    } cases[] = {
        {{}, 0, ""},
        {{program(0x81, {0xCC})}, 0, ""},
        {{program(0x06, {0xCC, 0x6A})}, 0, ""},
        {{program(0x87, {0x7A})}, 11, ec3},
        {{program(0x87, {0x7F, 0xCC})}, 11, info + ec3},
        {{program(0x06, {0x7A, 0x7F})}, 10, info},
        {{program(0x06, {0x7F, 0x7A})}, 11, ac4},
        {{program(0x06, {0x7A}), program(0x06, {0x7F})}, 11, info + ac4},
    };
    for (const auto& c : cases) {
        TsStreamTable table;
        EXPECT_EQ(c.printed,
                  printed_by([&] { EXPECT_EQ(c.status, check_pes(table, Bytes(64, 0), c.programs, nullptr)); }));
    }
}

}  // namespace
