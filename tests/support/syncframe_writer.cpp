#include "support/syncframe_writer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

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

void put_addbsi(BitWriter& writer, uint16_t addbsie, uint16_t addbsil, std::span<const uint8_t> addbsi) {
    put_optional(writer, addbsie, 6, addbsil);
    if (addbsie != 0)
        for (const uint8_t byte : addbsi.first(addbsil + 1u)) writer.put(8, byte);
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

void store_word(std::vector<uint8_t>& frame, size_t word, uint16_t value) {
    frame[2 * word] = static_cast<uint8_t>(value >> 8);
    frame[2 * word + 1] = static_cast<uint8_t>(value & 0xFF);
}

template <typename Bsi>
std::vector<uint8_t> frame_without_crc(const Bsi& bsi) {
    BitWriter writer;
    put_bsi(writer, bsi);
    writer.align();
    EXPECT_LE(writer.bytes.size(), announced_words(bsi) * 2u) << "the frame is too short for its BSI";
    writer.bytes.resize(announced_words(bsi) * size_t{2});
    return writer.bytes;
}

void close_frame(std::vector<uint8_t>& frame, CrcFault fault) {
    const size_t words = frame.size() / 2;
    if (words < 3) return;
    store_word(frame, words - 1, plain_crc16(std::span(frame).subspan(2, frame.size() - 4)));
    // Bits behind every BSI that the tests write.
    if (fault == CrcFault::WHOLE) frame[words - words / 4] ^= 1;
    if (fault == CrcFault::LAST_PART) frame[frame.size() - 3] ^= 1;
}

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
    {"strmtyp", &Eac3Bsi::strmtyp}, {"fscod", &Eac3Bsi::fscod}, {"acmod", &Eac3Bsi::acmod},
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

using Settings = std::map<std::string, uint32_t>;

// Takes `name` out of `settings`.
uint32_t take(Settings& settings, const std::string& name, uint32_t otherwise) {
    const auto found = settings.find(name);
    if (found == settings.end()) return otherwise;
    const uint32_t value = found->second;
    settings.erase(found);
    return value;
}

template <typename Bsi>
void set_fields(Bsi& bsi, const Settings& settings, const FieldTable<Bsi>& fields) {
    for (const auto& [name, value] : settings) {
        const auto field = fields.find(name);
        if (field == fields.end())
            ADD_FAILURE() << "no such field: " << name;
        else
            bsi.*field->second = static_cast<uint16_t>(value);
    }
}

std::vector<uint8_t> described_ac3(const Settings& settings, CrcFault fault) {
    Ac3Bsi bsi = {.frmsizecod = 30, .bsid = 8, .acmod = 7, .lfeon = 1, .dialnorm = 31};
    set_fields(bsi, settings, AC3_FIELDS);
    return write_frame(bsi, fault);
}

std::vector<uint8_t> described_eac3(char kind, uint16_t id, Settings& settings, CrcFault fault) {
    Eac3Bsi bsi = {.frmsiz = 255, .numblkscod = 3, .acmod = 7, .lfeon = 1, .bsid = 16, .dialnorm = 31};
    bsi.strmtyp = kind == 'D' ? 1 : kind == 'T' ? 2 : 0;
    bsi.substreamid = id;
    if (kind == 'D') {
        bsi.frmsiz = 127;
        bsi.acmod = 2;
        bsi.lfeon = 0;
        bsi.chanmape = 1;
        bsi.chanmap = 0x0200;
    }
    if (kind == 'S') {
        bsi.acmod = 1;
        bsi.lfeon = 0;
        bsi.mixmdate = 1;
        bsi.extpgmscle = 1;
    }
    bsi.frmsiz = static_cast<uint16_t>(take(settings, "words", bsi.frmsiz + 1u) - 1);
    const uint32_t blocks = take(settings, "blocks", 6);
    bsi.numblkscod = static_cast<uint16_t>(blocks == 6 ? 3 : blocks - 1);
    set_fields(bsi, settings, EAC3_FIELDS);
    return write_frame(bsi, fault);
}

Settings parse_settings(const std::string& text) {
    Settings settings;
    std::istringstream items(text);
    for (std::string item; std::getline(items, item, ',');) {
        const size_t equal = item.find('=');
        settings[item.substr(0, equal)] = static_cast<uint32_t>(std::strtoul(item.c_str() + equal + 1, nullptr, 0));
    }
    return settings;
}

std::vector<uint8_t> hex_bytes(const std::string& text) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16)));
    return bytes;
}

std::vector<uint8_t> described_frame(const std::string& item) {
    const size_t colon = item.find(':');
    const std::string kind = item.substr(0, colon);
    const std::string text = colon == std::string::npos ? "" : item.substr(colon + 1);
    if (kind == "x") return hex_bytes(text);
    Settings settings = parse_settings(text);
    const CrcFault fault = static_cast<CrcFault>(take(settings, "crc", 0));
    const bool swap = take(settings, "swap", 0) != 0;
    const uint32_t cut = take(settings, "cut", UINT32_MAX);
    const uint16_t id = static_cast<uint16_t>(kind.size() > 1 ? kind[1] - '0' : 0);
    std::vector<uint8_t> frame =
        kind[0] == 'A' ? described_ac3(settings, fault) : described_eac3(kind[0], id, settings, fault);
    if (swap) swap_words(frame);
    if (cut < frame.size()) frame.resize(cut);
    return frame;
}

}  // namespace

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
    put_addbsi(writer, bsi.addbsie, bsi.addbsil, bsi.addbsi);
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
    put_addbsi(writer, bsi.addbsie, bsi.addbsil, bsi.addbsi);
}

// The rule behind ETSI TS 102 366, table 4.13.
uint32_t announced_words(const Ac3Bsi& bsi) {
    const uint32_t rates_kbps[19] = {32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                     192, 224, 256, 320, 384, 448, 512, 576, 640};
    const uint32_t kbps = rates_kbps[bsi.frmsizecod / 2];
    if (bsi.fscod == 0) return 2 * kbps;
    if (bsi.fscod == 2) return 3 * kbps;
    return kbps * 96000 / 44100 + bsi.frmsizecod % 2;
}

uint32_t announced_words(const Eac3Bsi& bsi) {
    return bsi.frmsiz + 1u;
}

std::vector<uint8_t> write_frame(Ac3Bsi bsi, CrcFault fault) {
    bsi.syncword = 0x0B77;
    std::vector<uint8_t> frame = frame_without_crc(bsi);
    const size_t words = frame.size() / 2;
    const size_t first_part = words / 2 + words / 8;
    uint16_t crc1 = plain_crc16(std::span(frame).subspan(4, (first_part - 2) * 2));
    for (size_t i = 0; i < 16 * (first_part - 1); ++i) crc1 = crc16_before_zero_bit(crc1);
    store_word(frame, 1, crc1);
    close_frame(frame, fault);
    return frame;
}

std::vector<uint8_t> write_frame(const Eac3Bsi& bsi, CrcFault fault) {
    Eac3Bsi with_sync = bsi;
    with_sync.syncword = 0x0B77;
    std::vector<uint8_t> frame = frame_without_crc(with_sync);
    close_frame(frame, fault);
    return frame;
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
