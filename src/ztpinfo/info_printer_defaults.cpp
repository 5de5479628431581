#include "ztpinfo/info_printer_defaults.h"

#include <cstdio>

#include "ztpinfo/info_printer_names.h"

namespace quorlin {

namespace {

constexpr uint16_t MIX_LEVEL_MINUS_3_DB = 4;  // of ltrtcmixlev, ltrtsurmixlev and their Lo/Ro forms

// The groups of fields of a frame that has defaults, and the Lo/Ro levels that hold without fields of their own.
struct CarriedGroups {
    uint16_t acmod = 0;
    bool downmix = false;            // dmixmod and the Lt/Rt and Lo/Ro levels
    bool production = false;         // mixlevel, roomtyp
    bool converter = false;          // adconvtyp
    bool second_production = false;  // mixlevel2, roomtyp2
    bool second_converter = false;   // adconvtyp2
    bool copyright = false;          // copyrightb, origbs
    bool surround_mode = false;      // dsurmod
    bool headphone_and_ex = false;   // dheadphonmod, dsurexmod
    const char* loro_center = value_name(CENTER_MIX_NAMES, MIX_LEVEL_MINUS_3_DB);
    const char* loro_surround = value_name(SURROUND_MIX_NAMES, MIX_LEVEL_MINUS_3_DB);
};

void print_downmix_defaults(const CarriedGroups& carried) {
    if (carried.downmix) return;
    const bool center = has_center_mix(carried.acmod);
    const bool surround = has_surround(carried.acmod);
    if (carried.acmod > 2) {
        std::printf("            Preferred Stereo Downmix Mode:\n");
        std::printf("            %s (default, not in bitstream)\n", value_name(DMIXMOD_NAMES, 0));
    }
    if (center)
        std::printf("            Lt/Rt Center Mix Level: %s (default, not in bitstream)\n",
                    value_name(CENTER_MIX_NAMES, MIX_LEVEL_MINUS_3_DB));
    if (surround)
        std::printf("            Lt/Rt Surround Mix Level: %s (default, not in bitstream)\n",
                    value_name(SURROUND_MIX_NAMES, MIX_LEVEL_MINUS_3_DB));
    if (center)
        std::printf("            Lo/Ro Center Mix Level: %s (default, not in bitstream)\n", carried.loro_center);
    if (surround)
        std::printf("            Lo/Ro Surround Mix Level: %s (default, not in bitstream)\n", carried.loro_surround);
}

void print_production_defaults(const CarriedGroups& carried) {
    if (!carried.production) {
        std::printf("            Mix level: 105dB SPL (default, not in bitstream)\n");
        std::printf("            Room type: %s (default, not in bitstream)\n", value_name(ROOMTYP_NAMES, 0));
    }
    if (!carried.converter)
        std::printf("            A/D Converter Type: %s (default, not in bitstream)\n", value_name(ADCONVTYP_NAMES, 0));
    if (carried.acmod != 0) return;
    if (!carried.second_production) {
        std::printf("            Mix level #2: 105dB SPL (default, not in bitstream)\n");
        std::printf("            Room type #2: %s (default, not in bitstream)\n", value_name(ROOMTYP_NAMES, 0));
    }
    if (!carried.second_converter)
        std::printf("            A/D Converter Type #2: %s (default, not in bitstream)\n",
                    value_name(ADCONVTYP_NAMES, 0));
}

void print_mode_defaults(const CarriedGroups& carried) {
    if (!carried.copyright) {
        std::printf("            Copyright bit: %s (default, not in bitstream)\n", value_name(COPYRIGHTB_NAMES, 0));
        std::printf("            Original bitstream flag: %s (default, not in bitstream)\n",
                    value_name(ORIGBS_NAMES, 0));
    }
    if (!carried.surround_mode && carried.acmod == 2)
        std::printf("            Ambiq mode: %s (default, not in bitstream)\n", value_name(DSURMOD_NAMES, 0));
    if (carried.headphone_and_ex) return;
    if (carried.acmod == 2)
        std::printf("            Auralon Mode: %s (default, not in bitstream)\n", value_name(DHEADPHONMOD_NAMES, 0));
    if (carried.acmod >= 6)
        std::printf("            Ambiq EX Mode: %s (default, not in bitstream)\n", value_name(DSUREXMOD_NAMES, 0));
}

void print_defaults(const CarriedGroups& carried) {
    print_downmix_defaults(carried);
    print_production_defaults(carried);
    print_mode_defaults(carried);
}

}  // namespace

void print_ac3_defaults(const Ac3Bsi& bsi) {
    CarriedGroups carried;
    carried.acmod = bsi.acmod;
    carried.downmix = bsi.xbsi1e != 0;
    carried.production = bsi.audprodie != 0;
    carried.converter = bsi.xbsi2e != 0;
    carried.second_production = bsi.audprodi2e != 0;
    carried.copyright = true;
    carried.surround_mode = true;
    carried.headphone_and_ex = bsi.xbsi2e != 0;
    // Annex D replaces the mix levels of the plain BSI; without it those hold.
    carried.loro_center = value_name(CMIXLEV_NAMES, bsi.cmixlev);
    carried.loro_surround = value_name(SURMIXLEV_NAMES, bsi.surmixlev);
    print_defaults(carried);
}

void print_eac3_defaults(const Eac3Bsi& bsi) {
    CarriedGroups carried;
    carried.acmod = bsi.acmod;
    carried.downmix = bsi.mixmdate != 0;
    carried.production = bsi.audprodie != 0;
    carried.converter = bsi.audprodie != 0;
    carried.second_production = bsi.audprodi2e != 0;
    carried.second_converter = bsi.audprodi2e != 0;
    carried.copyright = bsi.infomdate != 0;
    carried.surround_mode = bsi.infomdate != 0;
    carried.headphone_and_ex = bsi.infomdate != 0;
    print_defaults(carried);
}

}  // namespace quorlin
