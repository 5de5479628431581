#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

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

// ETSI EN 300 468, D.7: AC-4_descriptor.
struct Ac4DescriptorFields {
    uint8_t descriptor_tag_extension = 0;
    uint8_t ac4_config_flag = 0;
    uint8_t ac4_toc_flag = 0;
    uint8_t ac4_dialog_enhancement_enabled = 0;
    uint8_t ac4_channel_mode = 0;
    uint8_t ac4_toc_len = 0;
    std::vector<uint8_t> ac4_dsi_byte;
    std::vector<uint8_t> additional_info_byte;
};

// Lumora HDR video, tag 0xB0.
struct LmraDescriptorFields {
    uint8_t version_major = 0;
    uint8_t version_minor = 0;
    uint8_t profile = 0;
    uint8_t level = 0;
    uint8_t rpu_present_flag = 0;
    uint8_t el_present_flag = 0;
    uint8_t bl_present_flag = 0;
    uint32_t dependency_pid = 0;             // only without a base layer
    uint8_t bl_signal_compatibility_id = 0;  // only when one byte is left for it
};

// One descriptor of a PMT. `raw` holds tag and length byte too; of the decoded records the one of the tag is filled.
struct StreamDescriptor {
    uint32_t tag = 0;
    uint32_t length = 0;
    std::string name = {};  // display name
    std::vector<uint8_t> raw = {};
    Eac3DescriptorFields eac3 = {};
    Ac4DescriptorFields ac4 = {};
    LmraDescriptorFields lmra = {};
};

// Parses the descriptor whose tag is the first of `bytes`, which end where the descriptor's loop ends; a descriptor
// that claims more than its loop holds is cut to it. `consumed` gets its size in bytes, at least 1 unless `bytes` is
// empty. Returns 0, or 11 after a finding (printed).
[[nodiscard]] int parse_descriptor(std::span<const uint8_t> bytes, StreamDescriptor& descriptor, uint32_t& consumed);
