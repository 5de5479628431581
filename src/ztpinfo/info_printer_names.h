#pragma once

#include <cstdint>
#include <span>

#include "ztpinfo/fmi_api.h"

namespace quorlin {

// The names of field values as the printer writes them, in the order of the values (ETSI TS 102 366, 4.4.2, D.2.3 and
// E.1.3.1). Every table of a field covers all of its values.

using ValueNames = std::span<const char* const>;

inline constexpr const char* STRMTYP_NAMES[] = {"Independent", "Dependent", "Transcoded", "Reserved"};
inline constexpr const char* FSCOD_NAMES[] = {"48 kHz", "44.1 kHz", "32 kHz", "Reserved"};
inline constexpr const char* SOURCEFSCOD_NAMES[] = {"fscod", "twice fscod"};
inline constexpr const char* NUMBLKSCOD_NAMES[] = {"1 block per syncframe", "2 blocks per syncframe",
                                                   "3 blocks per syncframe", "6 blocks per syncframe"};
inline constexpr const char* ACMOD_NAMES[] = {"1+1", "1/0", "2/0", "3/0", "2/1", "3/1", "2/2", "3/2"};
inline constexpr const char* ACMOD_ORDER_NAMES[] = {
    "1+1, channel ordering: ch1, ch2",     "1/0, channel ordering: C",
    "2/0, channel ordering: L, R",         "3/0, channel ordering: L, C, R",
    "2/1, channel ordering: L, R, S",      "3/1, channel ordering: L, C, R, S",
    "2/2, channel ordering: L, R, ls, rs", "3/2, channel ordering: L, C, R, ls, rs",
};
inline constexpr const char* CMIXLEV_NAMES[] = {"-3.0 dB", "-4.5 dB", "-6.0 dB", "reserved"};
inline constexpr const char* SURMIXLEV_NAMES[] = {"-3.0 dB", "-6.0 dB", "-inf dB", "reserved"};
inline constexpr const char* DSURMOD_NAMES[] = {"not indicated", "not Ambiq encoded", "Ambiq encoded", "reserved"};
inline constexpr const char* PRESENCE_NAMES[] = {"does not exist", "exists"};
inline constexpr const char* ROOMTYP_NAMES[] = {"not indicated", "large room, X curve", "small room, flat", "reserved"};
inline constexpr const char* COPYRIGHTB_NAMES[] = {"not indicated as copyrighted", "indicated as copyrighted"};
inline constexpr const char* ORIGBS_NAMES[] = {"copy of another bitstream", "original bitstream"};
inline constexpr const char* DMIXMOD_NAMES[] = {"not indicated", "Lt/Rt", "Lo/Ro", "reserved"};
// ltrtcmixlev and lorocmixlev
inline constexpr const char* CENTER_MIX_NAMES[] = {"+3.0 dB", "+1.5 dB", "0.0 dB",  "-1.5 dB",
                                                   "-3.0 dB", "-4.5 dB", "-6.0 dB", "-inf dB"};
// ltrtsurmixlev and lorosurmixlev; the missing blank of "-1.5dB" is deliberate
inline constexpr const char* SURROUND_MIX_NAMES[] = {"reserved", "reserved", "reserved", "-1.5dB",
                                                     "-3.0 dB",  "-4.5 dB",  "-6.0 dB",  "-inf dB"};
// extpgm...scl and dmixscl
inline constexpr const char* EXTPGM_CHANNEL_SCALE_NAMES[] = {
    "-1 dB",  "-2 dB",  "-3 dB",  "-4 dB",  "-5 dB",  "-6 dB",  "-8 dB",  "-10 dB",
    "-12 dB", "-14 dB", "-16 dB", "-19 dB", "-22 dB", "-25 dB", "-28 dB", "-infinity (mute)"};
inline constexpr const char* MIXDEF_NAMES[] = {"No additional bits", "5 bits reserved", "12 bits reserved",
                                               "16-264 bits reserved by mixdeflen"};
inline constexpr const char* DSUREXMOD_NAMES[] = {"not indicated", "not Ambiq EX encoded", "Ambiq EX encoded",
                                                  "reserved"};
inline constexpr const char* DHEADPHONMOD_NAMES[] = {"not indicated", "not Auralon encoded", "Auralon encoded",
                                                     "reserved"};
inline constexpr const char* ADCONVTYP_NAMES[] = {"standard", "HDCD encoded"};

// Channel locations by chanmap bit, bit 0 being the most significant one: of the listing and of the summaries.
inline constexpr const char* CHANMAP_NAMES[] = {
    "Left", "Center", "Right",        "Left Surround", "Right Surround", "Lc/Rc pair", "Lrs/Rrs pair",
    "Cs",   "Ts",     "Lsd/Rsd pair", "Lw/Rw pair",    "Lvh/Rvh pair",   "Cvh",        "Reserved",
    "LFE2", "LFE"};
inline constexpr const char* CODED_CHANNEL_NAMES[] = {"L",        "C",         "R",    "Ls",       "Rs",     "Lc, Rc",
                                                      "Lrs, Rrs", "Cs",        "Ts",   "Lsd, Rsd", "Lw, Rw", "Lvh, Rvh",
                                                      "Cvh",      "Reserved!", "LFE2", "LFE"};

// The name of `value`, or "reserved" beyond the table.
inline const char* value_name(ValueNames names, uint32_t value) {
    return value < names.size() ? names[value] : "reserved";
}

// The meaning of bsmod depends on acmod for its last code.
const char* bsmod_name(uint32_t bsmod, uint32_t acmod);

// The text of a CRC status: of a frame, a program or a whole stream.
const char* crc_status_name(CrcStatus crc_status);

}  // namespace quorlin
