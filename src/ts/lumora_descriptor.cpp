#include "ts/lumora_descriptor.h"

#include <cstddef>
#include <iterator>

#include "bits/bit_reader.h"
#include "bits/finding.h"
#include "ts/ts_status.h"

namespace quorlin {

namespace {

constexpr uint8_t PROFILE_COUNT = 10;
constexpr uint8_t PROFILE_BY_COMPATIBILITY = 8;  // its names go by bl_signal_compatibility_id
constexpr uint8_t COMPATIBILITY_ID_MAX = 5;

const char* const PROFILE_NAMES[PROFILE_COUNT] = {"lmav.per", "lmav.pen", "lmhe.der", "lmhe.den",   "lmhe.dtr",
                                                  "lmhe.stn", "lmhe.dth", "lmhe.dtb", "unassigned", "lmav.ser"};
const char* const PROFILE_8_NAMES[COMPATIBILITY_ID_MAX + 1] = {"unknown",  "lmhe.sth", "lmhe.str",
                                                               "lmhe.stl", "lmhe.stg", "lmhe.sts"};
const char* const LEVEL_NAMES[] = {"unknown", "hd24",  "hd30",  "fhd24", "fhd30",
                                   "fhd60",   "uhd24", "uhd30", "uhd48", "uhd60"};

const char* level_name(uint8_t level) {
    return level < std::size(LEVEL_NAMES) ? LEVEL_NAMES[level] : "unknown";
}

const char* yes_no(uint8_t flag) {
    return flag != 0 ? "Yes" : "No";
}

void list_streams(const LmraDescriptorFields& fields, const char* profile_name) {
    announce("  Lmra stream profile          : %s(%d)\n", profile_name, fields.profile);
    announce("  Lmra stream level            : %s(%d)\n", level_name(fields.level), fields.level);
    announce("  Lmra stream rpu_present      : %s\n", yes_no(fields.rpu_present_flag));
    announce("  Lmra stream el_present       : %s\n", yes_no(fields.el_present_flag));
    announce("  Lmra stream bl_present       : %s\n", yes_no(fields.bl_present_flag));
}

int list_with_compatibility(const LmraDescriptorFields& fields) {
    const uint8_t id = fields.bl_signal_compatibility_id;
    if (fields.profile != PROFILE_BY_COMPATIBILITY) {
        list_streams(fields, PROFILE_NAMES[fields.profile]);
    } else if (id > COMPATIBILITY_ID_MAX) {
        return fail(TS_CHECK_FAILED, "ts-lmra-descriptor-compatibility-id",
                    "ERROR: Invalid lmra stream bl_signal_compatibility_id %d\n", id);
    } else {
        list_streams(fields, PROFILE_8_NAMES[id]);
    }
    announce("  Lmra stream bl_compatible_id : %d\n", id);
    return 0;
}

}  // namespace

LmraDescriptorFields read_lumora_descriptor(std::span<const uint8_t> raw) {
    LmraDescriptorFields fields;
    BitReader reader = {raw, 16};  // after descriptor_tag and descriptor_length
    fields.version_major = read_u8(reader, 8);
    fields.version_minor = read_u8(reader, 8);
    fields.profile = read_u8(reader, 7);
    fields.level = read_u8(reader, 6);
    fields.rpu_present_flag = read_u8(reader, 1);
    fields.el_present_flag = read_u8(reader, 1);
    fields.bl_present_flag = read_u8(reader, 1);
    if (fields.bl_present_flag == 0) {
        fields.dependency_pid = read_u32(reader, 13);
        skip_bits(reader, 3);  // reserved
    }
    fields.bytes_left = static_cast<int32_t>(raw.size()) - static_cast<int32_t>(reader.position / 8);
    if (fields.bytes_left == 1) fields.bl_signal_compatibility_id = read_u8(reader, 4);
    return fields;
}

int list_lumora_descriptor(const LmraDescriptorFields& fields) {
    announce("  Lmra stream version_major    : %d\n", fields.version_major);
    announce("  Lmra stream version_minor    : %d\n", fields.version_minor);
    if (fields.profile >= PROFILE_COUNT)
        return fail(TS_CHECK_FAILED, "ts-lmra-descriptor-profile", "ERROR: Invalid lmra stream profile %d.\n",
                    fields.profile);
    // Every level is accepted, also those without a name: deliberately lenient.
    if (fields.bl_present_flag == 0) announce("  Lmra stream dependency PID   : %u\n", fields.dependency_pid);
    if (fields.bytes_left == 1) {
        if (list_with_compatibility(fields) != 0) return TS_CHECK_FAILED;
    } else {
        list_streams(fields, PROFILE_NAMES[fields.profile]);
        if (fields.bytes_left > 0)
            note("ts-lmra-descriptor-unknown-bytes", "WARNING: Unknown bytes left in the descriptor.\n");
    }
    announce("\n");
    return 0;
}

}  // namespace quorlin
