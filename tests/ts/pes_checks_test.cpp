#include "ts/pes_checks.h"

#include <gtest/gtest.h>

#include "support/golden.h"
#include "support/ts_writer.h"

namespace quorlin {

namespace {

constexpr uint16_t PID = 0x101;

Eac3DescriptorFields channels(uint8_t code, uint8_t service = 0, uint8_t full = 1, uint8_t substream1_flag = 0) {
    return {.substream1_flag = substream1_flag,
            .full_service_flag = full,
            .service_type = service,
            .number_of_channels = code};
}

Eac3DescriptorFields objects(uint8_t flag, uint8_t complexity) {
    return {.number_of_channels = 2, .flag_ec3_extension_type_a = flag, .complexity_index_type_a = complexity};
}

// The last program carries its number as substreamid.
ZtpStreamSummary payload(uint32_t acmod, uint32_t programs = 1) {
    ZtpStreamSummary summary;
    summary.num_programs = programs;
    if (programs > 1) summary.programs[programs - 1].independent.substreamid = programs - 1;
    summary.programs[0].independent.acmod = acmod;
    return summary;
}

ZtpStreamSummary with_addbsi(std::initializer_list<uint8_t> addbsi, uint32_t dependent = 0) {
    ZtpStreamSummary summary = payload(2);
    ZtpProgramSummary& main = summary.programs[0];
    main.num_dep_substreams = dependent;
    ZtpSubstreamSummary& carrier = dependent != 0 ? main.dependent[0] : main.independent;
    carrier.addbsie = 1;
    carrier.addbsi_bytes = static_cast<uint32_t>(addbsi.size());
    std::copy(addbsi.begin(), addbsi.end(), carrier.addbsi.begin());
    return summary;
}

TEST(PesChecks, Eac3DescriptorAgainstThePayload) {
    const struct {
        const char* name;
        Eac3DescriptorFields descriptor;
        ZtpStreamSummary summary;
    } cases[] = {
        {"second program not announced", channels(2), payload(2, 2)},
        {"second program announced", channels(2, 0, 1, 1), payload(2, 2)},
        {"third program not announced", channels(2), payload(2, 3)},
        {"fourth program not announced", channels(2), payload(2, 4)},
        {"channels 000", channels(0), payload(7)},
        {"channels 001", channels(1), payload(2)},
        {"channels 001, dual mono", channels(1), payload(0)},
        {"channels 010", channels(2), payload(3)},
        {"channels 100", channels(4), payload(2)},
        {"channels 100, three channels", channels(4), payload(3)},
        {"channels 101", channels(5), payload(7)},
        {"channels 101, three channels", channels(5), payload(3)},
        {"channels 101, other service", channels(5, 2), payload(7)},
        {"channels 101, everything wrong", channels(5, 0, 0), payload(2)},
        {"channels 110", channels(6), payload(2)},
        {"channels 111", channels(7), payload(2)},
        {"objects, dependent", objects(1, 9), with_addbsi({1, 9}, 1)},
        {"objects without programs", objects(0, 1), payload(2, 0)},
        {"objects without addbsi", objects(1, 0), payload(2)},
        {"objects with one addbsi byte", objects(1, 0), with_addbsi({1})},
        {"objects, other flag", objects(1, 0), with_addbsi({16, 0})},
        {"objects, other complexity", objects(1, 16), with_addbsi({1, 12})},
        {"objects not announced", channels(2), with_addbsi({1})},
        {"addbsi of zeros", channels(2), with_addbsi({0, 1})},
    };
    std::string transcript;
    for (const auto& c : cases)
        transcript += transcript_entry(c.name, [&] { return compare_eac3_descriptor(c.descriptor, c.summary); });
    transcript += transcript_checksums("any pair", 1280, [&](std::mt19937& random) {
        Eac3DescriptorFields descriptor = cases[random() % std::size(cases)].descriptor;
        if (const auto bits = random(); bits % 2 == 0)
            descriptor = channels(bits >> 1 & 7, bits >> 4 & 7, bits >> 7 & 1, bits >> 8 & 1);
        ZtpStreamSummary summary = cases[random() % std::size(cases)].summary;
        summary.programs[0].independent.acmod = random() % 8;
        return transcript_entry("", [&] { return compare_eac3_descriptor(descriptor, summary); });
    });
    expect_golden("golden/eac3_pes.txt", transcript);
}

struct Ac4Case {
    const char* name;
    Bytes payload;
    const char* codecs = nullptr;
    uint32_t audio_pes_count = 2;
};

// Raw frames of 8 bytes: tables of contents of bitstream_version 2 without presentations, then zeros.
const Bytes F = {0x80, 0, 0x20, 0x80, 0, 0, 0, 0};
const Bytes NO_IFRAME = {0x80, 0, 0, 0x80, 0, 0, 0, 0};
const Bytes SYNC = {0xAC, 0x40};
const Bytes SYNC_CRC = {0xAC, 0x41};
const Bytes SIZE = {0, 8};
const Bytes LARGE_SIZE = {0xFF, 0xFF, 0, 0, 8};

const Ac4Case AC4_CASES[] = {
    {"one frame", SYNC + SIZE + F, "mp4a,ac-4.02.01.00", 1},
    {"two frames, any second sync word", SYNC + LARGE_SIZE + F + Bytes{1, 2} + SIZE + F},
    {"a sync word after the last frame", SYNC + SIZE + F + SYNC},
    {"empty", {}},
    {"no sync word", Bytes{0xAB, 0x40} + SIZE + F},
    {"other sync word", Bytes{0xAC, 0x42} + SIZE + F},
    {"with crc", SYNC_CRC + SIZE + F + Bytes{0, 0}},
    {"with crc, frame into the crc", SYNC_CRC + SIZE + F + Bytes{0}},
    {"with crc, no room for it", SYNC_CRC},
    {"spans", SYNC + Bytes{0, 9} + F},
    {"size far after the end", SYNC + Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF} + F},
    {"size 0 after the escape", SYNC + Bytes{0xFF, 0xFF, 0, 0, 0} + F},
    {"second size cut", SYNC + SIZE + F + SYNC + Bytes{1}},
    {"table of contents after the frame", SYNC + Bytes{0, 3} + F},
    {"other codecs", SYNC + SIZE + F, "ac-4.02.01.03"},
    {"no i-frame in the first pes", SYNC + SIZE + NO_IFRAME, nullptr, 1},
    {"no i-frame in a later pes", SYNC + SIZE + NO_IFRAME},
    {"no i-frame after the first frame", SYNC + SIZE + F + SYNC + SIZE + NO_IFRAME, nullptr, 1},
};

const Bytes EMPTY_EAC3 = ts_descriptor(0xCC, {});

EsRecord listed(uint8_t stream_type, std::initializer_list<uint32_t> tags) {
    EsRecord record;
    record.stream_type = stream_type;
    for (uint32_t tag : tags) record.descriptors.push_back({.tag = tag, .raw = EMPTY_EAC3});
    return record;
}

int check_pes(TsStreamTable& table, std::span<const uint8_t> payload, const std::vector<EsRecord>& records,
              const char* codecs) {
    ListedStream stream;
    for (const EsRecord& record : records) stream.records.push_back(&record);
    PlaylistAttributes attrs;
    if (codecs != nullptr) attrs.codecs = codecs;
    table.path = "a.ts";
    table.audio_count = 2;
    table.audio[0].pid = PID + 1;
    table.audio[1].pid = PID;
    // Exactly the payload, so that a byte read too far is caught.
    const Bytes block(payload.begin(), payload.end());
    return check_audio_pes({table.audio[1], block}, stream, table, codecs != nullptr ? &attrs : nullptr);
}

int check_ac4(const Ac4Case& c, size_t size) {
    TsStreamTable table;
    table.audio[0].audio_pes_count = c.audio_pes_count;  // of another stream
    const int status = check_pes(table, std::span(c.payload).first(size), {listed(0x06, {0x0A, 0x7F})}, c.codecs);
    std::printf("frames: %u, ticks: %u\n", table.audio[1].frames_in_pes, table.audio[1].frame_ticks);
    return status;
}

TEST(PesChecks, Ac4FramesWholeAndCutAnywhere) {
    testing::internal::CaptureStderr();
    std::string transcript;
    for (const Ac4Case& c : AC4_CASES)
        transcript += transcript_entry(c.name, [&] { return check_ac4(c, c.payload.size()); });
    transcript += testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    transcript += transcript_checksums("damaged", 640, [](std::mt19937& random) {
        Ac4Case c = AC4_CASES[random() % std::size(AC4_CASES)];
        c.payload = with_faults(c.payload, random);
        return transcript_entry("", [&] { return check_ac4(c, c.payload.size()); });
    });
    expect_golden("golden/ac4_pes.txt", transcript);
    for (const Ac4Case& c : AC4_CASES)
        for (size_t size = 0; size < c.payload.size(); ++size)
            printed_by([&] { EXPECT_LE(0, check_ac4(c, size)) << c.name; });
    testing::internal::GetCapturedStderr();
}

TEST(PesChecks, TheDescriptorsChooseTheCheck) {
    const struct {
        const char* name;
        std::vector<EsRecord> records;
        size_t payload_size = 64;
    } cases[] = {
        {"no program", {}},
        {"0x81: none", {listed(0x81, {0xCC})}},
        {"0x06: other tags", {listed(0x06, {0xCC, 0x6A})}},
        {"0x87: other tag", {listed(0x87, {0x7A})}},
        {"0x87: eac3 after ac4", {listed(0x87, {0x7F, 0xCC})}},
        {"0x87: no access unit", {listed(0x87, {0xCC})}, 0},
        {"0x06: eac3 first", {listed(0x06, {0x7A, 0x7F})}},
        {"0x06: ac4 first", {listed(0x06, {0x7F, 0x7A})}},
        {"two programs", {listed(0x06, {0x7A}), listed(0x06, {0x7F})}},
    };
    std::string transcript;
    for (const auto& c : cases)
        transcript += transcript_entry(c.name, [&] {
            TsStreamTable table;
            return check_pes(table, Bytes(c.payload_size, 0), c.records, nullptr);
        });
    expect_golden("golden/chosen_checks.txt", transcript);
}

}  // namespace

}  // namespace quorlin
