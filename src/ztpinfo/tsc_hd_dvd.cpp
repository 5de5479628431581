#include "ztpinfo/tsc_hd_dvd.h"

#include "ztpinfo/tsc_generic.h"
#include "ztpinfo/tsc_rules.h"

namespace quorlin {

namespace {

constexpr uint32_t MAX_BYTES = 2016;

// Fewest bytes of a frame at 48 kHz.
uint32_t min_bytes(uint32_t blocks_per_frame) {
    switch (blocks_per_frame) {
        case 1:
            return 22;
        case 2:
            return 44;
        case 3:
            return 64;
        default:
            return 128;
    }
}

}  // namespace

void check_hd_dvd_secondary_substream(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    const Eac3Bsi& bsi = eac3_or_cleared(frame);
    fail_if(compliance, frame.bsid != BSID_EAC3, 100);
    fail_if(compliance, frame.strmtyp == STRMTYP_DEPENDENT, 101);
    fail_if(compliance, frame.strmtyp > STRMTYP_DEPENDENT, 187);
    fail_if(compliance, frame.substreamid != 0, 102);
    fail_if(compliance, frame.acmod != ACMOD_MONO && frame.acmod != ACMOD_STEREO, 105);
    fail_if(compliance, frame.sample_rate != RATE_48000, 106);
    fail_if(compliance, frame.bytes_per_frame > MAX_BYTES, 110);
    fail_if(compliance, frame.blocks_per_frame != FRAMESET_BLOCKS, 108);
    fail_if(compliance, frame.sample_rate == RATE_48000 && frame.bytes_per_frame < min_bytes(frame.blocks_per_frame),
            111);
    fail_if(compliance, bsi.pgmscle != 0, 173);
    fail_if(compliance, bsi.extpgmscle != 0, 174);
    fail_if(compliance, bsi.paninfoe != 0, 175);
    warn_if(compliance, frame.acmod == ACMOD_STEREO, 176);
    fail_if(compliance, frame.crc_status != CrcStatus::NO_ERROR, 166);
}

void check_hd_dvd_secondary_programs(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                                     const TimesliceRecord& previous) {
    const ProgramPair programs = pair_first_programs(timeslice, previous);
    check_generic_program_form(compliance, timeslice, previous);
    fail_if(compliance, programs.current.num_dep_substreams != 0, 101);
    fail_if(compliance, channels_differ(programs.i0, programs.previous_i0), 103);
    fail_if(compliance, programs.i0.acmod != programs.previous_i0.acmod, 104);
    fail_if(compliance, programs.i0.frame_words != programs.previous_i0.frame_words, 109);
}

}  // namespace quorlin
