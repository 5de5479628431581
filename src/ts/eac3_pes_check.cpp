
#include "bits/finding.h"
#include "ts/pes_checks.h"
#include "ts/ts_status.h"
#include "ztpinfo/channel_locations.h"

namespace quorlin {

namespace {

// A further independent substream must be announced by its flag. 0 or TS_CHECK_FAILED.
int check_programs(const Eac3DescriptorFields& descriptor, const ZtpStreamSummary& summary) {
    const auto carries = [&](uint32_t k) {
        return k < summary.num_programs && summary.programs[k].independent.substreamid == k;
    };
    if (carries(1) && descriptor.substream1_flag != 1) {
        return fail(
            TS_CHECK_FAILED, "ts-eac3-substream1-flag",
            "ERROR: Zentra Plus descriptor does not match the Zentra Plus audio data information. \nThere is an additional independent stream with substreamid = 1, substream1_flag must be 1 not %d.\n",
            descriptor.substream1_flag);
    }
    if (carries(2) && descriptor.substream2_flag != 1) {
        return fail(
            TS_CHECK_FAILED, "ts-eac3-substream2-flag",
            "ERROR: Zentra Plus descriptor does not match the Zentra Plus audio data information. \nThere is an additional independent stream with substreamid = 2, substream2_flag must be 1 not %d.\n",
            descriptor.substream2_flag);
    }
    if (carries(3) && descriptor.substream3_flag != 1) {
        return fail(
            TS_CHECK_FAILED, "ts-eac3-substream3-flag",
            "ERROR: Zentra Plus descriptor does not math the Zentra Plus audio data information. \nThere is an additional independent stream with substreamid = 3, substream3_flag must be 1 not %d.\n",
            descriptor.substream3_flag);
    }
    return 0;
}

// number_of_channels above five channels: a full main service. 0 or TS_CHECK_FAILED.
int check_multichannel_service(const Eac3DescriptorFields& descriptor, uint32_t acmod) {
    int status = 0;
    if (acmod < 3) {
        status |= fail(
            TS_CHECK_FAILED, "ts-eac3-channels-101-acmod",
            "ERROR: Zentra Plus descriptor does not match the Zentra Plus audio data information. \nNum of Channels Field(101) must match the acmod field. acmode = %u.\n",
            acmod);
    }
    if (descriptor.full_service_flag != 1 || descriptor.service_type != 0) {
        status |= fail(
            TS_CHECK_FAILED, "ts-eac3-channels-101-service",
            "ERROR: Zentra Plus descriptor does not match the Zentra Plus audio data information. \nNum of Channels Field(101) full_service_flag must be set to 1(in fact %d),service_type must be set to 000(in fact,  %d).\n",
            descriptor.full_service_flag, descriptor.service_type);
    }
    return status;
}

// ATSC A/52, table G.1: number_of_channels against the coding mode of the main program. 0 or TS_CHECK_FAILED.
int check_channels(const Eac3DescriptorFields& descriptor, uint32_t acmod) {
    switch (descriptor.number_of_channels) {
        case 0b001:
            if (acmod == 0) return 0;
            return fail(
                TS_CHECK_FAILED, "ts-eac3-channels-001",
                "ERROR: Zentra Plus descriptor does not match the Zentra Plus audio data information. \nNum of Channels Field(001) must match the acmod field. acmode = %u.\n",
                acmod);
        case 0b010:
            if (acmod == 2) return 0;
            return fail(
                TS_CHECK_FAILED, "ts-eac3-channels-010",
                "ERROR: Zentra Plus descriptor does not match the Zentra Plus audio data information. \nNum of Channels Field(010) must match the acmod field. acmode = %u.\n",
                acmod);
        case 0b100:
            if (acmod >= 3) return 0;
            return fail(
                TS_CHECK_FAILED, "ts-eac3-channels-100",
                "ERROR: Zentra Plus descriptor does not match the Zentra Plus audio data information. \nNum of Channels Field(100) must match the acmod field. acmode = %u.\n",
                acmod);
        case 0b101:
            return check_multichannel_service(descriptor, acmod);
        case 0b110:
        case 0b111:
            return fail(TS_CHECK_FAILED, "ts-eac3-channels-reserved",
                        "ERROR: The number value of the channels field(%d) is wrong. It is reserved for future use.\n",
                        descriptor.number_of_channels);
        default:
            return 0;
    }
}

// Object audio is signalled in the additional bit stream information of the substream that carries it. 0 or
// TS_CHECK_FAILED.
int check_objects(const Eac3DescriptorFields& descriptor, const ZtpStreamSummary& summary) {
    const ZtpProgramSummary& main_program = summary.programs[0];
    const bool has_dependent = main_program.num_dep_substreams > 0;
    const ZtpSubstreamSummary& substream = has_dependent ? main_program.dependent[0] : main_program.independent;
    const uint8_t flag = descriptor.flag_ec3_extension_type_a;
    const uint8_t complexity = descriptor.complexity_index_type_a;
    if (!has_dependent && summary.num_programs == 0 && (flag != 0 || complexity != 0)) {
        return fail(
            TS_CHECK_FAILED, "ts-eac3-objects-no-program",
            "ERROR: Aurelis feature is signaled in the descriptor of the TS PMT but invalid num_of_dep_frm and num_of_pgms values are found in Zentra Plus elementary stream.\n");
    }
    if (flag == 0) {
        if (substream.addbsi[0] == 0 || substream.addbsi_bytes == 0) return 0;
        return fail(
            TS_CHECK_FAILED, "ts-eac3-objects-not-announced",
            "ERROR: Aurelis is absent from the TS PMT while addbsi is found in Zentra Plus elementary stream.\n");
    }
    if (substream.addbsie != 1 || substream.addbsi_bytes < 2) {
        return fail(
            TS_CHECK_FAILED, "ts-eac3-objects-addbsi",
            "ERROR: The descriptor of the TS PMT features Aurelis but invalid bse_addbsie and bse_addbsil are found in the Zentra Plus elementary stream.\n");
    }
    if (substream.addbsi[0] != flag) {
        return fail(
            TS_CHECK_FAILED, "ts-eac3-objects-flag",
            "ERROR: The flag_ec3_extension_type_a(0x%x) in the descriptor of the TS PMT does not match what is written in the Zentra Plus elementary stream (0x%x).\n",
            flag, substream.addbsi[0]);
    }
    if (substream.addbsi[1] != complexity) {
        return fail(
            TS_CHECK_FAILED, "ts-eac3-objects-complexity",
            "ERROR: The complexity_index_type_a(0x%x) in the descriptor of the TS PMT does not match what is written in the Zentra Plus elementary stream (0x%x).\n",
            complexity, substream.addbsi[1]);
    }
    return 0;
}

// What a recorder is told of the main program.
void keep_facts(const ZtpStreamSummary& summary, TsAudioStream& stream) {
    if (summary.num_programs == 0) return;
    stream.channels = ztpinfo_channel_count(summary.programs[0]);
    stream.data_rate_kbps = summary.data_rate_kbps;
}

}  // namespace

int compare_eac3_descriptor(const Eac3DescriptorFields& descriptor, const ZtpStreamSummary& summary) {
    if (check_programs(descriptor, summary) != 0) return TS_CHECK_FAILED;
    if (check_channels(descriptor, summary.programs[0].independent.acmod) != 0) return TS_CHECK_FAILED;
    return check_objects(descriptor, summary);
}

int check_eac3_pes(const Eac3DescriptorFields& descriptor, const PesCheckInput& pes) {
    TsAudioStream& stream = pes.stream;
    if (!stream.analyzer) stream.analyzer.reset(ztpinfo_open());
    ZtpStreamSummary summary;
    const bool failed = !stream.analyzer || ztpinfo_process(pes.payload, summary, stream.analyzer.get()) != ZTP_CLEAN;
    keep_facts(summary, stream);
    if (failed) {
        const PlaceScope scope(ztpinfo_failure_place(stream.analyzer.get()));
        return fail(TS_ANALYSIS_FAILED, "ztp-errors",
                    "ERROR: Zentra Plus info tool returns errors when parsing the payload data.\n");
    }
    if (summary.frameset_count == 0) {
        // Reported, but no failure by itself: deliberate.
        note("ts-eac3-no-access-unit", "ERROR: A PES package must contain at least one Zentra Plus access unit.\n");
    } else {
        stream.frames_in_pes = summary.frameset_count;
        stream.frame_ticks = EAC3_FRAMESET_TICKS;
    }
    return compare_eac3_descriptor(descriptor, summary);
}

}  // namespace quorlin
