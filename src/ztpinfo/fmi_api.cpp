#include "ztpinfo/fmi_api.h"

#include "ztpinfo/bsid_dd.h"
#include "ztpinfo/bsid_ztp.h"
#include "ztpinfo/channel_locations.h"
#include "ztpinfo/crc16.h"
#include "ztpinfo/messages.h"
#include "ztpinfo/word_cursor.h"

namespace quorlin {

namespace {

constexpr const char* SOURCE = "fmi_api";

constexpr uint32_t SAMPLE_RATES[3] = {48000, 44100, 32000};  // by fscod; 3 never gets this far
constexpr uint16_t FULL_BAND_CHANNELS[8] = {2, 1, 2, 3, 3, 4, 4, 5};

void set_common(ZtpFrameInfo& frame, const Ac3Bsi& bsi) {
    frame.bsid = bsi.bsid;
    frame.strmtyp = 0;
    frame.substreamid = 0;
    frame.fscod = bsi.fscod;
    frame.acmod = bsi.acmod;
    frame.lfeon = bsi.lfeon;
    frame.bsmod = bsi.bsmod;
    frame.chanmap = 0;
    frame.convsync = CONVSYNC_ABSENT;
    frame.double_rate = 0;
    frame.blocks_per_frame = FRAMESET_BLOCKS;
}

void set_common(ZtpFrameInfo& frame, const Eac3Bsi& bsi) {
    frame.bsid = bsi.bsid;
    frame.strmtyp = bsi.strmtyp;
    frame.substreamid = bsi.substreamid;
    frame.fscod = bsi.fscod;
    frame.acmod = bsi.acmod;
    frame.lfeon = bsi.lfeon;
    frame.bsmod = bsi.bsmod;
    frame.chanmap = bsi.chanmap;
    frame.convsync =
        bsi.strmtyp == STRMTYP_INDEPENDENT && bsi.numblkscod != NUMBLKSCOD_SIX_BLOCKS ? bsi.convsync : CONVSYNC_ABSENT;
    frame.double_rate = bsi.sourcefscod;
    frame.blocks_per_frame = eac3_blocks(bsi.numblkscod);
}

void set_derived(ZtpFrameInfo& frame, size_t frame_words) {
    frame.frame_words = static_cast<uint16_t>(frame_words);
    frame.bytes_per_frame = frame.frame_words * 2u;
    frame.sample_rate = SAMPLE_RATES[frame.fscod];
    frame.full_band_channels = FULL_BAND_CHANNELS[frame.acmod];
    frame.total_channels = static_cast<uint16_t>(frame.full_band_channels + frame.lfeon);
    frame.locations =
        static_cast<uint16_t>(ztpinfo_acmod_locations(frame.acmod) | (frame.lfeon != 0 ? CHANMAP_LFE : 0));
    const uint32_t samples = frame.blocks_per_frame * SAMPLES_PER_BLOCK;
    frame.data_rate_kbps = static_cast<float>(frame.bytes_per_frame * 8u) * static_cast<float>(frame.sample_rate) /
                           (static_cast<float>(samples) * 1000.0f);
}

CrcStatus eac3_crc_status(std::span<const uint16_t> words) {
    return crc16(0, words.subspan(1)) == 0 ? CrcStatus::NO_ERROR : CrcStatus::FULL_FRAME_ERROR;
}

// ETSI TS 102 366, 6.10.1: crc1 covers the words up to 5/8 of the frame, crc2 the whole frame.
CrcStatus ac3_crc_status(std::span<const uint16_t> words) {
    const size_t first_part = (words.size() >> 1) + (words.size() >> 3);
    if (crc16(0, words.subspan(1, first_part - 1)) != 0) return CrcStatus::FULL_FRAME_ERROR;
    return crc16(0, words.subspan(first_part)) == 0 ? CrcStatus::NO_ERROR : CrcStatus::PARTIAL_FRAME_ERROR;
}

}  // namespace

int unpack_frame(std::span<const uint16_t> words, ZtpFrameInfo& frame) {
    if (words.size() < FRAME_HEADER_WORDS) {
        report_fatal("ztp-fatal-short-frame", "Insufficient data in input frame buffer", SOURCE, __LINE__);
        return FRAME_SHORT;
    }
    const uint32_t bsid = frame_bsid(words);
    if (is_eac3_bsid(bsid)) {
        const int status = unpack_eac3_bsi(words, frame.eac3);
        if (status != 0) return status;
        set_common(frame, frame.eac3);
        frame.crc_status = eac3_crc_status(words);
    } else {
        const int status = unpack_ac3_bsi(words, frame.ac3);
        if (status != 0) return status;
        set_common(frame, frame.ac3);
        frame.crc_status = ac3_crc_status(words);
    }
    set_derived(frame, words.size());
    if (is_eac3_bsid(bsid) && frame.eac3.chanmape != 0) frame.locations = frame.chanmap;
    return 0;
}

void unpack_frame_tail(std::span<const uint16_t> words, uint32_t bsid, FrameTail& tail) {
    constexpr uint32_t AUXDATAE_FROM_END = 18;
    constexpr uint32_t AUXDATAL_FROM_END = 32;
    const uint32_t bits = static_cast<uint32_t>(words.size() * 16);
    tail.has_encinfo = false;
    tail.encinfo = 0;
    tail.auxdatae = false;
    tail.auxdatal = 0;
    tail.auxdata.clear();
    if (bits < AUXDATAL_FROM_END) return;
    WordCursor cursor{words};
    cursor.position = bits - AUXDATAE_FROM_END;
    const bool auxdatae = cursor.read(1) != 0;
    tail.has_encinfo = is_eac3_bsid(bsid);
    const uint16_t last_bit = cursor.read(1);
    if (tail.has_encinfo) tail.encinfo = last_bit;
    cursor.position = bits - AUXDATAL_FROM_END;
    const uint16_t auxdatal = cursor.read(14);
    if (!auxdatae || auxdatal > bits - AUXDATAL_FROM_END) return;
    tail.auxdatae = true;
    tail.auxdatal = auxdatal;
    cursor.position = bits - AUXDATAL_FROM_END - auxdatal;
    for (uint32_t left = auxdatal; left > 0;) {
        const uint32_t width = left < 16 ? left : 16;
        tail.auxdata.push_back(static_cast<uint16_t>(cursor.read(width) << (16 - width)));
        left -= width;
    }
}

}  // namespace quorlin
