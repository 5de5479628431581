#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace quorlin {

// Descriptor tags that the reader knows (ISO/IEC 13818-1, table 2-45; ETSI EN 300 468, table 12; ATSC A/52, annex G).
enum DescriptorTag : uint32_t {
    DESCRIPTOR_REGISTRATION = 0x05,
    DESCRIPTOR_ISO_639_LANGUAGE = 0x0A,
    DESCRIPTOR_AVC_VIDEO = 0x28,
    DESCRIPTOR_HEVC_VIDEO = 0x38,
    DESCRIPTOR_DVB_AC3 = 0x6A,
    DESCRIPTOR_DVB_EAC3 = 0x7A,
    DESCRIPTOR_DVB_EXTENSION = 0x7F,  // AC-4 by its descriptor_tag_extension
    DESCRIPTOR_ATSC_AC3 = 0x81,
    DESCRIPTOR_LMRA = 0xB0,
    DESCRIPTOR_ATSC_EAC3 = 0xCC,
};

// ATSC A/52, annex G: E-AC-3_audio_stream_descriptor. The DVB tag is read with the same layout.
struct Eac3DescriptorFields {
    uint8_t bsid_flag = 0;
    uint8_t mainid_flag = 0;
    uint8_t asvc_flag = 0;
    uint8_t mixinfoexists = 0;
    uint8_t substream1_flag = 0;
    uint8_t substream2_flag = 0;
    uint8_t substream3_flag = 0;
    uint8_t full_service_flag = 0;
    uint8_t service_type = 0;
    uint8_t number_of_channels = 0;
    uint8_t language_flag = 0;
    uint8_t language_flag_2 = 0;
    uint8_t bsid = 0;
    uint8_t priority = 0;
    uint8_t mainid = 0;
    uint8_t asvc = 0;
    uint8_t substream1 = 0;
    uint8_t substream2 = 0;
    uint8_t substream3 = 0;
    std::array<uint8_t, 3> language = {};
    std::array<uint8_t, 3> language_2 = {};
    std::array<uint8_t, 3> substream1_lang = {};
    std::array<uint8_t, 3> substream2_lang = {};
    std::array<uint8_t, 3> substream3_lang = {};
    uint8_t flag_ec3_extension_type_a = 0;
    uint8_t complexity_index_type_a = 0;
};

// ETSI EN 300 468, D.7: AC-4_descriptor. Its bytes are borrowed from the descriptor.
struct Ac4DescriptorFields {
    uint8_t descriptor_tag_extension = 0;
    uint8_t ac4_config_flag = 0;
    uint8_t ac4_toc_flag = 0;
    uint8_t ac4_dialog_enhancement_enabled = 0;
    uint8_t ac4_channel_mode = 0;
    uint8_t ac4_toc_len = 0;
    std::span<const uint8_t> ac4_dsi_byte;
    std::span<const uint8_t> additional_info_byte;
};

// One descriptor of a PMT. `raw` holds tag and length byte too and is borrowed from the section, which its program
// keeps. The fields are read from it when a rule asks for them: a section holds up to 2047 descriptors.
struct StreamDescriptor {
    uint32_t tag = 0;
    uint32_t length = 0;
    std::span<const uint8_t> raw = {};
};

// Parses and checks the descriptor whose tag is the first of `bytes`, which end where the descriptor's loop ends; a
// descriptor that claims more than its loop holds is cut to it. `consumed` gets its size in bytes, at least 1 unless
// `bytes` is empty. A Lumora descriptor is listed. Returns 0, or TS_CHECK_FAILED after a finding (printed).
[[nodiscard]] int parse_descriptor(std::span<const uint8_t> bytes, StreamDescriptor& descriptor, uint32_t& consumed);

// The display name of a descriptor tag.
std::string descriptor_name(uint32_t tag);

// The fields of a descriptor, tag and length byte included; what lies after its end is 0.
Eac3DescriptorFields read_eac3_descriptor(std::span<const uint8_t> raw);
Ac4DescriptorFields read_ac4_descriptor(std::span<const uint8_t> raw);

}  // namespace quorlin
