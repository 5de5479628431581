#pragma once

#include "ztpinfo/channel_locations.h"
#include "ztpinfo/timeslice.h"

namespace quorlin {

// What the rule sets share. A rule is one line: its condition and the number of its message.

constexpr uint16_t BSID_AC3 = 8;
constexpr uint16_t BSID_EAC3 = 16;
constexpr uint16_t ACMOD_DUAL_MONO = 0;
constexpr uint16_t ACMOD_MONO = 1;
constexpr uint16_t ACMOD_STEREO = 2;
constexpr uint32_t RATE_48000 = 48000;
constexpr uint32_t RATE_44100 = 44100;

inline void fail_if(ComplianceFlags& compliance, bool condition, uint32_t number) {
    if (condition) compliance.failures[number] = true;
}

inline void warn_if(ComplianceFlags& compliance, bool condition, uint32_t number) {
    if (condition) compliance.warnings[number] = true;
}

// The first program of a timeslice beside that of the one before. A D0 that is not there is a cleared frame.
struct ProgramPair {
    const ZtpProgramRecord& current;
    const ZtpProgramRecord& previous;
    const ZtpFrameInfo& i0;
    const ZtpFrameInfo& previous_i0;
    bool d0_present;
    const ZtpFrameInfo& d0;
    const ZtpFrameInfo& previous_d0;
};
ProgramPair pair_first_programs(const TimesliceRecord& timeslice, const TimesliceRecord& previous);

// The BSI of an E-AC-3 frame, for an AC-3 frame a cleared one.
const Eac3Bsi& eac3_or_cleared(const ZtpFrameInfo& frame);

bool channels_differ(const ZtpFrameInfo& a, const ZtpFrameInfo& b);
bool program_channels_differ(const ZtpProgramRecord& a, const ZtpProgramRecord& b);

// True when the program is anything but I0 alone or I0 with D0.
bool has_surplus_substreams(const ZtpProgramRecord& program);

}  // namespace quorlin
