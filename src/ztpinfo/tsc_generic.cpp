#include "ztpinfo/tsc_generic.h"

#include "ztpinfo/tsc_rules.h"

namespace quorlin {

namespace {

constexpr float MAX_DATA_RATE_KBPS = 3024.0f;

// bsid 12 is accepted beside 16, deliberately, though the messages name 16 alone.
bool is_accepted_bsid(uint32_t bsid) {
    return bsid == 12 || bsid == BSID_EAC3;
}

// Returns false when the bsid is not accepted.
bool check_bsid(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    if (is_accepted_bsid(frame.bsid)) return true;
    fail_if(compliance, true, frame.strmtyp == STRMTYP_INDEPENDENT ? 68 : 84);
    return false;
}

void check_independent(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    fail_if(compliance, frame.substreamid > 3, 70);
    fail_if(compliance, frame.acmod == ACMOD_DUAL_MONO, 73);
    fail_if(compliance, frame.sample_rate != RATE_48000, 74);
}

void check_dependent(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    fail_if(compliance, frame.substreamid != 0, 85);
    fail_if(compliance, frame.total_channels != chanmap_channels(frame.chanmap, CHANMAP_PAIRS_OF_RULES), 88);
    fail_if(compliance, frame.acmod == ACMOD_DUAL_MONO, 90);
    fail_if(compliance, frame.sample_rate != RATE_48000, 91);
}

// The converter sync flag begins a frameset; the counter tells the frames since the last one.
void check_convsync(ComplianceFlags& compliance, const ProgramPair& programs) {
    const uint32_t counter = programs.current.independent.convsync_counter;
    const uint32_t frameset_frames = FRAMESET_BLOCKS / programs.previous_i0.blocks_per_frame;
    if (programs.i0.convsync == 0) {
        fail_if(compliance, counter == CONVSYNC_ABSENT, 170);
        fail_if(compliance, counter >= frameset_frames, 171);
        return;
    }
    if (counter == frameset_frames || counter == CONVSYNC_ABSENT) return;
    const uint32_t blocks = programs.i0.blocks_per_frame;
    fail_if(compliance, true, blocks == 3 ? 81 : blocks == 2 ? 82 : blocks == 1 ? 83 : 169);
}

void check_i0(ComplianceFlags& compliance, const ProgramPair& programs) {
    const ZtpFrameInfo& i0 = programs.i0;
    const ZtpFrameInfo& before = programs.previous_i0;
    fail_if(compliance, programs.current.num_dep_substreams != programs.previous.num_dep_substreams, 69);
    fail_if(compliance, channels_differ(i0, before), 71);
    fail_if(compliance, i0.acmod != before.acmod, 72);
    fail_if(compliance, i0.blocks_per_frame != before.blocks_per_frame, 76);
    // Frames of 44.1 kHz alternate between two lengths.
    fail_if(compliance, i0.frame_words != before.frame_words && i0.sample_rate != RATE_44100, 77);
    check_convsync(compliance, programs);
}

void check_d0(ComplianceFlags& compliance, const ProgramPair& programs) {
    if (!programs.d0_present) return;
    const ZtpFrameInfo& d0 = programs.d0;
    const ZtpFrameInfo& before = programs.previous_d0;
    fail_if(compliance, d0.blocks_per_frame != programs.i0.blocks_per_frame, 95);
    fail_if(compliance, d0.sample_rate != programs.i0.sample_rate || d0.double_rate != programs.i0.double_rate, 93);
    fail_if(compliance, channels_differ(d0, before), 86);
    fail_if(compliance, d0.chanmap != before.chanmap, 87);
    fail_if(compliance, d0.acmod != before.acmod, 89);
    fail_if(compliance, d0.blocks_per_frame != before.blocks_per_frame, 94);
}

}  // namespace

void check_generic_substream(ComplianceFlags& compliance, const ZtpFrameInfo& frame) {
    if (!check_bsid(compliance, frame)) return;
    if (frame.strmtyp == STRMTYP_INDEPENDENT) check_independent(compliance, frame);
    if (frame.strmtyp == STRMTYP_DEPENDENT) check_dependent(compliance, frame);
    fail_if(compliance, frame.strmtyp > STRMTYP_DEPENDENT, 187);
    fail_if(compliance, frame.crc_status != CrcStatus::NO_ERROR, 166);
}

bool check_generic_program_form(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                                const TimesliceRecord& previous) {
    const ProgramPair programs = pair_first_programs(timeslice, previous);
    const ZtpProgramRecord& program = programs.current;
    fail_if(compliance, timeslice.num_programs != previous.num_programs, 61);
    // Beyond the number of programs only the first one is looked at, deliberately.
    if (!check_bsid(compliance, programs.i0)) return false;
    fail_if(compliance, programs.i0.strmtyp > STRMTYP_DEPENDENT, 187);
    fail_if(compliance, program_channels_differ(program, programs.previous), 62);
    fail_if(compliance, program.words_between_syncs != programs.previous.words_between_syncs, 63);
    fail_if(compliance, programs.i0.sample_rate != programs.previous_i0.sample_rate, 64);
    fail_if(compliance, has_surplus_substreams(program), 65);
    fail_if(compliance, program.data_rate_kbps > MAX_DATA_RATE_KBPS, 67);
    fail_if(compliance, programs.d0_present && programs.d0.blocks_per_frame != programs.i0.blocks_per_frame, 66);
    return true;
}

void check_generic_programs(ComplianceFlags& compliance, const TimesliceRecord& timeslice,
                            const TimesliceRecord& previous) {
    if (!check_generic_program_form(compliance, timeslice, previous)) return;
    const ProgramPair programs = pair_first_programs(timeslice, previous);
    check_i0(compliance, programs);
    check_d0(compliance, programs);
}

void check_generic_end_of_data(ComplianceFlags& compliance, const TimesliceRecord& timeslice) {
    const ZtpSubstreamRecord& i0 = timeslice.programs[0].independent;
    if (!is_accepted_bsid(i0.frame.bsid)) return;
    const uint32_t blocks = i0.frame.blocks_per_frame;
    if (blocks == FRAMESET_BLOCKS) return;
    fail_if(compliance, i0.convsync_counter != FRAMESET_BLOCKS / blocks - 1, 172);
}

}  // namespace quorlin
