#include "ac4/ac4_dsi_checks.h"

#include <array>
#include <cinttypes>
#include <cstddef>

#include "bits/finding.h"

namespace quorlin {

namespace {

constexpr std::array<uint32_t, 2> SAMPLE_RATES = {44100, 48000};  // by fs_index

constexpr uint32_t AC4_SAMPLE_SIZE = 16;

// ETSI TS 103 190-2, annex E: media timescale by frame_rate_index at 48 kHz.
bool timescale_matches(const Ac4Dsi& dsi, uint32_t media_timescale) {
    // At 44.1 kHz only the one frame rate that exists there is tested, and against 48000; this is deliberate.
    if (dsi.fs_index == 0) return dsi.frame_rate_index != 13 || media_timescale == 48000;
    switch (dsi.frame_rate_index) {
        case 3:
            return media_timescale == 48000 || media_timescale == 240000;
        case 8:
        case 11:
            return media_timescale == 240000;
        case 14:
        case 15:
            return true;
        default:
            return media_timescale == 48000;
    }
}

void report_stop(const Ac4Dsi& dsi, size_t payload_size) {
    const int presentation = static_cast<int>(dsi.presentations.size()) - 1;
    switch (dsi.stop) {
        case Ac4DsiStop::VERSION_0_IN_NEW_STREAM:
            note("ac4-dac4-version-0-entry",
                 "[SV]   : ERROR: presentation %d version should be 0 while bitstream version is not bigger than 1.\n",
                 presentation);
            break;
        case Ac4DsiStop::VERSION_1_IN_OLD_STREAM:
            note("ac4-dac4-version-1-entry",
                 "[SV]   : ERROR: presentation %d version should be 1 or 2 while bitstream version is 1 or 2.\n",
                 presentation);
            break;
        case Ac4DsiStop::PRES_BYTES_TOO_SMALL:
            note("ac4-dac4-pres-bytes", "[SV]   : ERROR: pres_bytes should not smaller than presentation_bytes.\n");
            break;
        case Ac4DsiStop::WRONG_BOX_SIZE:
            // Both values are in bits although the text says bytes; this is deliberate.
            note("ac4-dac4-size",
                 "[SV]   : ERROR: size of AC4SpecificBox is incorrect, parsing 0x%" PRIx32
                 " bytes while the box size is 0x%" PRIx64 " bytes\n",
                 dsi.position_bits, uint64_t{8} * payload_size);
            break;
        case Ac4DsiStop::COMPLETE:
            break;
    }
}

// The first rule that the sample entry breaks is reported, the others are not.
void check_sample_entry(const Ac4Dsi& dsi, const Ac4TrackClaims& claims) {
    const uint32_t dsi_channel_count = ac4_dsi_channel_count(dsi);
    if (claims.sample_size != AC4_SAMPLE_SIZE) {
        note("ac4-dac4-samplesize",
             "[SV]   : ERROR: The SampleSize value in the AC4SampleEntry box is not set to 16.\n");
    } else if (claims.sample_rate != SAMPLE_RATES[dsi.fs_index]) {
        note("ac4-dac4-samplerate", "[SV]   : ERROR: The SampleRate value in the AC4SampleEntry box is incorrect.\n");
    } else if (dsi_channel_count != 0 && claims.channel_count != dsi_channel_count) {
        note("ac4-dac4-channelcount",
             "[SV]   : ERROR: The ChannelCount value in the AC4SampleEntry box is incorrect.\n");
    }
}

}  // namespace

int parse_dac4(std::span<const uint8_t> payload, const Ac4TrackClaims& claims, Ac4Dsi& dsi) {
    ac4_dsi_parse(payload, dsi);
    if (!timescale_matches(dsi, claims.media_timescale)) {
        note("ac4-dac4-timescale",
             "[SV]   : ERROR: The timescale parameter in the Media Header Box mismatches the media time scale which "
             "depends on frame_rate and base_samp_freq in dsi.\n");
    }
    report_stop(dsi, payload.size());
    if (dsi.stop == Ac4DsiStop::COMPLETE) check_sample_entry(dsi, claims);
    return 0;
}

}  // namespace quorlin
