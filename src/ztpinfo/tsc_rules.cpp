#include "ztpinfo/tsc_rules.h"

namespace quorlin {

namespace {

const ZtpFrameInfo& frame_or_cleared(const ZtpSubstreamRecord& substream) {
    static constexpr ZtpFrameInfo CLEARED{};
    return substream.present ? substream.frame : CLEARED;
}

}  // namespace

ProgramPair pair_first_programs(const TimesliceRecord& timeslice, const TimesliceRecord& previous) {
    const ZtpProgramRecord& now = timeslice.programs[0];
    const ZtpProgramRecord& before = previous.programs[0];
    return {now,
            before,
            frame_or_cleared(now.independent),
            frame_or_cleared(before.independent),
            now.dependent[0].present,
            frame_or_cleared(now.dependent[0]),
            frame_or_cleared(before.dependent[0])};
}

const Eac3Bsi& eac3_or_cleared(const ZtpFrameInfo& frame) {
    static constexpr Eac3Bsi CLEARED{};
    return is_eac3_bsid(frame.bsid) ? frame.eac3 : CLEARED;
}

bool channels_differ(const ZtpFrameInfo& a, const ZtpFrameInfo& b) {
    return a.full_band_channels != b.full_band_channels || a.lfeon != b.lfeon;
}

bool program_channels_differ(const ZtpProgramRecord& a, const ZtpProgramRecord& b) {
    return a.full_band_channels != b.full_band_channels || a.lfe_channels != b.lfe_channels;
}

bool has_surplus_substreams(const ZtpProgramRecord& program) {
    if (!program.independent.present) return true;
    return program.num_dep_substreams > (program.dependent[0].present ? 1 : 0);
}

}  // namespace quorlin
