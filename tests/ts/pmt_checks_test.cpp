#include "ts/pmt_checks.h"

#include <gtest/gtest.h>

#include "support/golden.h"
#include "support/ts_writer.h"

namespace quorlin {

namespace {

Bytes eac3(uint8_t tag, uint8_t extension = 0) {
    return ts_descriptor(tag,
                         {0x87, 0xD5, 0x20, 0x11, 0x12, 0x13, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', extension});
}

Bytes lmra(uint8_t profile, uint8_t level, uint8_t el = 1, uint8_t version = 1, uint8_t rpu_and_bl = 1) {
    const int flags = rpu_and_bl * 5 + el * 2;
    return ts_descriptor(DESCRIPTOR_LMRA, {version, 0, static_cast<uint8_t>(profile << 1 | level >> 5),
                                           static_cast<uint8_t>(level << 3 | flags)});
}

Bytes registration(const std::string& text) {
    return ts_descriptor(DESCRIPTOR_REGISTRATION, {text.begin(), text.end()});
}

struct Stream {
    uint8_t stream_type;
    std::vector<Bytes> descriptors = {};
};

EsRecord record(const Stream& stream) {
    EsRecord es;
    es.stream_type = stream.stream_type;
    for (const Bytes& bytes : stream.descriptors)
        es.descriptors.push_back({.tag = bytes[0], .length = static_cast<uint32_t>(bytes.size() - 2), .raw = bytes});
    return es;
}

struct PmtCase {
    const char* name;
    std::vector<Stream> streams;
    const char* codecs;  // null: no playlist
    std::optional<std::array<uint32_t, 4>> programs = {};
    bool audio_in_media_group = false;
};

const Bytes CC = eac3(0xCC);
const Bytes DVB = eac3(0x7A);
const Bytes OBJECTS = eac3(0x7A, 1);
const Bytes REGISTRATION = registration("LMRA");
const Bytes AC4 = ts_descriptor(0x7F, {0x15, 0});
const std::array<uint32_t, 4> MATCHING = {0x55, 0x11, 0x12, 0x13};
const std::array<uint32_t, 4> OTHER = {0x56, 0x112, 0x13, 0x12};

const PmtCase CASES[] = {
    {"audio named", {{0x81}, {0x87, {CC}}, {0x0F}, {0x06, {AC4}}}, "mp4a,ac-3,ec-3,ac-4.09.10.99"},
    {"audio unnamed", {{0x81}, {0x87, {CC}}, {0x06, {OBJECTS}}, {0x11}, {0x06, {AC4}}}, "none"},
    {"audio in a media group", {{0x81}, {0x87, {CC}}, {0x0F}}, "none", {}, true},
    {"no playlist", {{0x81}, {0x87, {CC}}, {0x1B, {lmra(0, 6, 0)}}, {0x06, {DVB, AC4, REGISTRATION}}}, nullptr},
    {"0x87: dvb tag before the first atsc tag", {{0x87, {DVB, CC, DVB}}}, "ec-3"},
    {"0x87: dvb tags alone", {{0x87, {DVB, DVB}}}, ""},
    {"0x87: programs match", {{0x87, {CC}}}, "ec-3", MATCHING},
    {"0x87: programs differ", {{0x87, {CC}}}, "ec-3", OTHER},
    {"0x87: programs of 0 are compared", {{0x87, {CC}}}, "ec-3", std::array<uint32_t, 4>{}},
    {"0x87: full service differs alone", {{0x87, {CC}}}, "ec-3", std::array<uint32_t, 4>{0x15, 0x11, 0x12, 0x13}},
    {"0x87: service type differs alone", {{0x87, {CC}}}, "ec-3", std::array<uint32_t, 4>{0x4D, 0x11, 0x12, 0x13}},
    {"0x06: programs match", {{0x06, {DVB}}}, "ec-3", MATCHING},
    {"0x06: programs differ", {{0x06, {DVB}}}, "ec-3", OTHER},
    {"0x06: programs of 0 are skipped", {{0x06, {DVB}}}, "ec-3", std::array<uint32_t, 4>{}},
    {"0x06: atsc tag, then a clean descriptor and stream", {{0x06, {CC, DVB}}, {0x0F}}, "mp4a,ec-3"},
    {"0x06: ac-4 with hexadecimal digits", {{0x06, {AC4}}}, "ac-4.0a.01.03"},
    {"0x06: ac-4 too short", {{0x06, {AC4}}}, "ac-4.02.01.0"},
    {"0x06: ac-4 with more after it", {{0x06, {AC4}}}, "mp4a,ac-4.02.01.031"},
    {"avc lumora", {{0x1B, {lmra(9, 6), lmra(1, 1)}}}, "avc1,lmav.09.06"},
    {"avc lumora by lma1", {{0x1B, {lmra(0, 6)}}}, "avc1,lma1.00.06"},
    {"avc lumora: lmav mismatch, profile and level", {{0x1B, {lmra(9, 6)}}}, "avc1,lmav.08.07"},
    {"avc lumora: lma1 mismatch, profile 0 without enhancement layer", {{0x1B, {lmra(0, 6, 0)}}}, "avc1,lma1.00.07"},
    {"avc lumora: profile 4 without enhancement layer", {{0x1B, {lmra(4, 6, 0)}}}, "avc1,lmav.04.06"},
    {"lumora descriptor rules", {{0x1B, {lmra(0, 6, 1, 2, 0)}}}, nullptr},
    {"hevc lumora", {{0x24, {lmra(8, 6)}}}, "hvc1,lmhe.08.06"},
    {"hevc lumora: read like scanf", {{0x24, {lmra(8, 6)}}}, "hev1,lmh1. 8.+6xx"},
    {"hevc lumora: profile 10 is read as 16", {{0x24, {lmra(10, 6)}}}, "hvc1,lmhe.10.06"},
    {"hevc lumora: profile 16 and the entry's 10", {{0x24, {lmra(16, 6)}}}, "hvc1,lmhe.10.06"},
    {"hevc lumora: a clean descriptor after a failing one",
     {{0x24, {lmra(8, 6, 1, 2), lmra(8, 6)}}},
     "hvc1,lmhe.08.06"},
    {"avc lumora: profile 16 and the entry's 10", {{0x1B, {lmra(16, 6)}}}, "avc1,lmav.10.06"},
    {"hevc lumora: lmhe mismatch", {{0x24, {lmra(8, 6), lmra(8, 7)}}}, "hvc1,lmhe.08.06"},
    {"hevc lumora: lmh1 without level", {{0x24, {lmra(8, 6)}}}, "hvc1,lmh1.08"},
    {"hevc lumora: profile 4 without enhancement layer", {{0x24, {lmra(4, 6, 0)}}}, "hvc1,lmh1.04.06"},
    {"hevc lumora: profile 0 without enhancement layer", {{0x24, {lmra(0, 6, 0)}}}, "hvc1,lmhe.00.06"},
    {"hevc lumora: no entry", {{0x24, {lmra(8, 6)}}}, "mp4a"},
    {"hevc lumora: two entries", {{0x24, {lmra(8, 6)}}}, "hvc1,lmhe.08.06,lmhe.08.06"},
    {"registration", {{0x06, {REGISTRATION, lmra(5, 6, 0)}}}, "lmhe.05.06"},
    {"registration: compatible entry, two layers", {{0x06, {REGISTRATION, lmra(5, 6)}}}, "lmhe.05.06,avc1"},
    {"registration: no lumora entry", {{0x06, {REGISTRATION}}}, "mp4a"},
    {"registration: other identifiers", {{0x06, {registration("LMRB"), registration("LMRAx")}}}, "lmhe.05.06"},
    {"second layer after the video", {{0x1B, {lmra(9, 6)}}, {0x06, {lmra(9, 6)}}}, "avc1,lmav.09.06"},
    {"second layer without enhancement layer", {{0x1B, {lmra(9, 6)}}, {0x06, {lmra(9, 6, 0)}}}, "avc1,lmav.09.06"},
    {"second layer before the video", {{0x06, {lmra(9, 6, 0)}}, {0x1B, {lmra(9, 6)}}}, "avc1,lmav.09.06"},
    {"video unnamed", {{0x1B}, {0x24}}, "mp4a"},
    {"compatible lumora entry without a stream", {{0x1B}}, "avc1,lma1.00.06"},
};

std::string entry(const PmtCase& c, const std::string& codecs) {
    PlaylistAttributes attrs;
    attrs.codecs = codecs;
    attrs.programs = c.programs;
    attrs.audio_in_media_group = c.audio_in_media_group;
    ProgramRecord program;
    for (const Stream& stream : c.streams) program.streams.push_back(record(stream));
    return transcript_entry(
        c.name, [&] { return check_pmt_against_playlist(program, c.codecs != nullptr ? &attrs : nullptr); });
}

PmtCase damaged(PmtCase c, std::mt19937& random) {
    const PmtCase& other = CASES[random() % std::size(CASES)];
    if (random() % 2 == 0) c.streams.insert(c.streams.end(), other.streams.begin(), other.streams.end());
    if (random() % 4 == 0) c.programs = other.programs;
    for (Stream& stream : c.streams)
        for (Bytes& descriptor : stream.descriptors)
            if (const Bytes bytes = with_faults(descriptor, random); random() % 4 == 0 && bytes.size() > 1)
                descriptor = bytes;
    return c;
}

TEST(PmtChecks, Findings) {
    std::string transcript;
    for (const PmtCase& c : CASES) transcript += entry(c, c.codecs != nullptr ? c.codecs : "");
    transcript += transcript_checksums("damaged", 2560, [](std::mt19937& random) {
        const PmtCase c = damaged(CASES[random() % std::size(CASES)], random);
        const std::string codecs = c.codecs != nullptr ? c.codecs : "";
        const Bytes changed = with_faults({codecs.begin(), codecs.end()}, random);
        return entry(c, random() % 2 == 0 ? codecs : std::string(changed.begin(), changed.end()));
    });
    expect_golden("golden/pmt_checks.txt", transcript);
}

}  // namespace

}  // namespace quorlin
