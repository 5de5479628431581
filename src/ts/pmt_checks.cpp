#include "ts/pmt_checks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "bits/finding.h"
#include "playlist/codecs.h"
#include "playlist/ztp_program.h"
#include "ts/lumora_descriptor.h"
#include "ts/lumora_pmt_checks.h"
#include "ts/ts_status.h"

namespace quorlin {

namespace {

// What the elementary streams of the program turned out to be.
struct SeenStreams {
    bool aac_seen = false;
    bool ac3_seen = false;
    bool eac3_seen = false;
    bool joc_seen = false;  // E-AC-3 with object audio by its descriptor
    bool ac4_seen = false;
    bool avc_seen = false;
    bool hevc_seen = false;
    bool lmra_descriptor_seen = false;    // a Lumora descriptor on an H.264 or H.265 stream
    bool lmra_registration_seen = false;  // a registration descriptor with the identifier "LMRA"
};

bool names_lumora(const std::string& codecs) {
    return codecs_contain(codecs, "lmav") || codecs_contain(codecs, "lma1") || codecs_contain(codecs, "lmhe") ||
           codecs_contain(codecs, "lmh1");
}

bool main_program_differs(uint32_t program, const Eac3DescriptorFields& eac3) {
    return (program >> ZTP_PROGRAM_FULL_SERVICE_SHIFT & 1) != eac3.full_service_flag ||
           (program >> ZTP_PROGRAM_SERVICE_TYPE_SHIFT & 7) != eac3.service_type ||
           (program & 7) != eac3.number_of_channels;
}

// What becomes of values of 0.
enum class ZeroPrograms { COMPARED, SKIPPED };

int compare_programs(const PlaylistAttributes* attrs, const Eac3DescriptorFields& eac3, ZeroPrograms zeros) {
    if (attrs == nullptr || !attrs->programs) return 0;
    const std::array<uint32_t, 4>& programs = *attrs->programs;
    const auto compared = [&](size_t k) { return zeros == ZeroPrograms::COMPARED || programs[k] != 0; };
    int status = 0;
    if (compared(0) && main_program_differs(programs[0], eac3)) {
        status |= fail(
            TS_CHECK_FAILED, "ts-ztp-program0",
            "ERROR: The #EXT-X-MEDIA ZTP_PROGRAM0 attribute value does not match the syntaxs full_service_flag, service_type, and number_of_channels of EAC-3 descriptor.\n");
    }
    if (compared(1) && programs[1] != eac3.substream1) {
        status |= fail(
            TS_CHECK_FAILED, "ts-ztp-program1",
            "ERROR: The #EXT-X-MEDIA ZTP_PROGRAM1 attribute value does not match the substream1 of EAC-3 descriptor.\n");
    }
    if (compared(2) && programs[2] != eac3.substream2) {
        status |= fail(
            TS_CHECK_FAILED, "ts-ztp-program2",
            "ERROR: The #EXT-X-MEDIA ZTP_PROGRAM2 attribute value does not match the substream2 of EAC-3 descriptor.\n");
    }
    if (compared(3) && programs[3] != eac3.substream3) {
        status |= fail(
            TS_CHECK_FAILED, "ts-ztp-program3",
            "ERROR: The #EXT-X-MEDIA ZTP_PROGRAM3 attribute value does not match the substream3 of EAC-3 descriptor.\n");
    }
    return status;
}

void remember_eac3(const Eac3DescriptorFields& eac3, SeenStreams& seen) {
    (eac3.flag_ec3_extension_type_a != 0 ? seen.joc_seen : seen.eac3_seen) = true;
}

int check_atsc_eac3_stream(const EsRecord& stream, const PlaylistAttributes* attrs, SeenStreams& seen) {
    int status = 0;
    for (const StreamDescriptor& descriptor : stream.descriptors) {
        if (descriptor.tag == DESCRIPTOR_DVB_EAC3) {
            status |= fail(
                TS_CHECK_FAILED, "ts-eac3-dvb-tag",
                "ERROR: The EAC-3 descriptor tag should be set value as 0xCC but not 0x7A when audio stream type value is 0x87 in ATSC or MPEG standard.\n");
        }
        if (descriptor.tag != DESCRIPTOR_ATSC_EAC3) continue;
        const Eac3DescriptorFields eac3 = read_eac3_descriptor(descriptor.raw);
        remember_eac3(eac3, seen);
        return status | compare_programs(attrs, eac3, ZeroPrograms::COMPARED);
    }
    return status;
}

int check_avc_stream(const EsRecord& stream, const PlaylistAttributes* attrs, SeenStreams& seen) {
    constexpr int EL_PROFILE = 0;
    seen.avc_seen = true;
    for (const StreamDescriptor& descriptor : stream.descriptors) {
        if (descriptor.tag != DESCRIPTOR_LMRA) continue;
        seen.lmra_descriptor_seen = true;
        const LmraDescriptorFields lmra = read_lumora_descriptor(descriptor.raw);
        int status = attrs != nullptr ? check_lumora_avc_entry(attrs->codecs, lmra) : 0;
        status |= check_lumora_descriptor(lmra);
        if (attrs != nullptr) status |= check_lumora_codecs_profile(attrs->codecs, lmra, EL_PROFILE);
        return status;
    }
    return 0;
}

int check_hevc_stream(const EsRecord& stream, const PlaylistAttributes* attrs, SeenStreams& seen) {
    constexpr int EL_PROFILE = 4;
    seen.hevc_seen = true;
    int status = 0;
    for (const StreamDescriptor& descriptor : stream.descriptors) {
        if (descriptor.tag != DESCRIPTOR_LMRA) continue;
        seen.lmra_descriptor_seen = true;
        const LmraDescriptorFields lmra = read_lumora_descriptor(descriptor.raw);
        if (attrs != nullptr) status |= check_lumora_hevc_entry(attrs->codecs, lmra);
        status |= check_lumora_descriptor(lmra);
        if (attrs != nullptr) status |= check_lumora_codecs_profile(attrs->codecs, lmra, EL_PROFILE);
    }
    return status;
}

// ISO/IEC 13818-1, 2.6.8: format_identifier alone, without additional identification info.
bool is_lumora_registration(const StreamDescriptor& descriptor) {
    constexpr uint8_t LMRA[] = {'L', 'M', 'R', 'A'};
    return descriptor.length == sizeof LMRA && std::ranges::equal(descriptor.raw.subspan(2), LMRA);
}

int check_lumora_registration(const PlaylistAttributes* attrs, SeenStreams& seen) {
    seen.lmra_registration_seen = true;
    if (attrs == nullptr) return 0;
    const std::string& codecs = attrs->codecs;
    int status = 0;
    if (!names_lumora(codecs)) {
        status |=
            fail(TS_CHECK_FAILED, "ts-lmra-registration-codecs",
                 "ERROR: No 'lmav', 'lma1' or 'lmhe' or 'lmh1' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
    }
    if (codecs_contain(codecs, "avc") || codecs_contain(codecs, "hvc1") || codecs_contain(codecs, "hev1")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-lmra-registration-compatible",
            "ERROR:  Neither 'avc', 'hvc1' nor 'hev1' should be found in the CODECS attribute of the #EXT-X-STREAM-INF.\n");
    }
    return status;
}

// ".dd.dd.dd" at the start, whatever follows.
bool starts_with_ac4_version(const std::string& text) {
    constexpr char PATTERN[] = ".dd.dd.dd";
    constexpr size_t LENGTH = sizeof PATTERN - 1;
    if (text.size() < LENGTH) return false;
    for (size_t i = 0; i < LENGTH; ++i) {
        const bool is_digit = text[i] >= '0' && text[i] <= '9';
        if (PATTERN[i] == '.' ? text[i] != '.' : !is_digit) return false;
    }
    return true;
}

int check_ac4_codecs(const PlaylistAttributes* attrs, SeenStreams& seen) {
    constexpr char AC4[] = "ac-4";
    seen.ac4_seen = true;
    if (attrs == nullptr) return 0;
    const size_t found = attrs->codecs.find(AC4);
    if (found == std::string::npos) {
        return fail(
            TS_CHECK_FAILED, "ts-ac4-no-codecs",
            "ERROR: The value of the CODECS in EXT-X-STREAM-INF parameters must include 'ac-4' in the HLS playlist.\n");
    }
    if (starts_with_ac4_version(attrs->codecs.substr(found + sizeof AC4 - 1))) return 0;
    return fail(TS_CHECK_FAILED, "ts-ac4-codecs-form",
                "ERROR: Invalid ac-4 description found in the CODECS attribute of the #EXT-X-STREAM-INF.\n");
}

int check_private_lumora(const LmraDescriptorFields& lmra, const SeenStreams& seen) {
    int status = check_lumora_descriptor(lmra);
    if (seen.lmra_registration_seen && lmra.el_present_flag == 1) {
        status |= fail(
            TS_CHECK_FAILED, "ts-lmra-el-without-base",
            "ERROR: The el_present_flag of Lumora video stream descriptor in the non-sdr case must be set to 0.\n");
    }
    if (seen.lmra_descriptor_seen && lmra.el_present_flag != 1) {
        status |=
            fail(TS_CHECK_FAILED, "ts-lmra-el-with-base",
                 "ERROR: The el_present_flag of Lumora video stream descriptor in the sdr case must be set to 1.\n");
    }
    return status;
}

int check_dvb_eac3(const Eac3DescriptorFields& eac3, const PlaylistAttributes* attrs, SeenStreams& seen) {
    remember_eac3(eac3, seen);
    // Values of 0 are left out here, other than for stream type 0x87: deliberate.
    return compare_programs(attrs, eac3, ZeroPrograms::SKIPPED);
}

int check_private_descriptor(const StreamDescriptor& descriptor, const PlaylistAttributes* attrs, SeenStreams& seen) {
    switch (descriptor.tag) {
        case DESCRIPTOR_REGISTRATION:
            return is_lumora_registration(descriptor) ? check_lumora_registration(attrs, seen) : 0;
        case DESCRIPTOR_DVB_EAC3:
            return check_dvb_eac3(read_eac3_descriptor(descriptor.raw), attrs, seen);
        case DESCRIPTOR_DVB_EXTENSION:
            return check_ac4_codecs(attrs, seen);
        case DESCRIPTOR_LMRA:
            return check_private_lumora(read_lumora_descriptor(descriptor.raw), seen);
        case DESCRIPTOR_ATSC_EAC3:
            return fail(
                TS_CHECK_FAILED, "ts-eac3-atsc-tag",
                "ERROR: The EAC-3 descriptor tag should be set value as 0x7A but not 0xCC when audio stream type value is 0x06 in DVB standard.\n");
        default:
            return 0;
    }
}

int check_stream(const EsRecord& stream, const PlaylistAttributes* attrs, SeenStreams& seen) {
    int status = 0;
    switch (stream.stream_type) {
        case STREAM_TYPE_ATSC_AC3:
            seen.ac3_seen = true;
            break;
        case STREAM_TYPE_ATSC_EAC3:
            return check_atsc_eac3_stream(stream, attrs, seen);
        case STREAM_TYPE_ADTS_AAC:
        case STREAM_TYPE_LATM_AAC:
            seen.aac_seen = true;
            break;
        case STREAM_TYPE_AVC:
            return check_avc_stream(stream, attrs, seen);
        case STREAM_TYPE_HEVC:
            return check_hevc_stream(stream, attrs, seen);
        case STREAM_TYPE_PES_PRIVATE_DATA:
            for (const StreamDescriptor& descriptor : stream.descriptors)
                status |= check_private_descriptor(descriptor, attrs, seen);
            break;
        default:
            break;
    }
    return status;
}

int require_audio_codecs(const std::string& codecs, const SeenStreams& seen) {
    int status = 0;
    if (seen.aac_seen && !codecs_contain(codecs, "mp4a")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-no-mp4a",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF must include 'mp4a' when it refers to an AAC audio stream.\n");
    }
    if (seen.ac3_seen && !codecs_contain(codecs, "ac-3")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-no-ac-3",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF must include 'ac-3' when it refers to a Zentra audio stream.\n");
    }
    if (seen.eac3_seen && !codecs_contain(codecs, "ec-3")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-no-ec-3",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF must include 'ec-3' when it refers Zentra Plus audio stream.\n");
    }
    if (seen.joc_seen && !codecs_contain(codecs, "ec-3")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-no-ec-3-objects",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF must include 'ec-3' when it refers Zentra Plus JOC audio stream.\n");
    }
    if (seen.ac4_seen && !codecs_contain(codecs, "ac-4")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-no-ac-4",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF must include 'ac-4' when it refers AC4 audio stream.\n");
    }
    return status;
}

int require_video_codecs(const std::string& codecs, const SeenStreams& seen) {
    const bool lumora_seen = seen.lmra_descriptor_seen || seen.lmra_registration_seen;
    int status = 0;
    if (seen.avc_seen && !codecs_contain(codecs, "avc")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-no-avc",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF must include 'avc' when it refers H.264 video stream.\n");
    }
    if (seen.hevc_seen && !codecs_contain(codecs, "hvc1") && !codecs_contain(codecs, "hev1")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-no-hevc",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF must include 'hvc1' or 'hev1' when it refers H.265 video stream.\n");
    }
    if (lumora_seen && !codecs_contain(codecs, "lma") && !codecs_contain(codecs, "lmh")) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-no-lumora",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF must include 'lma' or 'lmh' when it refers Lumora video stream.\n");
    }
    const bool compatible =
        codecs_contain(codecs, "avc") || codecs_contain(codecs, "hvc1") || codecs_contain(codecs, "hev1");
    if (names_lumora(codecs) && !compatible && !seen.lmra_registration_seen) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-lumora-not-registered",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF indicates it refers a non-backward-compatible Lumora stream, but the Lumora registration descriptor has not been found in PMT of current TS segment.\n");
    }
    if (names_lumora(codecs) && !lumora_seen) {
        status |= fail(
            TS_CHECK_FAILED, "ts-codecs-lumora-absent",
            "ERROR: The CODECS attribute in the #EXT-X-STREAM-INF indicates it refers a Lumora stream, but none Lumora stream or registration descriptor has been found in PMT of current TS segment.\n");
    }
    return status;
}

}  // namespace

int check_pmt_against_playlist(const ProgramRecord& program, const PlaylistAttributes* attrs) {
    SeenStreams seen;
    int status = 0;
    for (const EsRecord& stream : program.streams) status |= check_stream(stream, attrs, seen);
    if (attrs == nullptr) return status;
    if (!attrs->audio_in_media_group) status |= require_audio_codecs(attrs->codecs, seen);
    return status | require_video_codecs(attrs->codecs, seen);
}

}  // namespace quorlin
