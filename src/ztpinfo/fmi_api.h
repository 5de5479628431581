#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "ztpinfo/bsi.h"

namespace quorlin {

// Frame information: a syncframe of either format, unpacked.

// Result of the CRC check of a frame.
enum class CrcStatus : uint8_t {
    NO_ERROR = 0,
    FULL_FRAME_ERROR = 1,     // E-AC-3: the frame; AC-3: its first 5/8
    PARTIAL_FRAME_ERROR = 2,  // AC-3: only the part after the first 5/8
};

// Value of `convsync` for a frame that does not carry the field.
constexpr uint16_t CONVSYNC_ABSENT = 65535;

// One unpacked syncframe: what both formats have in common, values derived from it, and the complete BSI.
struct ZtpFrameInfo {
    uint16_t bsid = 0;
    uint16_t strmtyp = 0;      // AC-3: 0
    uint16_t substreamid = 0;  // AC-3: 0
    uint16_t fscod = 0;
    uint16_t acmod = 0;
    uint16_t lfeon = 0;
    uint16_t bsmod = 0;                   // E-AC-3 without informational metadata: 0
    uint16_t chanmap = 0;                 // as carried by a dependent substream, else 0
    uint16_t convsync = CONVSYNC_ABSENT;  // 0 or 1 when the frame carries the field
    uint16_t double_rate = 0;             // sourcefscod: the source had twice the sample rate
    CrcStatus crc_status = CrcStatus::NO_ERROR;
    uint16_t frame_words = 0;
    uint32_t bytes_per_frame = 0;
    uint32_t sample_rate = 0;  // Hz
    uint16_t blocks_per_frame = 0;
    uint16_t full_band_channels = 0;
    uint16_t total_channels = 0;  // with LFE
    uint16_t locations = 0;       // chanmap form: from the chanmap when there is one, else from acmod and lfeon
    float data_rate_kbps = 0;
    Eac3Bsi eac3{};  // filled when is_eac3_bsid(bsid)
    Ac3Bsi ac3{};    // filled when is_ac3_bsid(bsid)
};

// What stands at the end of a frame, read from its end (ETSI TS 102 366, 4.3.4 and 4.3.5, E.1.2.5).
struct FrameTail {
    bool has_encinfo = false;  // E-AC-3 frames have the bit
    uint16_t encinfo = 0;
    bool auxdatae = false;
    uint16_t auxdatal = 0;          // auxiliary data bits
    std::vector<uint16_t> auxdata;  // the bits from the first word's top on, the last word filled up with zeros
};

// Unpacks the frame in `words` (host order, the whole frame) into `frame` and checks its CRC. Returns 0, or the code of
// the fatal error that was reported: frames shorter than their header are refused, among others.
[[nodiscard]] int unpack_frame(std::span<const uint16_t> words, ZtpFrameInfo& frame);

// Auxiliary data and encoder information of the frame in `words`. An auxdatal that reaches beyond the frame's begin
// counts as no auxiliary data.
void unpack_frame_tail(std::span<const uint16_t> words, uint32_t bsid, FrameTail& tail);

}  // namespace quorlin
