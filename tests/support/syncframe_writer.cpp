#include "support/syncframe_writer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

namespace quorlin {

namespace {

void put_optional(BitWriter& writer, uint16_t present, uint32_t n, uint16_t value) {
    writer.put(1, present);
    if (present != 0) writer.put(n, value);
}

void put_production_info(BitWriter& writer, uint16_t present, uint16_t mixlevel, uint16_t roomtyp) {
    writer.put(1, present);
    if (present == 0) return;
    writer.put(5, mixlevel);
    writer.put(2, roomtyp);
}

template <typename Bsi>
void put_addbsi(BitWriter& writer, const Bsi& bsi) {
    put_optional(writer, bsi.addbsie, 6, bsi.addbsil);
    if (bsi.addbsie != 0) writer.put_bytes(std::span(bsi.addbsi).first(bsi.addbsil + 1u));
}

void put_premix(BitWriter& writer, const Eac3Bsi& bsi) {
    writer.put(1, bsi.premixcmpsel);
    writer.put(1, bsi.drcsrc);
    writer.put(3, bsi.premixcmpscl);
}

void put_mixing_parameters(BitWriter& writer, const Eac3Bsi& bsi) {
    writer.put(5, bsi.mixdeflen);
    const size_t end = writer.bit_count + 8u * (bsi.mixdeflen + 2u);
    writer.put(1, bsi.mixdata2e);
    if (bsi.mixdata2e != 0) {
        put_premix(writer, bsi);
        put_optional(writer, bsi.extpgmlscle, 4, bsi.extpgmlscl);
        put_optional(writer, bsi.extpgmcscle, 4, bsi.extpgmcscl);
        put_optional(writer, bsi.extpgmrscle, 4, bsi.extpgmrscl);
        put_optional(writer, bsi.extpgmlsscle, 4, bsi.extpgmlsscl);
        put_optional(writer, bsi.extpgmrsscle, 4, bsi.extpgmrsscl);
        put_optional(writer, bsi.extpgmlfescle, 4, bsi.extpgmlfescl);
        put_optional(writer, bsi.dmixscle, 4, bsi.dmixscl);
        writer.put(1, bsi.addche);
        if (bsi.addche != 0) put_optional(writer, bsi.extpgmaux1scle, 4, bsi.extpgmaux1scl);
        if (bsi.addche != 0) put_optional(writer, bsi.extpgmaux2scle, 4, bsi.extpgmaux2scl);
    }
    writer.put(1, bsi.mixdata3e);
    if (bsi.mixdata3e != 0) {
        writer.put(5, bsi.spchdat);
        put_optional(writer, bsi.addspchdate, 5, bsi.spchdat1);
        if (bsi.addspchdate != 0) {
            writer.put(2, bsi.spchan1att);
            put_optional(writer, bsi.addspchdat1e, 5, bsi.spchdat2);
            if (bsi.addspchdat1e != 0) writer.put(3, bsi.spchan2att);
        }
    }
    while (writer.bit_count < end) writer.put(1, 0);
}

void put_pan(BitWriter& writer, uint16_t present, uint16_t panmean, uint16_t paninfo) {
    put_optional(writer, present, 8, panmean);
    if (present != 0) writer.put(6, paninfo);
}

void put_program_mixing(BitWriter& writer, const Eac3Bsi& bsi) {
    put_optional(writer, bsi.pgmscle, 6, bsi.pgmscl);
    if (bsi.acmod == 0) put_optional(writer, bsi.pgmscl2e, 6, bsi.pgmscl2);
    put_optional(writer, bsi.extpgmscle, 6, bsi.extpgmscl);
    writer.put(2, bsi.mixdef);
    if (bsi.mixdef == 1) put_premix(writer, bsi);
    if (bsi.mixdef == 2) writer.put(12, bsi.mixdata);
    if (bsi.mixdef == 3) put_mixing_parameters(writer, bsi);
    if (bsi.acmod < 2) put_pan(writer, bsi.paninfoe, bsi.panmean, bsi.paninfo);
    if (bsi.acmod == 0) put_pan(writer, bsi.paninfo2e, bsi.panmean2, bsi.paninfo2);
    writer.put(1, bsi.frmmixcfginfoe);
    if (bsi.frmmixcfginfoe == 0) return;
    const uint32_t blocks[4] = {1, 2, 3, 6};
    for (uint32_t i = 0; i < blocks[bsi.numblkscod]; ++i) {
        if (bsi.numblkscod == 0)
            writer.put(5, bsi.blkmixcfginfo[i]);
        else
            put_optional(writer, bsi.blkmixcfginfoe[i], 5, bsi.blkmixcfginfo[i]);
    }
}

void put_mixing_metadata(BitWriter& writer, const Eac3Bsi& bsi) {
    const bool center = bsi.acmod == 3 || bsi.acmod == 5 || bsi.acmod == 7;
    if (bsi.acmod > 2) writer.put(2, bsi.dmixmod);
    if (center) writer.put(3, bsi.ltrtcmixlev);
    if (center) writer.put(3, bsi.lorocmixlev);
    if (bsi.acmod >= 4) writer.put(3, bsi.ltrtsurmixlev);
    if (bsi.acmod >= 4) writer.put(3, bsi.lorosurmixlev);
    if (bsi.lfeon != 0) put_optional(writer, bsi.lfemixlevcode, 5, bsi.lfemixlevcod);
    if (bsi.strmtyp == 0) put_program_mixing(writer, bsi);
}

void put_informational_metadata(BitWriter& writer, const Eac3Bsi& bsi) {
    writer.put(3, bsi.bsmod);
    writer.put(1, bsi.copyrightb);
    writer.put(1, bsi.origbs);
    if (bsi.acmod == 2) writer.put(2, bsi.dsurmod);
    if (bsi.acmod == 2) writer.put(2, bsi.dheadphonmod);
    if (bsi.acmod == 6 || bsi.acmod == 7) writer.put(2, bsi.dsurexmod);
    put_production_info(writer, bsi.audprodie, bsi.mixlevel, bsi.roomtyp);
    if (bsi.audprodie != 0) writer.put(1, bsi.adconvtyp);
    if (bsi.acmod == 0) put_production_info(writer, bsi.audprodi2e, bsi.mixlevel2, bsi.roomtyp2);
    if (bsi.acmod == 0 && bsi.audprodi2e != 0) writer.put(1, bsi.adconvtyp2);
    writer.put(1, bsi.sourcefscod);
}

// One zero bit back: the register that a zero bit turns into `crc`.
uint16_t crc16_before_zero_bit(uint16_t crc) {
    const uint32_t value = (crc & 1) != 0 ? crc ^ 0x18005u : crc;
    return static_cast<uint16_t>(value >> 1);
}

void store_word(std::vector<uint8_t>& frame, size_t word, uint32_t value) {
    frame[2 * word] = static_cast<uint8_t>(value >> 8);
    frame[2 * word + 1] = static_cast<uint8_t>(value & 0xFF);
}

void store_crc2(std::vector<uint8_t>& frame) {
    if (frame.size() < 6) return;
    store_word(frame, frame.size() / 2 - 1, plain_crc16(std::span(frame).subspan(2, frame.size() - 4)));
}

void store_crc1(std::vector<uint8_t>& frame) {
    const size_t words = frame.size() / 2;
    const size_t first_part = words / 2 + words / 8;
    uint16_t crc1 = plain_crc16(std::span(frame).subspan(4, (first_part - 2) * 2));
    for (size_t i = 0; i < 16 * (first_part - 1); ++i) crc1 = crc16_before_zero_bit(crc1);
    store_word(frame, 1, crc1);
}

bool is_ac3(const std::vector<uint8_t>& frame) {
    return frame.at(5) >> 3 <= 8;
}

// The frame that begins with `bytes`, as long as they announce.
std::vector<uint8_t> complete_frame(std::vector<uint8_t> bytes) {
    const uint32_t words =
        is_ac3(bytes) ? announced_words(bytes[4] >> 6, bytes[4] & 63u) : (bytes[2] & 7u) * 256 + bytes[3] + 1;
    EXPECT_LE(bytes.size(), words * 2) << "the frame is too short for its BSI";
    bytes.resize(words * size_t{2});
    store_check_words(bytes);
    return bytes;
}

template <typename Bsi>
std::vector<uint8_t> frame_of(Bsi bsi) {
    bsi.syncword = 0x0B77;
    BitWriter writer;
    put_bsi(writer, bsi);
    return complete_frame(writer.bytes);
}

// Fields by name and the kinds of frames.
using Settings = std::map<std::string, uint32_t>;
template <typename Bsi>
using FieldTable = std::map<std::string, uint16_t Bsi::*>;

// clang-format off
const FieldTable<Ac3Bsi> AC3_FIELDS = {
    {"fscod", &Ac3Bsi::fscod}, {"frmsizecod", &Ac3Bsi::frmsizecod}, {"bsid", &Ac3Bsi::bsid},
    {"acmod", &Ac3Bsi::acmod}, {"lfeon", &Ac3Bsi::lfeon}, {"dialnorm", &Ac3Bsi::dialnorm},
    {"compre", &Ac3Bsi::compre}, {"compr", &Ac3Bsi::compr}, {"compr2e", &Ac3Bsi::compr2e},
    {"compr2", &Ac3Bsi::compr2},
};

const FieldTable<Eac3Bsi> EAC3_FIELDS = {
    {"strmtyp", &Eac3Bsi::strmtyp}, {"substreamid", &Eac3Bsi::substreamid}, {"frmsiz", &Eac3Bsi::frmsiz},
    {"fscod", &Eac3Bsi::fscod}, {"numblkscod", &Eac3Bsi::numblkscod}, {"acmod", &Eac3Bsi::acmod},
    {"lfeon", &Eac3Bsi::lfeon}, {"bsid", &Eac3Bsi::bsid}, {"dialnorm", &Eac3Bsi::dialnorm},
    {"chanmape", &Eac3Bsi::chanmape}, {"chanmap", &Eac3Bsi::chanmap}, {"mixmdate", &Eac3Bsi::mixmdate},
    {"pgmscle", &Eac3Bsi::pgmscle}, {"extpgmscle", &Eac3Bsi::extpgmscle}, {"mixdef", &Eac3Bsi::mixdef},
    {"mixdeflen", &Eac3Bsi::mixdeflen}, {"mixdata2e", &Eac3Bsi::mixdata2e},
    {"premixcmpscl", &Eac3Bsi::premixcmpscl}, {"extpgmlscle", &Eac3Bsi::extpgmlscle},
    {"extpgmcscle", &Eac3Bsi::extpgmcscle}, {"extpgmrscle", &Eac3Bsi::extpgmrscle},
    {"extpgmlsscle", &Eac3Bsi::extpgmlsscle}, {"extpgmrsscle", &Eac3Bsi::extpgmrsscle},
    {"extpgmlfescle", &Eac3Bsi::extpgmlfescle}, {"paninfoe", &Eac3Bsi::paninfoe},
    {"infomdate", &Eac3Bsi::infomdate}, {"bsmod", &Eac3Bsi::bsmod}, {"sourcefscod", &Eac3Bsi::sourcefscod},
    {"sync", &Eac3Bsi::convsync}, {"addbsie", &Eac3Bsi::addbsie}, {"addbsil", &Eac3Bsi::addbsil},
};
// clang-format on

const std::map<char, std::string> KINDS = {
    {'A', "frmsizecod=30,bsid=8,acmod=7,lfeon=1,dialnorm=31,"},
    {'I', "words=256,blocks=6,acmod=7,lfeon=1,bsid=16,dialnorm=31,"},
    {'T', "strmtyp=2,words=256,blocks=6,acmod=7,lfeon=1,bsid=16,dialnorm=31,"},
    {'S', "words=256,blocks=6,acmod=1,bsid=16,dialnorm=31,mixmdate=1,extpgmscle=1,"},
    {'D', "strmtyp=1,words=128,blocks=6,acmod=2,bsid=16,dialnorm=31,chanmape=1,chanmap=0x0200,"},
};

// Takes `name` out of `settings`.
uint32_t take(Settings& settings, const std::string& name, uint32_t otherwise = 0) {
    const auto node = settings.extract(name);
    return node.empty() ? otherwise : node.mapped();
}

// Later settings take the place of earlier ones.
Settings parse_settings(const std::string& text) {
    Settings settings;
    std::istringstream items(text);
    for (std::string item; std::getline(items, item, ',');) {
        const size_t equal = item.find('=');
        settings[item.substr(0, equal)] = static_cast<uint32_t>(std::strtoul(item.c_str() + equal + 1, nullptr, 0));
    }
    return settings;
}

template <typename Bsi>
std::vector<uint8_t> frame_with(const Settings& settings, const FieldTable<Bsi>& fields) {
    Bsi bsi;
    for (const auto& [name, value] : settings) {
        const auto field = fields.find(name);
        if (field == fields.end())
            ADD_FAILURE() << "no such field: " << name;
        else
            bsi.*field->second = static_cast<uint16_t>(value);
    }
    return frame_of(bsi);
}

std::vector<uint8_t> frame_of_kind(char kind, Settings& settings) {
    if (kind == 'A') return frame_with(settings, AC3_FIELDS);
    const uint32_t blocks = take(settings, "blocks");
    settings["numblkscod"] = blocks == 6 ? 3 : blocks - 1;
    settings["frmsiz"] = take(settings, "words") - 1;
    return frame_with(settings, EAC3_FIELDS);
}

// The end of the frame: auxiliary data, auxdatal, auxdatae, the last bit.
void put_tail(std::vector<uint8_t>& frame, uint32_t auxdatal, uint32_t last_bit) {
    const size_t words = frame.size() / 2;
    if (auxdatal == 0 && last_bit == 0) return;
    store_word(frame, words - 4, 0x0001);
    store_word(frame, words - 3, 0x2345);
    store_word(frame, words - 2, auxdatal << 2 | (auxdatal != 0 ? 2u : 0u) | last_bit);
    store_crc2(frame);
}

std::vector<uint8_t> hex_bytes(const std::string& text) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16)));
    return bytes;
}

std::vector<uint8_t> described_frame(const std::string& item) {
    const size_t colon = item.find(':');
    const std::string text = colon == std::string::npos ? "" : item.substr(colon + 1);
    if (item[0] == 'x') return hex_bytes(text);
    if (item[0] == 'b') return complete_frame(hex_bytes(text));
    const bool with_id = item.size() > 1 && colon != 1;
    const std::string id = with_id ? "substreamid=" + item.substr(1, 1) + "," : "";
    Settings settings = parse_settings(KINDS.at(item[0]) + id + text);
    const uint32_t fault = take(settings, "crc");
    const bool swap = take(settings, "swap") != 0;
    const uint32_t cut = take(settings, "cut", UINT32_MAX);
    const uint32_t auxdatal = take(settings, "auxdatal");
    const uint32_t last_bit = take(settings, "lastbit");
    std::vector<uint8_t> frame = frame_of_kind(item[0], settings);
    put_tail(frame, auxdatal, last_bit);
    // Bits after every BSI that the tests write.
    if (fault == 1) frame[frame.size() / 2 - frame.size() / 8] ^= 1;
    if (fault == 2) frame[frame.size() - 3] ^= 1;
    if (swap) swap_words(frame);
    if (cut < frame.size()) frame.resize(cut);
    return frame;
}

}  // namespace

void store_check_words(std::vector<uint8_t>& frame) {
    if (is_ac3(frame)) store_crc1(frame);
    store_crc2(frame);
}

void put_bsi(BitWriter& writer, const Ac3Bsi& bsi) {
    writer.put(16, bsi.syncword);
    writer.put(16, bsi.crc1);
    writer.put(2, bsi.fscod);
    writer.put(6, bsi.frmsizecod);
    writer.put(5, bsi.bsid);
    writer.put(3, bsi.bsmod);
    writer.put(3, bsi.acmod);
    if (bsi.acmod == 3 || bsi.acmod == 5 || bsi.acmod == 7) writer.put(2, bsi.cmixlev);
    if (bsi.acmod >= 4) writer.put(2, bsi.surmixlev);
    if (bsi.acmod == 2) writer.put(2, bsi.dsurmod);
    writer.put(1, bsi.lfeon);
    writer.put(5, bsi.dialnorm);
    put_optional(writer, bsi.compre, 8, bsi.compr);
    put_optional(writer, bsi.langcode, 8, bsi.langcod);
    put_production_info(writer, bsi.audprodie, bsi.mixlevel, bsi.roomtyp);
    if (bsi.acmod == 0) {
        writer.put(5, bsi.dialnorm2);
        put_optional(writer, bsi.compr2e, 8, bsi.compr2);
        put_optional(writer, bsi.langcod2e, 8, bsi.langcod2);
        put_production_info(writer, bsi.audprodi2e, bsi.mixlevel2, bsi.roomtyp2);
    }
    writer.put(1, bsi.copyrightb);
    writer.put(1, bsi.origbs);
    if (bsi.bsid != 6) {
        put_optional(writer, bsi.timecod1e, 14, bsi.timecod1);
        put_optional(writer, bsi.timecod2e, 14, bsi.timecod2);
    } else {
        put_optional(writer, bsi.xbsi1e, 2, bsi.dmixmod);
        if (bsi.xbsi1e != 0)
            for (const uint16_t level : {bsi.ltrtcmixlev, bsi.ltrtsurmixlev, bsi.lorocmixlev, bsi.lorosurmixlev})
                writer.put(3, level);
        put_optional(writer, bsi.xbsi2e, 2, bsi.dsurexmod);
        if (bsi.xbsi2e != 0) {
            writer.put(2, bsi.dheadphonmod);
            writer.put(1, bsi.adconvtyp);
            writer.put(8, bsi.xbsi2);
            writer.put(1, bsi.encinfo);
        }
    }
    put_addbsi(writer, bsi);
}

void put_bsi(BitWriter& writer, const Eac3Bsi& bsi) {
    writer.put(16, bsi.syncword);
    writer.put(2, bsi.strmtyp);
    writer.put(3, bsi.substreamid);
    writer.put(11, bsi.frmsiz);
    writer.put(2, bsi.fscod);
    writer.put(2, bsi.numblkscod);
    writer.put(3, bsi.acmod);
    writer.put(1, bsi.lfeon);
    writer.put(5, bsi.bsid);
    writer.put(5, bsi.dialnorm);
    put_optional(writer, bsi.compre, 8, bsi.compr);
    if (bsi.acmod == 0) writer.put(5, bsi.dialnorm2);
    if (bsi.acmod == 0) put_optional(writer, bsi.compr2e, 8, bsi.compr2);
    if (bsi.strmtyp == 1) put_optional(writer, bsi.chanmape, 16, bsi.chanmap);
    writer.put(1, bsi.mixmdate);
    if (bsi.mixmdate != 0) put_mixing_metadata(writer, bsi);
    writer.put(1, bsi.infomdate);
    if (bsi.infomdate != 0) put_informational_metadata(writer, bsi);
    if (bsi.strmtyp == 0 && bsi.numblkscod != 3) writer.put(1, bsi.convsync);
    if (bsi.strmtyp == 2 && bsi.numblkscod != 3) writer.put(1, bsi.blkid);
    if (bsi.strmtyp == 2 && (bsi.numblkscod == 3 || bsi.blkid != 0)) writer.put(6, bsi.frmsizecod);
    put_addbsi(writer, bsi);
}

// The rule that ETSI TS 102 366, table 4.13, follows.
uint32_t announced_words(uint32_t fscod, uint32_t frmsizecod) {
    const uint32_t rates_kbps[19] = {32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                     192, 224, 256, 320, 384, 448, 512, 576, 640};
    const uint32_t kbps = rates_kbps[frmsizecod / 2];
    if (fscod == 0) return 2 * kbps;
    if (fscod == 2) return 3 * kbps;
    return kbps * 96000 / 44100 + frmsizecod % 2;
}

std::vector<uint8_t> write_frame(const Eac3Bsi& bsi) {
    return frame_of(bsi);
}

uint16_t plain_crc16(std::span<const uint8_t> bytes) {
    uint32_t crc = 0;
    for (const uint8_t byte : bytes) {
        crc ^= static_cast<uint32_t>(byte) << 8;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000) != 0 ? (crc << 1 ^ 0x8005) & 0xFFFF : crc << 1;
    }
    return static_cast<uint16_t>(crc);
}

void swap_words(std::span<uint8_t> bytes) {
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
}

std::vector<uint16_t> to_words(std::span<const uint8_t> bytes) {
    std::vector<uint16_t> words((bytes.size() + 1) / 2);
    for (size_t i = 0; i < bytes.size(); ++i)
        words[i / 2] = static_cast<uint16_t>(words[i / 2] | bytes[i] << (i % 2 == 0 ? 8 : 0));
    return words;
}

std::vector<uint8_t> syncframes(std::string_view description) {
    std::vector<uint8_t> stream;
    std::istringstream items{std::string(description)};
    for (std::string item; items >> item;) {
        const size_t star = item.find('*');
        const unsigned long count = star == std::string::npos ? 1 : std::strtoul(item.c_str(), nullptr, 10);
        const std::vector<uint8_t> frame = described_frame(star == std::string::npos ? item : item.substr(star + 1));
        for (unsigned long i = 0; i < count; ++i) stream.insert(stream.end(), frame.begin(), frame.end());
    }
    return stream;
}

}  // namespace quorlin
