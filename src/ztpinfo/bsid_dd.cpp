#include "ztpinfo/bsid_dd.h"

#include "ztpinfo/messages.h"
#include "ztpinfo/word_cursor.h"

namespace quorlin {

namespace {

constexpr const char* SOURCE = "bsid_dd";

// ETSI TS 102 366, table 4.13: 16-bit words per syncframe by frmsizecod, at 48, 44.1 and 32 kHz.
constexpr uint16_t AC3_FRAME_WORDS[38][3] = {
    {64, 69, 96},       {64, 70, 96},       {80, 87, 120},      {80, 88, 120},      {96, 104, 144},
    {96, 105, 144},     {112, 121, 168},    {112, 122, 168},    {128, 139, 192},    {128, 140, 192},
    {160, 174, 240},    {160, 175, 240},    {192, 208, 288},    {192, 209, 288},    {224, 243, 336},
    {224, 244, 336},    {256, 278, 384},    {256, 279, 384},    {320, 348, 480},    {320, 349, 480},
    {384, 417, 576},    {384, 418, 576},    {448, 487, 672},    {448, 488, 672},    {512, 557, 768},
    {512, 558, 768},    {640, 696, 960},    {640, 697, 960},    {768, 835, 1152},   {768, 836, 1152},
    {896, 975, 1344},   {896, 976, 1344},   {1024, 1114, 1536}, {1024, 1115, 1536}, {1152, 1253, 1728},
    {1152, 1254, 1728}, {1280, 1393, 1920}, {1280, 1394, 1920},
};

// The second channel of 1+1.
void read_second_channel(WordCursor& cursor, Ac3Bsi& bsi) {
    bsi.dialnorm2 = cursor.read(5);
    bsi.compr2e = cursor.read(1);
    if (bsi.compr2e != 0) bsi.compr2 = cursor.read(8);
    bsi.langcod2e = cursor.read(1);
    if (bsi.langcod2e != 0) bsi.langcod2 = cursor.read(8);
    bsi.audprodi2e = cursor.read(1);
    if (bsi.audprodi2e != 0) {
        bsi.mixlevel2 = cursor.read(5);
        bsi.roomtyp2 = cursor.read(2);
    }
}

void read_time_codes(WordCursor& cursor, Ac3Bsi& bsi) {
    bsi.timecod1e = cursor.read(1);
    if (bsi.timecod1e != 0) bsi.timecod1 = cursor.read(14);
    bsi.timecod2e = cursor.read(1);
    if (bsi.timecod2e != 0) bsi.timecod2 = cursor.read(14);
}

// ETSI TS 102 366, Annex D: what stands in place of the time codes.
void read_extra_bsi(WordCursor& cursor, Ac3Bsi& bsi) {
    bsi.xbsi1e = cursor.read(1);
    if (bsi.xbsi1e != 0) {
        bsi.dmixmod = cursor.read(2);
        bsi.ltrtcmixlev = cursor.read(3);
        bsi.ltrtsurmixlev = cursor.read(3);
        bsi.lorocmixlev = cursor.read(3);
        bsi.lorosurmixlev = cursor.read(3);
    }
    bsi.xbsi2e = cursor.read(1);
    if (bsi.xbsi2e != 0) {
        bsi.dsurexmod = cursor.read(2);
        bsi.dheadphonmod = cursor.read(2);
        bsi.adconvtyp = cursor.read(1);
        bsi.xbsi2 = cursor.read(8);
        bsi.encinfo = cursor.read(1);
    }
}

}  // namespace

uint32_t ac3_frame_words(uint32_t fscod, uint32_t frmsizecod) {
    if (fscod >= 3 || frmsizecod >= 38) return 0;
    return AC3_FRAME_WORDS[frmsizecod][fscod];
}

// ETSI TS 102 366, 4.3.1 and 4.3.2.
int unpack_ac3_bsi(std::span<const uint16_t> words, Ac3Bsi& bsi) {
    WordCursor cursor{words};
    bsi = {};
    bsi.syncword = cursor.read(16);
    if (bsi.syncword != FRAME_SYNCWORD) {
        report_fatal("ztp-fatal-sync-word", "Invalid synchronization word", SOURCE, __LINE__);
        return FRAME_BAD_SYNC;
    }
    bsi.crc1 = cursor.read(16);
    bsi.fscod = cursor.read(2);
    bsi.frmsizecod = cursor.read(6);
    bsi.bsid = cursor.read(5);
    if (!is_ac3_bsid(bsi.bsid)) {
        report_fatal("ztp-fatal-bsid", "Unsupported bitstream id", SOURCE, __LINE__);
        return FRAME_BAD_BSID;
    }
    bsi.bsmod = cursor.read(3);
    bsi.acmod = cursor.read(3);
    if (has_center_mix(bsi.acmod)) bsi.cmixlev = cursor.read(2);
    if (has_surround(bsi.acmod)) bsi.surmixlev = cursor.read(2);
    if (bsi.acmod == 2) bsi.dsurmod = cursor.read(2);
    bsi.lfeon = cursor.read(1);
    bsi.dialnorm = cursor.read(5);
    bsi.compre = cursor.read(1);
    if (bsi.compre != 0) bsi.compr = cursor.read(8);
    bsi.langcode = cursor.read(1);
    if (bsi.langcode != 0) bsi.langcod = cursor.read(8);
    bsi.audprodie = cursor.read(1);
    if (bsi.audprodie != 0) {
        bsi.mixlevel = cursor.read(5);
        bsi.roomtyp = cursor.read(2);
    }
    if (bsi.acmod == 0) read_second_channel(cursor, bsi);
    bsi.copyrightb = cursor.read(1);
    bsi.origbs = cursor.read(1);
    if (bsi.bsid == BSID_ALTERNATE)
        read_extra_bsi(cursor, bsi);
    else
        read_time_codes(cursor, bsi);
    bsi.addbsie = cursor.read(1);
    if (bsi.addbsie != 0) {
        bsi.addbsil = cursor.read(6);
        for (uint32_t i = 0; i <= bsi.addbsil; ++i) bsi.addbsi[i] = static_cast<uint8_t>(cursor.read(8));
    }
    return 0;
}

}  // namespace quorlin
