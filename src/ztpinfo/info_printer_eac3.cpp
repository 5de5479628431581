#include "ztpinfo/info_printer_eac3.h"

#include <cinttypes>
#include <cstdio>

#include "ztpinfo/bsid_ztp.h"
#include "ztpinfo/info_printer_fields.h"
#include "ztpinfo/info_printer_lines.h"

namespace quorlin {

// ETSI TS 102 366, E.1.2.1 and E.1.2.2. fscod2 has no line: frames that carry it are refused.

namespace {

void print_header(const Eac3Bsi& bsi, const char* end) {
    print_field("syncword", bsi.syncword, end);
    print_named("strmtyp", bsi.strmtyp, "Stream type: ", STRMTYP_NAMES, end);
    print_field("substreamid", bsi.substreamid, end);
    print_field("frmsiz", bsi.frmsiz, end);
    print_named("fscod", bsi.fscod, "Sample rate code: ", FSCOD_NAMES, end);
    print_named("numblkscod", bsi.numblkscod, "Blocks per frame: ", NUMBLKSCOD_NAMES, end);
    print_named("acmod", bsi.acmod, "Audio coding mode: ", ACMOD_ORDER_NAMES, end);
    print_field("lfeon", bsi.lfeon, end);
    print_field("bsid", bsi.bsid, end);
    print_dialnorm("dialnorm", bsi.dialnorm, "Dialog Normalization: -", end);
    print_named("compre", bsi.compre, "Heavy Compression ", PRESENCE_NAMES, end);
    if (bsi.compre != 0) print_compr("compr", bsi.compr, "Heavy Compression: ", end);
    if (bsi.acmod == 0) {
        print_dialnorm("dialnorm2", bsi.dialnorm2, "Dialog normalization #2: -", end);
        print_named("compr2e", bsi.compr2e, "Heavy Compression #2 ", PRESENCE_NAMES, end);
        if (bsi.compr2e != 0) print_compr("compr2", bsi.compr2, "Heavy Compression #2: ", end);
    }
}

void print_chanmap(const Eac3Bsi& bsi, const char* end) {
    print_named("chanmape", bsi.chanmape, "Custom channel map ", PRESENCE_NAMES, end);
    if (bsi.chanmape == 0) return;
    std::printf("            chanmap: 0x%04hX (Custom channel map locations: ", bsi.chanmap);
    print_locations(bsi.chanmap, CHANMAP_NAMES);
    std::printf(")%s", end);
}

void print_downmix(const Eac3Bsi& bsi, const char* end) {
    if (bsi.acmod > 2) print_named("dmixmod", bsi.dmixmod, "Preferred Stereo Downmix Mode: ", DMIXMOD_NAMES, end);
    if (has_center_mix(bsi.acmod)) {
        print_named("ltrtcmixlev", bsi.ltrtcmixlev, "Lt/Rt Center Mix Level: ", CENTER_MIX_NAMES, end);
        print_named("lorocmixlev", bsi.lorocmixlev, "Lo/Ro Center Mix Level: ", CENTER_MIX_NAMES, end);
    }
    if (has_surround(bsi.acmod)) {
        print_named("ltrtsurmixlev", bsi.ltrtsurmixlev, "Lt/Rt Surround Mix Level: ", SURROUND_MIX_NAMES, end);
        print_named("lorosurmixlev", bsi.lorosurmixlev, "Lo/Ro Surround Mix Level: ", SURROUND_MIX_NAMES, end);
    }
    if (bsi.lfeon == 0) return;
    print_named("lfemixlevcode", bsi.lfemixlevcode, "LFE Mix Level ", PRESENCE_NAMES, end);
    if (bsi.lfemixlevcode != 0) {
        print_number("lfemixlevcod", bsi.lfemixlevcod, "LFE Mix Level: ", 10 - bsi.lfemixlevcod, "dB", end);
    } else {
        std::printf("            LFE Dowmixing disabled\n");
    }
}

// The number is the one that the code stands for by the scale of the others also where code 0 means mute.
void print_scale_factor(const char* name, uint16_t code, const char* words, const char* unit, const char* end) {
    print_number(name, code, words, code - 51, unit, end);
}

void print_program_scale(const Eac3Bsi& bsi, const char* end) {
    print_named("pgmscle", bsi.pgmscle, "Program scale factor ", PRESENCE_NAMES, end);
    if (bsi.pgmscle != 0) print_scale_factor("pgmscl", bsi.pgmscl, "Program Attenuation: ", "dB", end);
    if (bsi.acmod == 0) {
        print_named("pgmscl2e", bsi.pgmscl2e, "Program scale factor #2 ", PRESENCE_NAMES, end);
        if (bsi.pgmscl2e != 0) print_scale_factor("pgmscl2", bsi.pgmscl2, "Program Attenuation #2: ", "dB", end);
    }
    print_named("extpgmscle", bsi.extpgmscle, "External Program scale factor ", PRESENCE_NAMES, end);
    if (bsi.extpgmscle != 0)
        print_scale_factor("extpgmscl", bsi.extpgmscl, "External Program Attenuation: ", " dB", end);
}

void print_premix(const Eac3Bsi& bsi, const char* end) {
    print_explained("premixcmpsel", bsi.premixcmpsel,
                    bsi.premixcmpsel != 0 ? "Premix compression word select: compr is used"
                                          : "Premix compression word select: dynrng is used",
                    "", end);
    print_explained("drcsrc", bsi.drcsrc,
                    bsi.drcsrc == 0 ? "Dynamic range control word source for the mixed output: external program"
                                    : "Dynamic range control word source for the mixed output: current substream",
                    "", end);
    print_number("premixcmpscl", bsi.premixcmpscl, "Premix compression word scale factor : ", bsi.premixcmpscl, "",
                 end);
}

// A scale factor of the external program after its flag, with the words for each.
struct ExternalScale {
    const char* flag_name;
    uint16_t flag;
    const char* flag_words;
    const char* name;
    uint16_t code;
    const char* words;
};

void print_external_scale(const ExternalScale& scale, const char* end) {
    print_named(scale.flag_name, scale.flag, scale.flag_words, PRESENCE_NAMES, end);
    if (scale.flag != 0) print_named(scale.name, scale.code, scale.words, EXTPGM_CHANNEL_SCALE_NAMES, end);
}

void print_external_channels(const Eac3Bsi& bsi, const char* end) {
    const ExternalScale scales[] = {
        {"extpgmlscle", bsi.extpgmlscle, "External program left channel scale factor ",  //
         "extpgmlscl", bsi.extpgmlscl, "External program left channel scale factor : "},
        {"extpgmcscle", bsi.extpgmcscle, "External program center channel scale factor ",  //
         "extpgmcscl", bsi.extpgmcscl, "External program center channel scale factor : "},
        {"extpgmrscle", bsi.extpgmrscle, "External program right channel scale factor ",  //
         "extpgmrscl", bsi.extpgmrscl, "External program right channel scale factor : "},
        {"extpgmlsscle", bsi.extpgmlsscle, "External program left surround channel scale factor ",  //
         "extpgmlsscl", bsi.extpgmlsscl, "External program left surround channel scale factor : "},
        {"extpgmrsscle", bsi.extpgmrsscle, "External program right surround channel scale factor ",  //
         "extpgmrsscl", bsi.extpgmrsscl, "External program right surround channel scale factor : "},
        {"extpgmlfescle", bsi.extpgmlfescle, "External program LFE channel scale factor ",  //
         "extpgmlfescl", bsi.extpgmlfescl, "External program LFE channel scale factor : "},
        {"dmixscle", bsi.dmixscle, "External program downmix scale factor ",  //
         "dmixscl", bsi.dmixscl, "External program downmix scale factor : "},
    };
    for (const ExternalScale& scale : scales) print_external_scale(scale, end);
}

void print_external_auxiliary(const Eac3Bsi& bsi, const char* end) {
    print_named("addche", bsi.addche, "Scale factors for additional external program channels ", PRESENCE_NAMES, end);
    if (bsi.addche == 0) return;
    const ExternalScale scales[] = {
        {"extpgmaux1scle", bsi.extpgmaux1scle, "External program first auxiliary channel scale factor ",  //
         "extpgmaux1scl", bsi.extpgmaux1scl, "External program first auxiliary channel scale factor : "},
        {"extpgmaux2scle", bsi.extpgmaux2scle, "External program second auxiliary channel scale factor ",  //
         "extpgmaux2scl", bsi.extpgmaux2scl, "External program second auxiliary channel scale factor : "},
    };
    for (const ExternalScale& scale : scales) print_external_scale(scale, end);
}

void print_mix_control(const Eac3Bsi& bsi, const char* end) {
    print_named("mixdef", bsi.mixdef, "Mix control type : ", MIXDEF_NAMES, end);
    if (bsi.mixdef == 1) print_premix(bsi, end);
    if (bsi.mixdef != 3) return;
    print_number("mixdeflen", bsi.mixdeflen, "Length of mixing parameter data field in bytes: ", bsi.mixdeflen + 2, "",
                 end);
    print_named("mixdata2e", bsi.mixdata2e, "Mixing parameters for individual channel scaling ", PRESENCE_NAMES, end);
    if (bsi.mixdata2e == 0) return;
    print_premix(bsi, end);
    print_external_channels(bsi, end);
    print_external_auxiliary(bsi, end);
}

int pan_degrees(uint16_t panmean) {
    return panmean * 3 / 2;
}

void print_pan(const Eac3Bsi& bsi, const char* end) {
    if (bsi.acmod < 2) {
        print_named("paninfoe", bsi.paninfoe, "Pan information ", PRESENCE_NAMES, end);
        if (bsi.paninfoe != 0) {
            print_number("panmean", bsi.panmean, "Pan mean direction angle in degrees: ", pan_degrees(bsi.panmean), "",
                         end);
            print_explained("paninfo", bsi.paninfo, "Reserved for future mixing", "", end);
        }
    }
    if (bsi.acmod == 0) {
        print_named("paninfo2e", bsi.paninfo2e, "Pan information #2 ", PRESENCE_NAMES, end);
        if (bsi.paninfo2e != 0) {
            print_number("panmean2", bsi.panmean2,
                         "Pan mean direction angle #2 in degrees: ", pan_degrees(bsi.panmean2), "", end);
            print_explained("paninfo2", bsi.paninfo2, "Reserved for future mixing", "", end);
        }
    }
}

void print_block_mixing(const Eac3Bsi& bsi, const char* end) {
    print_named("frmmixcfginfoe", bsi.frmmixcfginfoe, "Frame mixing configuration information ", PRESENCE_NAMES, end);
    if (bsi.frmmixcfginfoe == 0) return;
    if (bsi.numblkscod == 0) {
        print_explained("blkmixcfginfo[0]", bsi.blkmixcfginfo[0], "Block mixing configuration information", "", end);
        return;
    }
    for (uint32_t block = 0; block < eac3_blocks(bsi.numblkscod); ++block) {
        print_named("blkmixcfginfoe", bsi.blkmixcfginfoe[block], "Block mixing configuration information ",
                    PRESENCE_NAMES, end);
        if (bsi.blkmixcfginfoe[block] != 0)
            std::printf("            blkmixcfginfo[block %" PRIu32
                        "]: 0x%04hX (Block mixing configuration information)%s",
                        block, bsi.blkmixcfginfo[block], end);
    }
}

void print_mixing(const Eac3Bsi& bsi, const char* end) {
    print_named("mixmdate", bsi.mixmdate, "Mixing Meta-data ", PRESENCE_NAMES, end);
    if (bsi.mixmdate == 0) return;
    print_downmix(bsi, end);
    if (bsi.strmtyp != STRMTYP_INDEPENDENT) return;
    print_program_scale(bsi, end);
    print_mix_control(bsi, end);
    print_pan(bsi, end);
    print_block_mixing(bsi, end);
}

void print_production(const Eac3Bsi& bsi, const char* end) {
    print_named("audprodie", bsi.audprodie, "Audio production info ", PRESENCE_NAMES, end);
    if (bsi.audprodie != 0) {
        print_mixlevel("mixlevel", bsi.mixlevel, "Mix level: ", "dB SPL", end);
        print_named("roomtyp", bsi.roomtyp, "Room type: ", ROOMTYP_NAMES, end);
        print_named("adconvtyp", bsi.adconvtyp, "A/D Converter Type: ", ADCONVTYP_NAMES, end);
    }
    if (bsi.acmod != 0) return;
    print_named("audprodi2e", bsi.audprodi2e, "Audio production info #2 ", PRESENCE_NAMES, end);
    if (bsi.audprodi2e != 0) {
        print_mixlevel("mixlevel2", bsi.mixlevel2, "Mix level #2: ", "", end);
        print_named("roomtyp2", bsi.roomtyp2, "Room type #2: ", ROOMTYP_NAMES, end);
        print_named("adconvtyp2", bsi.adconvtyp2, "A/D Converter Type #2: ", ADCONVTYP_NAMES, end);
    }
}

void print_informational(const Eac3Bsi& bsi, const char* end) {
    print_named("infomdate", bsi.infomdate, "Informational metadata ", PRESENCE_NAMES, end);
    if (bsi.infomdate == 0) return;
    print_bsmod(bsi.bsmod, bsi.acmod, end);
    print_named("copyrightb", bsi.copyrightb, "Copyright bit: ", COPYRIGHTB_NAMES, end);
    print_named("origbs", bsi.origbs, "Original bitstream flag: ", ORIGBS_NAMES, end);
    if (bsi.acmod == 2) {
        print_named("dsurmod", bsi.dsurmod, "Ambiq mode: ", DSURMOD_NAMES, end);
        print_named("dheadphonmod", bsi.dheadphonmod, "Auralon Mode: ", DHEADPHONMOD_NAMES, end);
    }
    if (bsi.acmod >= 6) print_named("dsurexmod", bsi.dsurexmod, "Ambiq EX Mode: ", DSUREXMOD_NAMES, end);
    print_production(bsi, end);
    // The blank after the parenthesis is deliberate.
    std::printf("            sourcefscod: 0x%04hX (Source material was sampled at %s) %s", bsi.sourcefscod,
                value_name(SOURCEFSCOD_NAMES, bsi.sourcefscod), end);
}

void print_conversion(const Eac3Bsi& bsi, const char* end) {
    const bool six_blocks = bsi.numblkscod == NUMBLKSCOD_SIX_BLOCKS;
    if (bsi.strmtyp == STRMTYP_INDEPENDENT && !six_blocks)
        print_explained("convsync", bsi.convsync, "Converter synchronization flag", "", end);
    if (bsi.strmtyp != STRMTYP_TRANSCODED) return;
    if (!six_blocks) print_explained("blkid", bsi.blkid, "Block identification", "", end);
    if (six_blocks || bsi.blkid != 0) print_explained("frmsizecod", bsi.frmsizecod, "Frame size code", "", end);
}

}  // namespace

void print_eac3_fields(const Eac3Bsi& bsi, const char* end) {
    print_header(bsi, end);
    if (bsi.strmtyp == STRMTYP_DEPENDENT) print_chanmap(bsi, end);
    print_mixing(bsi, end);
    print_informational(bsi, end);
    print_conversion(bsi, end);
    print_addbsi(bsi.addbsie, bsi.addbsil, bsi.addbsi, end);
}

}  // namespace quorlin
