#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

#include "ztpinfo/syncframe.h"
#include "ztpinfo/ztpinfo.h"

namespace quorlin {

// Bit stream information as carried by a syncframe. A field that the frame does not carry is 0; whether it is there
// follows from its ...e flag or from the condition of the syntax (the has_... functions below). Every field is 16 bits
// wide so that the records have no padding and can be compared as one block.

// Codes of the fatal errors in a frame.
enum FrameError : int {
    FRAME_SHORT = 1,
    FRAME_BAD_SYNC = 1537,
    FRAME_BAD_SAMPLE_RATE = 1538,
    FRAME_BAD_SIZE = 1539,
    FRAME_BAD_BSID = 1540,
    FRAME_HALF_RATE = 1541,
};

// Words of a frame that unpack_frame_words looks at.
constexpr uint32_t FRAME_HEADER_WORDS = 3;

// Longest frame: frmsiz is an 11-bit field.
constexpr uint32_t MAX_FRAME_WORDS = 2048;

// Samples of each channel in an audio block, and the blocks of a frameset: as many as an AC-3 frame holds.
constexpr uint32_t SAMPLES_PER_BLOCK = 256;
constexpr uint32_t FRAMESET_BLOCKS = 6;

// bsid of AC-3 frames with the alternate syntax of Annex D.
constexpr uint16_t BSID_ALTERNATE = 6;

// numblkscod of a frame of six blocks; no other value needs a name.
constexpr uint16_t NUMBLKSCOD_SIX_BLOCKS = 3;

// ETSI TS 102 366, 4.3.1 (syncinfo) and 4.3.2 (bsi); Annex D for bsid 6.
struct Ac3Bsi {
    uint16_t syncword = 0;
    uint16_t crc1 = 0;
    uint16_t fscod = 0;
    uint16_t frmsizecod = 0;
    uint16_t bsid = 0;
    uint16_t bsmod = 0;
    uint16_t acmod = 0;
    uint16_t cmixlev = 0;    // has_center_mix(acmod)
    uint16_t surmixlev = 0;  // has_surround(acmod)
    uint16_t dsurmod = 0;    // acmod 2
    uint16_t lfeon = 0;
    uint16_t dialnorm = 0;
    uint16_t compre = 0;
    uint16_t compr = 0;
    uint16_t langcode = 0;
    uint16_t langcod = 0;
    uint16_t audprodie = 0;
    uint16_t mixlevel = 0;
    uint16_t roomtyp = 0;
    uint16_t dialnorm2 = 0;  // acmod 0, down to roomtyp2
    uint16_t compr2e = 0;
    uint16_t compr2 = 0;
    uint16_t langcod2e = 0;
    uint16_t langcod2 = 0;
    uint16_t audprodi2e = 0;
    uint16_t mixlevel2 = 0;
    uint16_t roomtyp2 = 0;
    uint16_t copyrightb = 0;
    uint16_t origbs = 0;
    uint16_t timecod1e = 0;  // bsid other than 6, down to timecod2
    uint16_t timecod1 = 0;
    uint16_t timecod2e = 0;
    uint16_t timecod2 = 0;
    uint16_t xbsi1e = 0;  // bsid 6, down to encinfo
    uint16_t dmixmod = 0;
    uint16_t ltrtcmixlev = 0;
    uint16_t ltrtsurmixlev = 0;
    uint16_t lorocmixlev = 0;
    uint16_t lorosurmixlev = 0;
    uint16_t xbsi2e = 0;
    uint16_t dsurexmod = 0;
    uint16_t dheadphonmod = 0;
    uint16_t adconvtyp = 0;
    uint16_t xbsi2 = 0;
    uint16_t encinfo = 0;
    uint16_t addbsie = 0;
    uint16_t addbsil = 0;  // number of addbsi bytes minus 1
    std::array<uint8_t, ZTP_MAX_ADDBSI_BYTES> addbsi{};
};

// ETSI TS 102 366, E.1.2.1 (syncinfo) and E.1.2.2 (bsi).
struct Eac3Bsi {
    uint16_t syncword = 0;
    uint16_t strmtyp = 0;
    uint16_t substreamid = 0;
    uint16_t frmsiz = 0;  // frame length in words minus 1
    uint16_t fscod = 0;
    uint16_t numblkscod = 0;
    uint16_t acmod = 0;
    uint16_t lfeon = 0;
    uint16_t bsid = 0;
    uint16_t dialnorm = 0;
    uint16_t compre = 0;
    uint16_t compr = 0;
    uint16_t dialnorm2 = 0;  // acmod 0, down to compr2
    uint16_t compr2e = 0;
    uint16_t compr2 = 0;
    uint16_t chanmape = 0;  // strmtyp 1
    uint16_t chanmap = 0;
    uint16_t mixmdate = 0;
    uint16_t dmixmod = 0;        // mixmdate and acmod > 2
    uint16_t ltrtcmixlev = 0;    // mixmdate and has_center_mix(acmod)
    uint16_t lorocmixlev = 0;    // likewise
    uint16_t ltrtsurmixlev = 0;  // mixmdate and has_surround(acmod)
    uint16_t lorosurmixlev = 0;  // likewise
    uint16_t lfemixlevcode = 0;  // mixmdate and lfeon
    uint16_t lfemixlevcod = 0;
    uint16_t pgmscle = 0;  // mixmdate and strmtyp 0, down to blkmixcfginfo
    uint16_t pgmscl = 0;
    uint16_t pgmscl2e = 0;  // acmod 0
    uint16_t pgmscl2 = 0;
    uint16_t extpgmscle = 0;
    uint16_t extpgmscl = 0;
    uint16_t mixdef = 0;
    uint16_t mixdeflen = 0;     // mixdef 3
    uint16_t mixdata2e = 0;     // mixdef 3
    uint16_t premixcmpsel = 0;  // mixdef 1, or mixdef 3 with mixdata2e; drcsrc and premixcmpscl likewise
    uint16_t drcsrc = 0;
    uint16_t premixcmpscl = 0;
    uint16_t mixdata = 0;      // mixdef 2: the 12 bits
    uint16_t extpgmlscle = 0;  // mixdef 3 with mixdata2e, down to extpgmaux2scl
    uint16_t extpgmlscl = 0;
    uint16_t extpgmcscle = 0;
    uint16_t extpgmcscl = 0;
    uint16_t extpgmrscle = 0;
    uint16_t extpgmrscl = 0;
    uint16_t extpgmlsscle = 0;
    uint16_t extpgmlsscl = 0;
    uint16_t extpgmrsscle = 0;
    uint16_t extpgmrsscl = 0;
    uint16_t extpgmlfescle = 0;
    uint16_t extpgmlfescl = 0;
    uint16_t dmixscle = 0;
    uint16_t dmixscl = 0;
    uint16_t addche = 0;
    uint16_t extpgmaux1scle = 0;  // addche
    uint16_t extpgmaux1scl = 0;
    uint16_t extpgmaux2scle = 0;  // addche
    uint16_t extpgmaux2scl = 0;
    uint16_t mixdata3e = 0;  // mixdef 3, down to spchan2att
    uint16_t spchdat = 0;
    uint16_t addspchdate = 0;
    uint16_t spchdat1 = 0;
    uint16_t spchan1att = 0;
    uint16_t addspchdat1e = 0;
    uint16_t spchdat2 = 0;
    uint16_t spchan2att = 0;
    uint16_t paninfoe = 0;  // acmod < 2
    uint16_t panmean = 0;
    uint16_t paninfo = 0;
    uint16_t paninfo2e = 0;  // acmod 0
    uint16_t panmean2 = 0;
    uint16_t paninfo2 = 0;
    uint16_t frmmixcfginfoe = 0;
    std::array<uint16_t, 6> blkmixcfginfoe{};  // frmmixcfginfoe; [0] is implied to be 1 when numblkscod is 0
    std::array<uint16_t, 6> blkmixcfginfo{};
    uint16_t infomdate = 0;
    uint16_t bsmod = 0;  // infomdate, down to sourcefscod
    uint16_t copyrightb = 0;
    uint16_t origbs = 0;
    uint16_t dsurmod = 0;       // acmod 2
    uint16_t dheadphonmod = 0;  // acmod 2
    uint16_t dsurexmod = 0;     // acmod >= 6
    uint16_t audprodie = 0;
    uint16_t mixlevel = 0;
    uint16_t roomtyp = 0;
    uint16_t adconvtyp = 0;
    uint16_t audprodi2e = 0;  // acmod 0
    uint16_t mixlevel2 = 0;
    uint16_t roomtyp2 = 0;
    uint16_t adconvtyp2 = 0;
    uint16_t sourcefscod = 0;
    uint16_t convsync = 0;    // strmtyp 0 and numblkscod other than 3
    uint16_t blkid = 0;       // strmtyp 2: carried when numblkscod is not 3, else implied to be 1
    uint16_t frmsizecod = 0;  // strmtyp 2 and blkid
    uint16_t addbsie = 0;
    uint16_t addbsil = 0;  // number of addbsi bytes minus 1
    std::array<uint8_t, ZTP_MAX_ADDBSI_BYTES> addbsi{};
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

}  // namespace quorlin
