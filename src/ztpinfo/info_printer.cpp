#include "ztpinfo/info_printer.h"

#include <cinttypes>
#include <cstdio>

#include "ztpinfo/info_printer_bsi.h"
#include "ztpinfo/info_printer_lines.h"
#include "ztpinfo/info_printer_substream.h"

namespace quorlin {

namespace {

void print_program_summary(const ZtpProgramRecord& program) {
    const char* end = line_end(program.crc_status);
    std::printf("    Combined data rate: %2.1f kbps%s", program.data_rate_kbps, end);
    std::printf("    Number of dependent substreams: %d%s", program.num_dep_substreams, end);
    std::printf("    Number of 16b words between sync frames (+/-1): %" PRIu32 "%s", program.words_between_syncs, end);
    std::printf("    Number of coded channels: %d.%d%s", program.full_band_channels, program.lfe_channels, end);
    std::printf("    Program status: %s%s", crc_status_name(program.crc_status), end);
    std::printf("\n    Coded channels present: ");
    print_locations(program.locations, CODED_CHANNEL_NAMES);
    std::fputs(end, stdout);
}

void print_substream_details(const ZtpFrameInfo& frame, const FrameTail* tail, uint16_t options) {
    if ((options & ZTP_OPTION_BSI) != 0) print_bsi_listing(frame);
    if ((options & ZTP_OPTION_AUXDATA) != 0) print_auxdata(frame, tail);
    if ((options & ZTP_OPTION_ENCODER_INFO) != 0) print_encoder_info(frame, tail);
}

void print_program(const ZtpProgramRecord& program, const ProgramTails* tails, uint16_t options) {
    if ((options & ZTP_OPTION_PROGRAMS) != 0) print_program_summary(program);
    if ((options & ZTP_OPTION_INDEPENDENT) != 0) {
        std::printf("        INDEPENDENT SUBSTREAM INFORMATION:\n");
        print_substream_summary(program.independent.frame);
    }
    print_substream_details(program.independent.frame, tails != nullptr ? &tails->independent : nullptr, options);
    for (size_t id = 0; id < program.dependent.size(); ++id) {
        const ZtpSubstreamRecord& substream = program.dependent[id];
        if (!substream.present) continue;
        if ((options & ZTP_OPTION_DEPENDENT) != 0) {
            std::printf("        DEPENDENT SUBSTREAM %d INFORMATION:\n", static_cast<int>(id));
            print_substream_summary(substream.frame);
        }
        print_substream_details(substream.frame, tails != nullptr ? &tails->dependent[id] : nullptr, options);
    }
}

}  // namespace

void print_timeslice(const TimesliceRecord& timeslice, const TimesliceTails* tails, uint16_t options) {
    for (size_t i = 0; i < timeslice.program_slots; ++i) {
        const ZtpProgramRecord& program = timeslice.programs[i];
        if (program.independent.present) print_program(program, tails != nullptr ? &(*tails)[i] : nullptr, options);
    }
}

void print_totals(const ZtpStreamTotals& totals) {
    const char* end = line_end(totals.crc_status);
    std::printf("Total number of timeslices: %" PRIu64 "\n", totals.timeslices);
    std::printf("Total number of frames: %" PRIu64 "\n", totals.frames);
    std::printf("Total playing time: %2.1f seconds%s", playing_time_seconds(totals), end);
    std::printf("Overall data rate: %2.1f kbps%s", overall_data_rate_kbps(totals), end);
    std::printf("Overall bitstream status: %s%s", crc_status_name(totals.crc_status), end);
}

}  // namespace quorlin
