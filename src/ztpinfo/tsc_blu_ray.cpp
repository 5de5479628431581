#include "ztpinfo/tsc_blu_ray.h"

#include "ztpinfo/tsc_rules.h"

namespace quorlin {

namespace {

constexpr uint32_t AC3_MAX_BYTES = 2560;
constexpr uint32_t MIN_BYTES = 256;
constexpr float AC3_MAX_DATA_RATE_KBPS = 640.0f;
constexpr uint32_t D0_MAX_BYTES = 4096;
constexpr float D0_MAX_DATA_RATE_KBPS = 4736.0f;
constexpr uint32_t SECONDARY_MAX_BYTES = 1024;

void check_primary_ac3(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    fail_if(compliance, frame.bsid != BSID_ALTERNATE && frame.bsid != BSID_AC3, 119);
    fail_if(compliance, frame.substreamid != 0, 121);
    fail_if(compliance, frame.acmod == ACMOD_DUAL_MONO, 124);
    fail_if(compliance, frame.sample_rate != RATE_48000, 125);
    fail_if(compliance, frame.blocks_per_frame != FRAMESET_BLOCKS, 126);
    fail_if(compliance, frame.bytes_per_frame > AC3_MAX_BYTES || frame.data_rate_kbps > AC3_MAX_DATA_RATE_KBPS, 128);
    fail_if(compliance, frame.bytes_per_frame < MIN_BYTES, 129);
}

void check_primary_dependent(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    fail_if(compliance, frame.substreamid != 0, 189);
    fail_if(compliance, frame.total_channels != chanmap_channels(frame.chanmap, CHANMAP_PAIRS_OF_RULES), 133);
    fail_if(compliance, frame.acmod == ACMOD_DUAL_MONO, 135);
    fail_if(compliance, frame.sample_rate != RATE_48000, 136);
    fail_if(compliance, frame.blocks_per_frame != FRAMESET_BLOCKS, 138);
    fail_if(compliance, frame.bytes_per_frame > D0_MAX_BYTES || frame.data_rate_kbps > D0_MAX_DATA_RATE_KBPS, 140);
    fail_if(compliance, frame.bytes_per_frame < MIN_BYTES, 141);
}

// What both rule sets ask of a program.
void check_program_form(ComplianceFlags& compliance, const TimesliceRecord& timeslice, const ProgramPair& programs) {
    fail_if(compliance, timeslice.num_programs != 1, 113);
    fail_if(compliance, program_channels_differ(programs.current, programs.previous), 114);
    fail_if(compliance, programs.i0.sample_rate != programs.previous_i0.sample_rate, 116);
    fail_if(compliance, has_surplus_substreams(programs.current), 117);
    fail_if(compliance, programs.d0_present && programs.d0.blocks_per_frame != programs.i0.blocks_per_frame, 118);
    fail_if(compliance, programs.i0.strmtyp > STRMTYP_DEPENDENT, 188);
}

bool any_external_scale(const Eac3Bsi& bsi) {
    return (bsi.extpgmlscle | bsi.extpgmcscle | bsi.extpgmrscle | bsi.extpgmlsscle | bsi.extpgmrsscle |
            bsi.extpgmlfescle) != 0;
}

// The mixing metadata of secondary audio; what the frame does not carry is 0.
void check_secondary_mixing(ComplianceFlags& compliance, const Eac3Bsi& bsi) {
    fail_if(compliance, bsi.mixmdate != 1, 152);
    fail_if(compliance, bsi.pgmscle != 0, 153);
    fail_if(compliance, bsi.paninfoe != 0 && bsi.acmod != ACMOD_MONO, 154);
    fail_if(compliance, bsi.premixcmpsel != 0 || bsi.drcsrc != 0 || bsi.premixcmpscl != 0, 190);
    fail_if(compliance, bsi.mixdef != 0 && bsi.mixdef != 3, 191);
    warn_if(compliance, bsi.mixdef != 3 && bsi.extpgmscle == 0, 178);
    warn_if(compliance, bsi.mixdef == 3 && bsi.extpgmscle == 0 && !any_external_scale(bsi), 179);
    warn_if(compliance, bsi.extpgmlscle != 0, 181);
    warn_if(compliance, bsi.extpgmcscle != 0, 182);
    warn_if(compliance, bsi.extpgmrscle != 0, 183);
    warn_if(compliance, bsi.extpgmlsscle != 0, 184);
    warn_if(compliance, bsi.extpgmrsscle != 0, 185);
    warn_if(compliance, bsi.extpgmlfescle != 0, 186);
}

}  // namespace

void check_blu_ray_primary_substream(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    const bool dependent = frame.strmtyp == STRMTYP_DEPENDENT;
    if (is_ac3_bsid(frame.bsid)) {
        check_primary_ac3(compliance, frame);
    } else if (frame.bsid != BSID_EAC3) {
        fail_if(compliance, true, dependent ? 130 : 119);
    } else if (dependent) {
        check_primary_dependent(compliance, frame);
    } else {
        fail_if(compliance, true, 117);
        fail_if(compliance, frame.substreamid != 0, 121);
    }
    fail_if(compliance, frame.crc_status != CrcStatus::NO_ERROR, 166);
}

void check_blu_ray_primary_programs(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                                    const TimesliceRecord& previous) {
    const ProgramPair programs = pair_first_programs(timeslice, previous);
    check_program_form(compliance, timeslice, programs);
    fail_if(compliance, programs.current.num_dep_substreams != programs.previous.num_dep_substreams, 120);
    fail_if(compliance, channels_differ(programs.i0, programs.previous_i0), 122);
    fail_if(compliance, programs.i0.acmod != programs.previous_i0.acmod, 123);
    fail_if(compliance, programs.i0.frame_words != programs.previous_i0.frame_words, 127);
    if (!programs.d0_present) return;
    fail_if(compliance, channels_differ(programs.d0, programs.previous_d0), 131);
    fail_if(compliance, programs.d0.chanmap != programs.previous_d0.chanmap, 132);
    fail_if(compliance, programs.d0.acmod != programs.previous_d0.acmod, 134);
    fail_if(compliance, programs.d0.frame_words != programs.previous_d0.frame_words, 139);
}

void check_blu_ray_secondary_substream(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    fail_if(compliance, frame.bsid != BSID_EAC3, 142);
    fail_if(compliance, frame.strmtyp == STRMTYP_DEPENDENT, 177);
    fail_if(compliance, frame.strmtyp > STRMTYP_DEPENDENT, 188);
    fail_if(compliance, frame.substreamid != 0, 143);
    fail_if(compliance, frame.acmod == ACMOD_DUAL_MONO, 146);
    fail_if(compliance, frame.sample_rate != RATE_48000, 147);
    fail_if(compliance, frame.blocks_per_frame != FRAMESET_BLOCKS, 149);
    fail_if(compliance, frame.bytes_per_frame > SECONDARY_MAX_BYTES, 151);
    check_secondary_mixing(compliance, eac3_or_cleared(frame));
    warn_if(compliance, frame.acmod != ACMOD_MONO, 180);
    fail_if(compliance, frame.crc_status != CrcStatus::NO_ERROR, 166);
}

void check_blu_ray_secondary_programs(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                                      const TimesliceRecord& previous) {
    const ProgramPair programs = pair_first_programs(timeslice, previous);
    check_program_form(compliance, timeslice, programs);
    fail_if(compliance, channels_differ(programs.i0, programs.previous_i0), 144);
    fail_if(compliance, programs.i0.acmod != programs.previous_i0.acmod, 145);
    fail_if(compliance, programs.current.num_dep_substreams != 0, 177);
}

}  // namespace quorlin
