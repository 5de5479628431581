#include "ts/lumora_descriptor.h"

#include <cstddef>
#include <cstdio>

#include "bits/bit_reader.h"
#include "ts/ts_status.h"

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

void print_streams(const LmraDescriptorFields& fields, const char* profile_name) {
    std::printf("  Lmra stream profile          : %s(%d)\n", profile_name, fields.profile);
    std::printf("  Lmra stream level            : %s(%d)\n", level_name(fields.level), fields.level);
    std::printf("  Lmra stream rpu_present      : %s\n", yes_no(fields.rpu_present_flag));
    std::printf("  Lmra stream el_present       : %s\n", yes_no(fields.el_present_flag));
    std::printf("  Lmra stream bl_present       : %s\n", yes_no(fields.bl_present_flag));
}

int print_with_compatibility(const LmraDescriptorFields& fields) {
    const uint8_t id = fields.bl_signal_compatibility_id;
    if (fields.profile != PROFILE_BY_COMPATIBILITY) {
        print_streams(fields, PROFILE_NAMES[fields.profile]);
    } else if (id > COMPATIBILITY_ID_MAX) {
        std::printf("ERROR: Invalid lmra stream bl_signal_compatibility_id %d\n", id);
        return TS_CHECK_FAILED;
    } else {
        print_streams(fields, PROFILE_8_NAMES[id]);
    }
    std::printf("  Lmra stream bl_compatible_id : %d\n", id);
    return 0;
}

}  // namespace

int parse_lumora_descriptor(std::span<const uint8_t> bytes, LmraDescriptorFields& fields) {
    fields = {};
    BitReader reader = {bytes, 16};  // behind descriptor_tag and descriptor_length
    fields.version_major = read_u8(reader, 8);
    fields.version_minor = read_u8(reader, 8);
    std::printf("  Lmra stream version_major    : %d\n", fields.version_major);
    std::printf("  Lmra stream version_minor    : %d\n", fields.version_minor);
    fields.profile = read_u8(reader, 7);
    if (fields.profile >= PROFILE_COUNT) {
        std::printf("ERROR: Invalid lmra stream profile %d.\n", fields.profile);
        return TS_CHECK_FAILED;
    }
    // Every level is accepted, also those without a name: deliberately lenient.
    fields.level = read_u8(reader, 6);
    fields.rpu_present_flag = read_u8(reader, 1);
    fields.el_present_flag = read_u8(reader, 1);
    fields.bl_present_flag = read_u8(reader, 1);
    if (fields.bl_present_flag == 0) {
        fields.dependency_pid = read_u32(reader, 13);
        skip_bits(reader, 3);  // reserved
        std::printf("  Lmra stream dependency PID   : %d\n", static_cast<int>(fields.dependency_pid));
    }
    const int64_t bytes_left = static_cast<int64_t>(bytes.size()) - reader.position / 8;
    if (bytes_left == 1) {
        fields.bl_signal_compatibility_id = read_u8(reader, 4);
        if (print_with_compatibility(fields) != 0) return TS_CHECK_FAILED;
    } else {
        print_streams(fields, PROFILE_NAMES[fields.profile]);
        if (bytes_left > 0) std::printf("WARNING: Unknown bytes left in the descriptor.\n");
    }
    std::printf("\n");
    return 0;
}
