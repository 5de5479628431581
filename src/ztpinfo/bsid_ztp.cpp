#include "ztpinfo/bsid_ztp.h"

#include "ztpinfo/bsid_dd.h"
#include "ztpinfo/messages.h"
#include "ztpinfo/word_cursor.h"

namespace quorlin {

namespace {

constexpr const char* SOURCE = "bsid_ztp";

void read_premix(WordCursor& cursor, Eac3Bsi& bsi) {
    bsi.premixcmpsel = cursor.read(1);
    bsi.drcsrc = cursor.read(1);
    bsi.premixcmpscl = cursor.read(3);
}

// A scale factor after its presence flag.
void read_scale(WordCursor& cursor, uint16_t& present, uint16_t& scale) {
    present = cursor.read(1);
    if (present != 0) scale = cursor.read(4);
}

void read_external_scales(WordCursor& cursor, Eac3Bsi& bsi) {
    read_premix(cursor, bsi);
    read_scale(cursor, bsi.extpgmlscle, bsi.extpgmlscl);
    read_scale(cursor, bsi.extpgmcscle, bsi.extpgmcscl);
    read_scale(cursor, bsi.extpgmrscle, bsi.extpgmrscl);
    read_scale(cursor, bsi.extpgmlsscle, bsi.extpgmlsscl);
    read_scale(cursor, bsi.extpgmrsscle, bsi.extpgmrsscl);
    read_scale(cursor, bsi.extpgmlfescle, bsi.extpgmlfescl);
    read_scale(cursor, bsi.dmixscle, bsi.dmixscl);
    bsi.addche = cursor.read(1);
    if (bsi.addche != 0) {
        read_scale(cursor, bsi.extpgmaux1scle, bsi.extpgmaux1scl);
        read_scale(cursor, bsi.extpgmaux2scle, bsi.extpgmaux2scl);
    }
}

void read_speech_data(WordCursor& cursor, Eac3Bsi& bsi) {
    bsi.spchdat = cursor.read(5);
    bsi.addspchdate = cursor.read(1);
    if (bsi.addspchdate != 0) {
        bsi.spchdat1 = cursor.read(5);
        bsi.spchan1att = cursor.read(2);
        bsi.addspchdat1e = cursor.read(1);
        if (bsi.addspchdat1e != 0) {
            bsi.spchdat2 = cursor.read(5);
            bsi.spchan2att = cursor.read(3);
        }
    }
}

// The mixing parameter field after mixdeflen. Its length counts from its own first bit, whatever its parts take.
void read_mixing_parameters(WordCursor& cursor, Eac3Bsi& bsi) {
    bsi.mixdeflen = cursor.read(5);
    const uint32_t end = cursor.position + 8 * (bsi.mixdeflen + 2u);
    bsi.mixdata2e = cursor.read(1);
    if (bsi.mixdata2e != 0) read_external_scales(cursor, bsi);
    bsi.mixdata3e = cursor.read(1);
    if (bsi.mixdata3e != 0) read_speech_data(cursor, bsi);
    cursor.position = end;
}

void read_pan(WordCursor& cursor, uint16_t& present, uint16_t& mean, uint16_t& info) {
    present = cursor.read(1);
    if (present != 0) {
        mean = cursor.read(8);
        info = cursor.read(6);
    }
}

void read_block_mixing(WordCursor& cursor, Eac3Bsi& bsi) {
    const uint32_t blocks = eac3_blocks(bsi.numblkscod);
    for (uint32_t block = 0; block < blocks; ++block) {
        bsi.blkmixcfginfoe[block] = bsi.numblkscod == 0 ? uint16_t{1} : cursor.read(1);
        if (bsi.blkmixcfginfoe[block] != 0) bsi.blkmixcfginfo[block] = cursor.read(5);
    }
}

// The part of the mixing metadata that only independent substreams carry.
void read_program_mixing(WordCursor& cursor, Eac3Bsi& bsi) {
    bsi.pgmscle = cursor.read(1);
    if (bsi.pgmscle != 0) bsi.pgmscl = cursor.read(6);
    if (bsi.acmod == 0) {
        bsi.pgmscl2e = cursor.read(1);
        if (bsi.pgmscl2e != 0) bsi.pgmscl2 = cursor.read(6);
    }
    bsi.extpgmscle = cursor.read(1);
    if (bsi.extpgmscle != 0) bsi.extpgmscl = cursor.read(6);
    bsi.mixdef = cursor.read(2);
    if (bsi.mixdef == 1) read_premix(cursor, bsi);
    if (bsi.mixdef == 2) bsi.mixdata = cursor.read(12);
    if (bsi.mixdef == 3) read_mixing_parameters(cursor, bsi);
    if (bsi.acmod < 2) read_pan(cursor, bsi.paninfoe, bsi.panmean, bsi.paninfo);
    if (bsi.acmod == 0) read_pan(cursor, bsi.paninfo2e, bsi.panmean2, bsi.paninfo2);
    bsi.frmmixcfginfoe = cursor.read(1);
    if (bsi.frmmixcfginfoe != 0) read_block_mixing(cursor, bsi);
}

void read_mixing_metadata(WordCursor& cursor, Eac3Bsi& bsi) {
    if (bsi.acmod > 2) bsi.dmixmod = cursor.read(2);
    if (has_center_mix(bsi.acmod)) {
        bsi.ltrtcmixlev = cursor.read(3);
        bsi.lorocmixlev = cursor.read(3);
    }
    if (has_surround(bsi.acmod)) {
        bsi.ltrtsurmixlev = cursor.read(3);
        bsi.lorosurmixlev = cursor.read(3);
    }
    if (bsi.lfeon != 0) {
        bsi.lfemixlevcode = cursor.read(1);
        if (bsi.lfemixlevcode != 0) bsi.lfemixlevcod = cursor.read(5);
    }
    if (bsi.strmtyp == STRMTYP_INDEPENDENT) read_program_mixing(cursor, bsi);
}

void read_informational_metadata(WordCursor& cursor, Eac3Bsi& bsi) {
    bsi.bsmod = cursor.read(3);
    bsi.copyrightb = cursor.read(1);
    bsi.origbs = cursor.read(1);
    if (bsi.acmod == 2) {
        bsi.dsurmod = cursor.read(2);
        bsi.dheadphonmod = cursor.read(2);
    }
    if (bsi.acmod >= 6) bsi.dsurexmod = cursor.read(2);
    bsi.audprodie = cursor.read(1);
    if (bsi.audprodie != 0) {
        bsi.mixlevel = cursor.read(5);
        bsi.roomtyp = cursor.read(2);
        bsi.adconvtyp = cursor.read(1);
    }
    if (bsi.acmod == 0) {
        bsi.audprodi2e = cursor.read(1);
        if (bsi.audprodi2e != 0) {
            bsi.mixlevel2 = cursor.read(5);
            bsi.roomtyp2 = cursor.read(2);
            bsi.adconvtyp2 = cursor.read(1);
        }
    }
    if (bsi.fscod < 3) bsi.sourcefscod = cursor.read(1);
}

// The fields that tie a substream to AC-3 frames: a converter's alignment, or the frame that was transcoded.
void read_conversion_fields(WordCursor& cursor, Eac3Bsi& bsi) {
    if (bsi.strmtyp == STRMTYP_INDEPENDENT && bsi.numblkscod != NUMBLKSCOD_SIX_BLOCKS) bsi.convsync = cursor.read(1);
    if (bsi.strmtyp == STRMTYP_TRANSCODED) {
        bsi.blkid = bsi.numblkscod == NUMBLKSCOD_SIX_BLOCKS ? uint16_t{1} : cursor.read(1);
        if (bsi.blkid != 0) bsi.frmsizecod = cursor.read(6);
    }
}

// syncinfo and the start of bsi, up to bsid.
int read_start(WordCursor& cursor, Eac3Bsi& bsi) {
    bsi.syncword = cursor.read(16);
    if (bsi.syncword != FRAME_SYNCWORD) {
        report_fatal("ztp-fatal-sync-word", "Invalid synchronization word", SOURCE, __LINE__);
        return FRAME_BAD_SYNC;
    }
    const Eac3FrameStart start = eac3_frame_start(cursor.read(16));
    bsi.strmtyp = start.strmtyp;
    bsi.substreamid = start.substreamid;
    bsi.frmsiz = start.frmsiz;
    bsi.fscod = cursor.read(2);
    if (bsi.fscod == 3) {
        // The reduced sample rates (fscod2) are refused, deliberately.
        report_fatal("ztp-fatal-half-rate", "Half sample rate unsupported", SOURCE, __LINE__);
        return FRAME_HALF_RATE;
    }
    bsi.numblkscod = cursor.read(2);
    bsi.acmod = cursor.read(3);
    bsi.lfeon = cursor.read(1);
    bsi.bsid = cursor.read(5);
    if (!is_eac3_bsid(bsi.bsid)) {
        report_fatal("ztp-fatal-bsid", "Unsupported bitstream id", SOURCE, __LINE__);
        return FRAME_BAD_BSID;
    }
    return 0;
}

int unpack_ac3_frame_words(WordCursor& cursor, uint32_t& frame_words) {
    cursor.skip(32);  // syncword, crc1
    const uint32_t fscod = cursor.read(2);
    if (fscod == 3) {
        report_fatal("ztp-fatal-sample-rate", "Invalid sampling rate code", SOURCE, __LINE__);
        return FRAME_BAD_SAMPLE_RATE;
    }
    const uint32_t frmsizecod = cursor.read(6);
    frame_words = ac3_frame_words(fscod, frmsizecod);
    if (frame_words == 0) {
        report_fatal("ztp-fatal-frame-size", "Invalid frame size code", SOURCE, __LINE__);
        return FRAME_BAD_SIZE;
    }
    return 0;
}

}  // namespace

uint16_t eac3_blocks(uint32_t numblkscod) {
    return static_cast<uint16_t>(numblkscod < NUMBLKSCOD_SIX_BLOCKS ? numblkscod + 1 : FRAMESET_BLOCKS);
}

int unpack_frame_words(std::span<const uint16_t> words, uint32_t& frame_words) {
    const uint32_t bsid = frame_bsid(words);
    WordCursor cursor{words};
    if (is_ac3_bsid(bsid)) return unpack_ac3_frame_words(cursor, frame_words);
    if (!is_eac3_bsid(bsid)) {
        report_fatal("ztp-fatal-bsid", "Unsupported bitstream id", SOURCE, __LINE__);
        return FRAME_BAD_BSID;
    }
    frame_words = eac3_frame_words(eac3_frame_start(words[1]).frmsiz);
    return 0;
}

// ETSI TS 102 366, E.1.2.1 and E.1.2.2.
int unpack_eac3_bsi(std::span<const uint16_t> words, Eac3Bsi& bsi) {
    WordCursor cursor{words};
    bsi = {};
    const int status = read_start(cursor, bsi);
    if (status != 0) return status;
    bsi.dialnorm = cursor.read(5);
    bsi.compre = cursor.read(1);
    if (bsi.compre != 0) bsi.compr = cursor.read(8);
    if (bsi.acmod == 0) {
        bsi.dialnorm2 = cursor.read(5);
        bsi.compr2e = cursor.read(1);
        if (bsi.compr2e != 0) bsi.compr2 = cursor.read(8);
    }
    if (bsi.strmtyp == STRMTYP_DEPENDENT) {
        bsi.chanmape = cursor.read(1);
        if (bsi.chanmape != 0) bsi.chanmap = cursor.read(16);
    }
    bsi.mixmdate = cursor.read(1);
    if (bsi.mixmdate != 0) read_mixing_metadata(cursor, bsi);
    bsi.infomdate = cursor.read(1);
    if (bsi.infomdate != 0) read_informational_metadata(cursor, bsi);
    read_conversion_fields(cursor, bsi);
    bsi.addbsie = cursor.read(1);
    if (bsi.addbsie != 0) {
        bsi.addbsil = cursor.read(6);
        for (uint32_t i = 0; i <= bsi.addbsil; ++i) bsi.addbsi[i] = static_cast<uint8_t>(cursor.read(8));
    }
    return 0;
}

}  // namespace quorlin
