#include "ts/descriptors.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

#include "bits/bit_reader.h"
#include "bits/byte_order.h"
#include "bits/finding.h"
#include "ts/lumora_descriptor.h"
#include "ts/ts_status.h"

namespace quorlin {

namespace {

constexpr uint32_t HEADER_BYTES = 2;  // descriptor_tag, descriptor_length
constexpr uint8_t DVB_AC4_TAG_EXTENSION = 0x15;

void read_language(BitReader& reader, std::array<uint8_t, 3>& language) {
    for (uint8_t& letter : language) letter = read_u8(reader, 8);
}

// The first rule that is broken prints its finding and ends the checks.
int check_eac3_fields(const Eac3DescriptorFields& fields) {
    if (fields.mainid_flag != 0 || fields.asvc_flag != 0 || fields.mixinfoexists != 0 || fields.language_flag_2 != 0)
        return fail(
            TS_CHECK_FAILED, "ts-eac3-descriptor-flags",
            "ERROR: Check the EAC3 descriptor, and make sure that all of the following fields are set to 0, mainid_flag, asvc_flag, mixinfoexists_flag, and language_flag_2.\n");
    switch (fields.service_type) {
        case 0:
            if (fields.full_service_flag == 1) return 0;
            return fail(
                TS_CHECK_FAILED, "ts-eac3-descriptor-service-0",
                "ERROR: Check the EAC3 descriptor, and make sure that the service_type=0, while full_service_flag = %d .\n",
                fields.full_service_flag);
        case 1:
        case 4:
            if (fields.full_service_flag == 0) return 0;
            return fail(
                TS_CHECK_FAILED, "ts-eac3-descriptor-service-1-4",
                "ERROR: Check the EAC3 descriptor, and make sure that the service_type=1 or 4,w hile full_service_flag = %d .\n",
                fields.full_service_flag);
        case 5:
            if (fields.number_of_channels == 0) return 0;
            return fail(
                TS_CHECK_FAILED, "ts-eac3-descriptor-service-5",
                "ERROR: Check the EAC3 descriptor, and make sure that the service_type=5, while number_of_channels = %d .\n",
                fields.number_of_channels);
        case 6:
            if (fields.full_service_flag == 1 && fields.number_of_channels == 0) return 0;
            return fail(
                TS_CHECK_FAILED, "ts-eac3-descriptor-service-6",
                "ERROR: Check the EAC3 descriptor, and make sure that the service_type=6, while full_service_flag = %d, number_of_channels = %d .\n",
                fields.full_service_flag, fields.number_of_channels);
        default:
            return 0;
    }
}

// Up to `wanted` bytes from the reader's place, as far as they are there; it moves by all of them.
std::span<const uint8_t> take_bytes(BitReader& reader, size_t wanted) {
    const auto rest = reader.bytes.subspan(std::min<size_t>(reader.position / 8, reader.bytes.size()));
    skip_bits(reader, 8 * wanted);
    return rest.first(std::min(wanted, rest.size()));
}

int check_ac4_fields(const Ac4DescriptorFields& fields) {
    if (fields.descriptor_tag_extension != DVB_AC4_TAG_EXTENSION)
        return fail(TS_CHECK_FAILED, "ts-ac4-descriptor-tag-extension",
                    "ERROR: Vexro AC-4 descriptor tag extension must be set to 0x15 according to DVB.\n");
    if (!fields.additional_info_byte.empty())
        return fail(TS_CHECK_FAILED, "ts-ac4-descriptor-additional-info",
                    "ERROR: The additional_info in Vexro AC-4 audio stream descriptor must not be used.\n");
    return 0;
}

}  // namespace

std::string descriptor_name(uint32_t tag) {
    switch (tag) {
        case DESCRIPTOR_ISO_639_LANGUAGE:
            return "(0x0A) ISO 639 Language Descriptor";
        case DESCRIPTOR_DVB_AC3:
            return "(0x6A) AC-3 Descriptor (DVB)";
        case DESCRIPTOR_DVB_EAC3:
            return "(0x7A) Enhanced AC-3 Descriptor (DVB)";
        case DESCRIPTOR_DVB_EXTENSION:
            return "(0x7F) AC4 Descriptor";
        case DESCRIPTOR_ATSC_AC3:
            return "(0x81) AC-3 / Descriptor (DVB)";
        case DESCRIPTOR_LMRA:
            return "(0xB0) LMRA Descriptor";
        case DESCRIPTOR_ATSC_EAC3:
            return "(0xCC) Enhanced AC-3 Descriptor (ATSC)";
        default:
            break;
    }
    char text[64];
    std::snprintf(text, sizeof text, "(0x%02x) STREAM DESCRIPTOR IS OF UNKNOWN TYPE", tag);
    return text;
}

Eac3DescriptorFields read_eac3_descriptor(std::span<const uint8_t> raw) {
    Eac3DescriptorFields fields;
    BitReader reader = {raw, 8 * HEADER_BYTES};
    skip_bits(reader, 1);  // reserved
    fields.bsid_flag = read_u8(reader, 1);
    fields.mainid_flag = read_u8(reader, 1);
    fields.asvc_flag = read_u8(reader, 1);
    fields.mixinfoexists = read_u8(reader, 1);
    fields.substream1_flag = read_u8(reader, 1);
    fields.substream2_flag = read_u8(reader, 1);
    fields.substream3_flag = read_u8(reader, 1);
    skip_bits(reader, 1);  // reserved
    fields.full_service_flag = read_u8(reader, 1);
    fields.service_type = read_u8(reader, 3);
    fields.number_of_channels = read_u8(reader, 3);
    fields.language_flag = read_u8(reader, 1);
    fields.language_flag_2 = read_u8(reader, 1);
    skip_bits(reader, 1);  // reserved
    const uint8_t bsid = read_u8(reader, 5);
    if (fields.bsid_flag != 0) fields.bsid = bsid;
    if (fields.mainid_flag != 0) {
        skip_bits(reader, 3);  // reserved
        fields.priority = read_u8(reader, 2);
        fields.mainid = read_u8(reader, 3);
    }
    if (fields.asvc_flag != 0) fields.asvc = read_u8(reader, 8);
    if (fields.substream1_flag != 0) fields.substream1 = read_u8(reader, 8);
    if (fields.substream2_flag != 0) fields.substream2 = read_u8(reader, 8);
    if (fields.substream3_flag != 0) fields.substream3 = read_u8(reader, 8);
    if (fields.language_flag != 0) read_language(reader, fields.language);
    if (fields.language_flag_2 != 0) read_language(reader, fields.language_2);
    if (fields.substream1_flag != 0) read_language(reader, fields.substream1_lang);
    if (fields.substream2_flag != 0) read_language(reader, fields.substream2_lang);
    if (fields.substream3_flag != 0) read_language(reader, fields.substream3_lang);
    // Absent, and so zero, when the descriptor ends here.
    skip_bits(reader, 7);  // reserved
    fields.flag_ec3_extension_type_a = read_u8(reader, 1);
    if (fields.flag_ec3_extension_type_a != 0) fields.complexity_index_type_a = read_u8(reader, 8);
    return fields;
}

Ac4DescriptorFields read_ac4_descriptor(std::span<const uint8_t> raw) {
    Ac4DescriptorFields fields;
    BitReader reader = {raw, 8 * HEADER_BYTES};
    fields.descriptor_tag_extension = read_u8(reader, 8);
    if (fields.descriptor_tag_extension != DVB_AC4_TAG_EXTENSION) return fields;
    fields.ac4_config_flag = read_u8(reader, 1);
    fields.ac4_toc_flag = read_u8(reader, 1);
    skip_bits(reader, 6);  // reserved
    if (fields.ac4_config_flag != 0) {
        fields.ac4_dialog_enhancement_enabled = read_u8(reader, 1);
        fields.ac4_channel_mode = read_u8(reader, 2);
        skip_bits(reader, 5);  // reserved
    }
    if (fields.ac4_toc_flag != 0) {
        fields.ac4_toc_len = read_u8(reader, 8);
        fields.ac4_dsi_byte = take_bytes(reader, fields.ac4_toc_len);
    }
    fields.additional_info_byte = take_bytes(reader, raw.size());
    return fields;
}

int parse_descriptor(std::span<const uint8_t> bytes, StreamDescriptor& descriptor, uint32_t& consumed) {
    const size_t claimed = load_u8(bytes, 1) + size_t{HEADER_BYTES};
    descriptor.tag = load_u8(bytes, 0);
    descriptor.raw = bytes.first(std::min(claimed, bytes.size()));
    consumed = static_cast<uint32_t>(descriptor.raw.size());
    descriptor.length = consumed > HEADER_BYTES ? consumed - HEADER_BYTES : 0;
    switch (descriptor.tag) {
        case DESCRIPTOR_ATSC_EAC3:
        case DESCRIPTOR_DVB_EAC3:
            return check_eac3_fields(read_eac3_descriptor(descriptor.raw));
        case DESCRIPTOR_DVB_EXTENSION:
            return check_ac4_fields(read_ac4_descriptor(descriptor.raw));
        case DESCRIPTOR_LMRA:
            return list_lumora_descriptor(read_lumora_descriptor(descriptor.raw));
        default:
            return 0;
    }
}

}  // namespace quorlin
