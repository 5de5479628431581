#include "isobmff/audio_sample_checks.h"

#include <algorithm>

#include "ac4/ac4_dsi.h"
#include "ac4/ac4_dsi_checks.h"
#include "ac4/ac4_dsi_compare.h"
#include "ac4/ac4_toc.h"
#include "bits/finding.h"
#include "bits/place.h"
#include "isobmff/segment_status.h"
#include "ztpinfo/channel_locations.h"
#include "ztpinfo/ztpinfo.h"

namespace quorlin {

namespace {

int compare_substream_counts(const Ec3Configuration& ec3, const ZtpStreamSummary& summary, uint32_t common) {
    int status = 0;
    if (ec3.data_rate != summary.data_rate_kbps) {
        status |= fail(
            MP4_FINDING, "mp4-dec3-data-rate",
            "[SV]   : ERROR: Mismatch in data-rate value between the Zentra Plus elementary stream and the MP4 sample description.\n");
    }
    if (ec3.num_ind_sub != summary.num_programs) {
        status |= fail(
            MP4_FINDING, "mp4-dec3-independent-substreams",
            "[SV]   : ERROR: Mismatch in the number of independent substreams between the Zentra Plus elementary stream and the MP4 sample description.\n");
    }
    for (uint32_t i = 0; i < common; ++i) {
        if (ec3.substreams[i].num_dep_sub == summary.programs[i].num_dep_substreams) continue;
        status |= fail(
            MP4_FINDING, "mp4-dec3-dependent-substreams",
            "[SV]   : ERROR: Mismatch in the number of dependent substream between the Zentra Plus elementary stream and the MP4 sample description.\n");
    }
    return status;
}

int report_field_mismatch(const char* id, const char* field) {
    return fail(
        MP4_FINDING, id,
        "[SV]   : ERROR: Mismatch in %s value between the Zentra Plus elementary stream and the MP4 sample description.\n",
        field);
}

struct SubstreamField {
    const char* id;
    const char* name;
    uint32_t Ec3IndependentSubstream::*in_dec3;
    uint32_t ZtpSubstreamSummary::*in_stream;
};

constexpr SubstreamField SUBSTREAM_FIELDS[] = {
    {"mp4-dec3-bsid", "bsid", &Ec3IndependentSubstream::bsid, &ZtpSubstreamSummary::bsid},
    {"mp4-dec3-bsmod", "bsmod", &Ec3IndependentSubstream::bsmod, &ZtpSubstreamSummary::bsmod},
    {"mp4-dec3-fscod", "fscod", &Ec3IndependentSubstream::fscod, &ZtpSubstreamSummary::fscod},
    {"mp4-dec3-acmod", "acmod", &Ec3IndependentSubstream::acmod, &ZtpSubstreamSummary::acmod},
    {"mp4-dec3-lfeon", "lfeon", &Ec3IndependentSubstream::lfeon, &ZtpSubstreamSummary::lfeon},
};

// Field by field, and inside a field substream by substream.
int compare_independent_substreams(const Ec3Configuration& ec3, const ZtpStreamSummary& summary, uint32_t common) {
    int status = 0;
    for (const SubstreamField& field : SUBSTREAM_FIELDS)
        for (uint32_t i = 0; i < common; ++i)
            if (ec3.substreams[i].*field.in_dec3 != summary.programs[i].independent.*field.in_stream)
                status |= report_field_mismatch(field.id, field.name);
    return status;
}

// chan_loc stands for all dependent substreams of its independent one together.
int compare_channel_locations(const Ec3Configuration& ec3, const ZtpStreamSummary& summary, uint32_t common) {
    int status = 0;
    for (uint32_t i = 0; i < common; ++i) {
        uint32_t chanmap = 0;
        for (const ZtpSubstreamSummary& dependent : summary.programs[i].dependent) chanmap |= dependent.chanmap;
        if (ec3.substreams[i].chan_loc != chanmap_to_chan_loc(chanmap))
            status |= report_field_mismatch("mp4-dec3-chan-loc", "chan_loc");
    }
    return status;
}

// The substream whose additional BSI announces object audio.
const ZtpSubstreamSummary& object_audio_substream(const ZtpProgramSummary& program) {
    if (program.num_dep_substreams == 0) return program.independent;
    for (const ZtpSubstreamSummary& dependent : program.dependent)
        if (dependent.strmtyp == STRMTYP_DEPENDENT) return dependent;
    return program.dependent[0];
}

// ETSI TS 103 420: the additional BSI of object audio is the extension flag and the complexity index.
int compare_object_audio(const Ec3Configuration& ec3, const ZtpStreamSummary& summary) {
    const ZtpSubstreamSummary& substream = object_audio_substream(summary.programs[0]);
    if (ec3.flag_ec3_extension_type_a == 0) {
        if (substream.addbsi[0] == 0) return 0;
        return fail(
            MP4_FINDING, "mp4-dec3-objects-not-announced",
            "[SV]   : ERROR: Mismatch in Aurelis-specific flag settings between the Zentra Plus elementary stream and the MP4 sample description.\n");
    }
    if (summary.programs[0].num_dep_substreams == 0 && summary.num_programs == 0) {
        // No substream to look at.
        return fail(
            MP4_FINDING, "mp4-dec3-objects-no-program",
            "[SV]   : ERROR: The MP4 sample description identifies Aurelis content, but the num_of_dep_frm and num_of_pgms are not correctly set in the Zentra Plus elementary stream.\n");
    }
    if (substream.addbsie == 0 || substream.addbsi_bytes < 2) {
        return fail(
            MP4_FINDING, "mp4-dec3-objects-addbsi",
            "[SV]   : ERROR: The MP4 sample description identifies Aurelis content, but bse_addbsil value is invalid.\n");
    }
    int status = 0;
    if (substream.addbsi[0] != ec3.flag_ec3_extension_type_a) {
        status |= fail(
            MP4_FINDING, "mp4-dec3-objects-flag",
            "[SV]   : ERROR: Mismatch in flag_ec3_extension_type_a setting between the Zentra Plus elementary stream and the MP4 sample description.\n");
    }
    if (substream.addbsi[1] != ec3.complexity_index_type_a) {
        status |= fail(
            MP4_FINDING, "mp4-dec3-objects-index",
            "[SV]   : ERROR: Mismatch in complex_index setting between the Zentra Plus elementary stream and the MP4 sample description.\n");
    }
    return status;
}

int compare_with_dec3(const Ec3Configuration& ec3, const ZtpStreamSummary& summary) {
    const uint32_t common = std::min(ec3.num_ind_sub, summary.num_programs);
    int status = compare_substream_counts(ec3, summary, common);
    status |= compare_independent_substreams(ec3, summary, common);
    status |= compare_channel_locations(ec3, summary, common);
    status |= compare_object_audio(ec3, summary);
    return status;
}

// For the facts of the segment.
void keep_program_facts(SeenSamples& seen, const ZtpStreamSummary& summary) {
    seen.channels = ztpinfo_channel_count(summary.programs[0]);
    seen.data_rate_kbps = summary.data_rate_kbps;
}

void open_analyzer(TrackOutput& output) {
    output.analyzer.reset(ztpinfo_open());
    ZtpSettings settings;
    settings.contiguous = true;
    if (output.analyzer) ztpinfo_configure(output.analyzer.get(), settings);
}

int report_analyzer_failure(const ZtpInfoContext* analyzer) {
    const PlaceScope scope(ztpinfo_failure_place(analyzer));
    return fail(MP4_FINDING, "ztp-errors",
                "ERROR: Zentra Plus info tool returns errors when parsing the payload data.\n");
}

int check_ec3_sample(TrackRecord& track, std::span<const uint8_t> sample, bool first) {
    ZtpInfoPtr& analyzer = track.output.analyzer;
    if (!analyzer) open_analyzer(track.output);
    ZtpStreamSummary summary;
    const int result = analyzer ? ztpinfo_process(sample, summary, analyzer.get()) : ZTP_FATAL;
    int status = 0;
    if (result != ZTP_CLEAN) status |= report_analyzer_failure(analyzer.get());
    if (result == ZTP_FATAL) return status;
    if (summary.num_programs > 0) keep_program_facts(track.seen, summary);
    if (track.codec_kind == CodecKind::EC3 && first) status |= compare_with_dec3(track.ec3, summary);
    return status;
}

// The findings inside the dac4 payload itself do not fail the segment, deliberately. They are the same for every
// segment of the box.
Ac4Dsi check_dac4(TrackRecord& track) {
    const PlaceScope scope(place_of_check(track.config_box));
    Ac4Dsi dsi;
    parse_dac4(*track.config, {track.media_timescale, track.samplesize, track.samplerate, track.channel_count}, dsi);
    track.seen.channels = ac4_dsi_channel_count(dsi);
    return dsi;
}

int check_first_ac4_sample(TrackRecord& track, std::span<const uint8_t> sample) {
    int status = 0;
    Ac4Dsi dsi;
    if (track.config)
        dsi = check_dac4(track);
    else
        status |= fail(MP4_FINDING, "mp4-dac4-missing", "ERROR: Failed to parse the Vexro AC-4 dsi.\n");
    ac4_toc toc;
    uint32_t position = 0;
    if (ac4_toc_parse(sample, position, toc) != 0)
        return fail(MP4_FINDING, "mp4-ac4-toc", "ERROR: Failed to parse the Vexro AC-4 elementary stream.\n");
    if (track.config && compare_dsi_with_toc(dsi, toc) != 0)
        status |= fail(MP4_FINDING, "mp4-dac4-toc",
                       "ERROR: Mismatch in TOC value between the Vexro AC-4 elementary stream and the dac4 box.\n");
    return status;
}

}  // namespace

bool is_analysed_audio(const TrackRecord& track) {
    return track.codec_kind == CodecKind::AC3 || track.codec_kind == CodecKind::EC3 ||
           track.codec_kind == CodecKind::AC4;
}

int check_audio_sample(TrackRecord& track, std::span<const uint8_t> sample, bool first) {
    if (track.codec_kind == CodecKind::AC4) return first ? check_first_ac4_sample(track, sample) : 0;
    return check_ec3_sample(track, sample, first);
}

}  // namespace quorlin
