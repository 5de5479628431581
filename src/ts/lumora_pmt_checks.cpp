#include "ts/lumora_pmt_checks.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "bits/finding.h"
#include "playlist/codecs.h"
#include "ts/ts_status.h"

namespace quorlin {

namespace {

// The length of ".08.06".
constexpr size_t PROFILE_AND_LEVEL_LENGTH = 6;

// What follows the first `fourcc` in the text; false when the text does not contain it.
bool text_after(const std::string& codecs, const char* fourcc, std::string& rest) {
    const size_t found = codecs.find(fourcc);
    if (found == std::string::npos) return false;
    rest = codecs.substr(found + std::char_traits<char>::length(fourcc));
    return true;
}

bool has_profile_and_level(const std::string& rest, const LmraDescriptorFields& fields) {
    char wanted[16];
    std::snprintf(wanted, sizeof wanted, ".%02d.%02d", fields.profile, fields.level);
    return rest.size() >= PROFILE_AND_LEVEL_LENGTH && rest.find(wanted) != std::string::npos;
}

// A point and a decimal number, with blanks and a sign before its digits; whatever follows stays in `text`.
bool scan_number(const char*& text, long& number) {
    if (*text != '.') return false;
    char* end = nullptr;
    const long value = std::strtol(text + 1, &end, 10);
    if (end == text + 1) return false;
    text = end;
    number = value;
    return true;
}

bool names_profile_and_level(const std::string& rest, const LmraDescriptorFields& fields) {
    const char* text = rest.c_str();
    long profile = -1;
    long level = -1;
    return scan_number(text, profile) && scan_number(text, level) && profile == fields.profile && level == fields.level;
}

// Two characters read as packed decimal, so that "10" gives 16: deliberate.
int packed_decimal(char tens, char units) {
    return ((static_cast<uint8_t>(tens) * 16) & 0xFF) + static_cast<uint8_t>(units) - '0';
}

}  // namespace

int check_lumora_descriptor(const LmraDescriptorFields& fields) {
    int status = 0;
    if (fields.version_major != 1 || fields.version_minor != 0) {
        status |= fail(
            TS_CHECK_FAILED, "ts-lmra-version",
            "ERROR: The lm_version_major and lm_version_minor of Lumora video stream descriptor must be set to 1 and 0.\n");
    }
    if (fields.rpu_present_flag != 1) {
        status |= fail(TS_CHECK_FAILED, "ts-lmra-rpu-present-flag",
                       "ERROR: The rpu_present_flag of Lumora video stream descriptor must be set to 1.\n");
    }
    if (fields.bl_present_flag != 1) {
        status |= fail(TS_CHECK_FAILED, "ts-lmra-bl-present-flag",
                       "ERROR: The bl_present_flag of Lumora video stream descriptor must be set to 1.\n");
    }
    return status;
}

int check_lumora_avc_entry(const std::string& codecs, const LmraDescriptorFields& fields) {
    std::string rest;
    if (text_after(codecs, "lmav", rest)) {
        if (has_profile_and_level(rest, fields)) return 0;
        return fail(
            TS_CHECK_FAILED, "ts-lmra-codecs-lmav",
            "ERROR: There is a mismatch between lmav description in CODECS attribute of the #EXT-X-STREAM-INF and lmra descriptor in stream.\n");
    }
    if (text_after(codecs, "lma1", rest)) {
        if (has_profile_and_level(rest, fields)) return 0;
        return fail(
            TS_CHECK_FAILED, "ts-lmra-codecs-lma1",
            "ERROR: There is a mismatch between lma1 description in CODECS attribute of the #EXT-X-STREAM-INF and lmra descriptor in stream.\n");
    }
    return 0;
}

int check_lumora_hevc_entry(const std::string& codecs, const LmraDescriptorFields& fields) {
    std::string rest;
    if (text_after(codecs, "lmhe", rest)) {
        if (names_profile_and_level(rest, fields)) return 0;
        return fail(TS_CHECK_FAILED, "ts-lmra-codecs-lmhe",
                    "ERROR: Invalid lmhe description found in the CODECS attribute of the #EXT-X-STREAM-INF.\n");
    }
    if (text_after(codecs, "lmh1", rest)) {
        if (names_profile_and_level(rest, fields)) return 0;
        return fail(TS_CHECK_FAILED, "ts-lmra-codecs-lmh1",
                    "ERROR: Invalid lmh1 description found in the CODECS attribute of the #EXT-X-STREAM-INF.\n");
    }
    return fail(TS_CHECK_FAILED, "ts-lmra-codecs-fourcc",
                "ERROR: The Lumora stream must include a matching fourcc code in the CODECS attribute.\n");
}

int check_lumora_codecs_profile(const std::string& codecs, const LmraDescriptorFields& fields, int el_profile) {
    std::string entry;
    if (lumora_codecs_entry(codecs, entry) == 0) {
        return fail(TS_CHECK_FAILED, "ts-lmra-codecs-entry",
                    "ERROR: Invalid Lumora descriptor was found in the CODECS attribute of the #EXT-X-STREAM-INF.\n");
    }
    int status = 0;
    const int profile = packed_decimal(entry[5], entry[6]);
    if (profile != fields.profile) {
        status |= fail(TS_CHECK_FAILED, "ts-lmra-codecs-profile-level",
                       "ERROR: profile_id in the CODECS attribute of the #EXT-X-STREAM-INF must be 4.\n");
    }
    if (packed_decimal(entry[8], entry[9]) != fields.level) {
        // The same text for the level: deliberate.
        status |= fail(TS_CHECK_FAILED, "ts-lmra-codecs-profile-level",
                       "ERROR: profile_id in the CODECS attribute of the #EXT-X-STREAM-INF must be 4.\n");
    }
    if (profile == el_profile && fields.el_present_flag != 1) {
        status |= fail(TS_CHECK_FAILED, "ts-lmra-el-present-flag",
                       "ERROR: The el_present_flag of Lumora video stream descriptor must be set to 1.\n");
    }
    return status;
}

}  // namespace quorlin
