#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

// Bit stream information as carried by a syncframe. A field that the frame does not carry is 0; whether it is there
// follows from its ...e flag or from the condition of the syntax (the has_... functions below). Every field is 16 bits
// wide so that the records have no padding and can be compared as one block.

// Values of strmtyp (ETSI TS 102 366, table E.1.1).
constexpr uint16_t STRMTYP_INDEPENDENT = 0;
constexpr uint16_t STRMTYP_DEPENDENT = 1;
constexpr uint16_t STRMTYP_TRANSCODED = 2;
constexpr uint16_t STRMTYP_RESERVED = 3;

// numblkscod of a frame of six blocks; no other value needs a name.
constexpr uint16_t NUMBLKSCOD_SIX_BLOCKS = 3;

// ETSI TS 102 366, 4.3.1 (syncinfo) and 4.3.2 (bsi); Annex D for bsid 6.
struct Ac3Bsi {
    uint16_t syncword;
    uint16_t crc1;
    uint16_t fscod;
    uint16_t frmsizecod;
    uint16_t bsid;
    uint16_t bsmod;
    uint16_t acmod;
    uint16_t cmixlev;    // has_center_mix(acmod)
    uint16_t surmixlev;  // has_surround(acmod)
    uint16_t dsurmod;    // acmod 2
    uint16_t lfeon;
    uint16_t dialnorm;
    uint16_t compre;
    uint16_t compr;
    uint16_t langcode;
    uint16_t langcod;
    uint16_t audprodie;
    uint16_t mixlevel;
    uint16_t roomtyp;
    uint16_t dialnorm2;  // acmod 0, down to roomtyp2
    uint16_t compr2e;
    uint16_t compr2;
    uint16_t langcod2e;
    uint16_t langcod2;
    uint16_t audprodi2e;
    uint16_t mixlevel2;
    uint16_t roomtyp2;
    uint16_t copyrightb;
    uint16_t origbs;
    uint16_t timecod1e;  // bsid other than 6, down to timecod2
    uint16_t timecod1;
    uint16_t timecod2e;
    uint16_t timecod2;
    uint16_t xbsi1e;  // bsid 6, down to encinfo
    uint16_t dmixmod;
    uint16_t ltrtcmixlev;
    uint16_t ltrtsurmixlev;
    uint16_t lorocmixlev;
    uint16_t lorosurmixlev;
    uint16_t xbsi2e;
    uint16_t dsurexmod;
    uint16_t dheadphonmod;
    uint16_t adconvtyp;
    uint16_t xbsi2;
    uint16_t encinfo;
    uint16_t addbsie;
    uint16_t addbsil;  // number of addbsi bytes minus 1
    std::array<uint8_t, 64> addbsi;
};

// ETSI TS 102 366, E.1.2.1 (syncinfo) and E.1.2.2 (bsi).
struct Eac3Bsi {
    uint16_t syncword;
    uint16_t strmtyp;
    uint16_t substreamid;
    uint16_t frmsiz;  // frame length in words minus 1
    uint16_t fscod;
    uint16_t numblkscod;
    uint16_t acmod;
    uint16_t lfeon;
    uint16_t bsid;
    uint16_t dialnorm;
    uint16_t compre;
    uint16_t compr;
    uint16_t dialnorm2;  // acmod 0, down to compr2
    uint16_t compr2e;
    uint16_t compr2;
    uint16_t chanmape;  // strmtyp 1
    uint16_t chanmap;
    uint16_t mixmdate;
    uint16_t dmixmod;        // mixmdate and acmod > 2
    uint16_t ltrtcmixlev;    // mixmdate and has_center_mix(acmod)
    uint16_t lorocmixlev;    // likewise
    uint16_t ltrtsurmixlev;  // mixmdate and has_surround(acmod)
    uint16_t lorosurmixlev;  // likewise
    uint16_t lfemixlevcode;  // mixmdate and lfeon
    uint16_t lfemixlevcod;
    uint16_t pgmscle;  // mixmdate and strmtyp 0, down to blkmixcfginfo
    uint16_t pgmscl;
    uint16_t pgmscl2e;  // acmod 0
    uint16_t pgmscl2;
    uint16_t extpgmscle;
    uint16_t extpgmscl;
    uint16_t mixdef;
    uint16_t mixdeflen;     // mixdef 3
    uint16_t mixdata2e;     // mixdef 3
    uint16_t premixcmpsel;  // mixdef 1, or mixdef 3 with mixdata2e; drcsrc and premixcmpscl likewise
    uint16_t drcsrc;
    uint16_t premixcmpscl;
    uint16_t mixdata;      // mixdef 2: the 12 bits
    uint16_t extpgmlscle;  // mixdef 3 with mixdata2e, down to extpgmaux2scl
    uint16_t extpgmlscl;
    uint16_t extpgmcscle;
    uint16_t extpgmcscl;
    uint16_t extpgmrscle;
    uint16_t extpgmrscl;
    uint16_t extpgmlsscle;
    uint16_t extpgmlsscl;
    uint16_t extpgmrsscle;
    uint16_t extpgmrsscl;
    uint16_t extpgmlfescle;
    uint16_t extpgmlfescl;
    uint16_t dmixscle;
    uint16_t dmixscl;
    uint16_t addche;
    uint16_t extpgmaux1scle;  // addche
    uint16_t extpgmaux1scl;
    uint16_t extpgmaux2scle;  // addche
    uint16_t extpgmaux2scl;
    uint16_t mixdata3e;  // mixdef 3, down to spchan2att
    uint16_t spchdat;
    uint16_t addspchdate;
    uint16_t spchdat1;
    uint16_t spchan1att;
    uint16_t addspchdat1e;
    uint16_t spchdat2;
    uint16_t spchan2att;
    uint16_t paninfoe;  // acmod < 2
    uint16_t panmean;
    uint16_t paninfo;
    uint16_t paninfo2e;  // acmod 0
    uint16_t panmean2;
    uint16_t paninfo2;
    uint16_t frmmixcfginfoe;
    std::array<uint16_t, 6> blkmixcfginfoe;  // frmmixcfginfoe; [0] is implied to be 1 when numblkscod is 0
    std::array<uint16_t, 6> blkmixcfginfo;
    uint16_t infomdate;
    uint16_t bsmod;  // infomdate, down to sourcefscod
    uint16_t copyrightb;
    uint16_t origbs;
    uint16_t dsurmod;       // acmod 2
    uint16_t dheadphonmod;  // acmod 2
    uint16_t dsurexmod;     // acmod >= 6
    uint16_t audprodie;
    uint16_t mixlevel;
    uint16_t roomtyp;
    uint16_t adconvtyp;
    uint16_t audprodi2e;  // acmod 0
    uint16_t mixlevel2;
    uint16_t roomtyp2;
    uint16_t adconvtyp2;
    uint16_t sourcefscod;
    uint16_t convsync;    // strmtyp 0 and numblkscod other than 3
    uint16_t blkid;       // strmtyp 2: carried when numblkscod is not 3, else implied to be 1
    uint16_t frmsizecod;  // strmtyp 2 and blkid
    uint16_t addbsie;
    uint16_t addbsil;  // number of addbsi bytes minus 1
    std::array<uint8_t, 64> addbsi;
};

static_assert(std::has_unique_object_representations_v<Ac3Bsi>);
static_assert(std::has_unique_object_representations_v<Eac3Bsi>);

// A centre channel beside left and right.
constexpr bool has_center_mix(uint32_t acmod) {
    return (acmod & 1) != 0 && acmod != 1;
}

constexpr bool has_surround(uint32_t acmod) {
    return (acmod & 4) != 0;
}

// AC-3: bsid 0 to 8 (6 is the alternate syntax of Annex D). E-AC-3 syntax: 11 to 16.
constexpr bool is_ac3_bsid(uint32_t bsid) {
    return bsid <= 8;
}

constexpr bool is_eac3_bsid(uint32_t bsid) {
    return bsid >= 11 && bsid <= 16;
}
