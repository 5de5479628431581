#include "ztpinfo/info_printer_ac3.h"

#include <cstdio>

#include "ztpinfo/info_printer_fields.h"
#include "ztpinfo/info_printer_lines.h"

namespace quorlin {

// ETSI TS 102 366, 4.3.1, 4.3.2 and D.2.2.

namespace {

void print_first_channel(const Ac3Bsi& bsi, const char* end) {
    print_dialnorm("dialnorm", bsi.dialnorm, "Dialog Normalization: -", end);
    print_named("compre", bsi.compre, "Heavy Compression ", PRESENCE_NAMES, end);
    if (bsi.compre != 0) print_compr("compr", bsi.compr, "Heavy Compression: ", end);
    print_named("langcode", bsi.langcode, "Language Code ", PRESENCE_NAMES, end);
    if (bsi.langcode != 0) print_field("langcod", bsi.langcod, end);
    print_named("audprodie", bsi.audprodie, "Audio production info ", PRESENCE_NAMES, end);
    if (bsi.audprodie != 0) {
        print_mixlevel("mixlevel", bsi.mixlevel, "Mix level: ", "dB SPL", end);
        print_named("roomtyp", bsi.roomtyp, "Room type: ", ROOMTYP_NAMES, end);
    }
}

void print_second_channel(const Ac3Bsi& bsi, const char* end) {
    print_dialnorm("dialnorm2", bsi.dialnorm2, "Dialog Normalization #2: -", end);
    print_named("compr2e", bsi.compr2e, "Heavy Compression #2 ", PRESENCE_NAMES, end);
    if (bsi.compr2e != 0) print_compr("compr2", bsi.compr2, "Heavy Compression #2: ", end);
    print_named("langcod2e", bsi.langcod2e, "Language Code #2 ", PRESENCE_NAMES, end);
    if (bsi.langcod2e != 0) print_field("langcod2", bsi.langcod2, end);
    print_named("audprodi2e", bsi.audprodi2e, "Audio production info #2 ", PRESENCE_NAMES, end);
    if (bsi.audprodi2e != 0) {
        print_mixlevel("mixlevel2", bsi.mixlevel2, "Mix level #2: ", "dB SPL", end);
        print_named("roomtyp2", bsi.roomtyp2, "Room type #2: ", ROOMTYP_NAMES, end);
    }
}

void print_timecodes(const Ac3Bsi& bsi, const char* end) {
    print_named("timecod1e", bsi.timecod1e, "Timecode first half ", PRESENCE_NAMES, end);
    if (bsi.timecod1e != 0) {
        const int hours = bsi.timecod1 >> 9;
        const int minutes = bsi.timecod1 >> 3 & 63;
        const int seconds = 8 * (bsi.timecod1 & 7);
        std::printf("            timecod1: 0x%04hX (Timecode first half : %2d:%2d:%2d)%s", bsi.timecod1, hours, minutes,
                    seconds, end);
    }
    print_named("timecod2e", bsi.timecod2e, "Timecode second half ", PRESENCE_NAMES, end);
    if (bsi.timecod2e != 0) {
        const int seconds = bsi.timecod2 >> 11;
        const int frames = bsi.timecod2 >> 6 & 31;
        const int frame_64ths = bsi.timecod2 & 63;
        std::printf("            timecod2: 0x%04hX (Timecode second half : %2d:%2d:%2d)%s", bsi.timecod2, seconds,
                    frames, frame_64ths, end);
    }
}

void print_annex_d(const Ac3Bsi& bsi, const char* end) {
    std::printf("            Annex D Information:\n");
    print_named("xbsi1e", bsi.xbsi1e, "Extra bitstream information #1 ", PRESENCE_NAMES, end);
    if (bsi.xbsi1e != 0) {
        print_named("dmixmod", bsi.dmixmod, "Preferred Stereo Downmix Mode: ", DMIXMOD_NAMES, end);
        print_named("ltrtcmixlev", bsi.ltrtcmixlev, "Lt/Rt Center Mix Level: ", CENTER_MIX_NAMES, end);
        print_named("ltrtsurmixlev", bsi.ltrtsurmixlev, "Lt/Rt Surround Mix Level: ", SURROUND_MIX_NAMES, end);
        print_named("lorocmixlev", bsi.lorocmixlev, "Lo/Ro Center Mix Level: ", CENTER_MIX_NAMES, end);
        print_named("lorosurmixlev", bsi.lorosurmixlev, "Lo/Ro Surround Mix Level: ", SURROUND_MIX_NAMES, end);
    }
    print_named("xbsi2e", bsi.xbsi2e, "Extra bitstream information #2 ", PRESENCE_NAMES, end);
    if (bsi.xbsi2e != 0) {
        print_named("dsurexmod", bsi.dsurexmod, "Ambiq EX Mode: ", DSUREXMOD_NAMES, end);
        print_named("dheadphonmod", bsi.dheadphonmod, "Auralon Mode: ", DHEADPHONMOD_NAMES, end);
        print_named("adconvtyp", bsi.adconvtyp, "A/D Converter Type: ", ADCONVTYP_NAMES, end);
        print_explained("xbsi2", bsi.xbsi2, "Extra bit stream information: reserved for future assignment", "", end);
        print_explained("encinfo", bsi.encinfo, "Encoder information: reserved for use by the encoder", "", end);
    }
}

}  // namespace

void print_ac3_fields(const Ac3Bsi& bsi, const char* end) {
    print_field("syncword", bsi.syncword, end);
    print_field("crc1", bsi.crc1, end);
    print_named("fscod", bsi.fscod, "Sample rate code: ", FSCOD_NAMES, end);
    print_field("frmsizecod", bsi.frmsizecod, end);
    print_field("bsid", bsi.bsid, end);
    print_bsmod(bsi.bsmod, bsi.acmod, end);
    print_named("acmod", bsi.acmod, "Audio coding mode: ", ACMOD_ORDER_NAMES, end);
    if (has_center_mix(bsi.acmod)) print_named("cmixlev", bsi.cmixlev, "Center mix level: ", CMIXLEV_NAMES, end);
    if (has_surround(bsi.acmod)) print_named("surmixlev", bsi.surmixlev, "Surround mix level: ", SURMIXLEV_NAMES, end);
    if (bsi.acmod == 2) print_named("dsurmod", bsi.dsurmod, "Ambiq mode: ", DSURMOD_NAMES, end);
    print_field("lfeon", bsi.lfeon, end);
    print_first_channel(bsi, end);
    if (bsi.acmod == 0) print_second_channel(bsi, end);
    print_named("copyrightb", bsi.copyrightb, "Copyright bit: ", COPYRIGHTB_NAMES, end);
    print_named("origbs", bsi.origbs, "Original bitstream flag: ", ORIGBS_NAMES, end);
    // The additional BSI comes before the fields whose layout depends on bsid, though the frame has it after
    // them: deliberately so, the Annex D fields stand under a heading of their own.
    print_addbsi(bsi.addbsie, bsi.addbsil, bsi.addbsi, end);
    if (bsi.bsid == BSID_ALTERNATE) {
        print_annex_d(bsi, end);
    } else {
        print_timecodes(bsi, end);
    }
}

}  // namespace quorlin
