#include "ac4_samples.h"

#include <cstdlib>

namespace {

const std::vector<Ac4Sample> SAMPLES = {
    // Headphone-rendered stereo as found in the field; the DSI names it twice.
    {"virtual",
     R"(bitstream_version:2=2 sequence_counter:10=1020 b_wait_frames:1=1 wait_frames:3=6 br_code:2=3 fs_index:1=1
frame_rate_index:4=2 b_iframe_global:1=1 b_single_presentation:1=1 b_payload_base:1=0 b_program_id:1=0
b_single_substream_group:1=1 presentation_version:3=6 mdcompat:3=0 b_presentation_id:1=1 presentation_id:v2=0
b_multiplier:1=0 emdf_version:2=0 key_id:3=0 b_emdf_payloads_substream_info:1=0 protection_length:4=4
protection_bits_primary:8=0x54 b_presentation_filter:1=0 group_index:3=0 b_pre_virtualized:1=0
b_add_emdf_substreams:1=0 b_alternative:1=0 b_pres_ndot:1=1 substream_index:2=0
b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=1 b_channel_coded:1=1 channel_mode:7=0x78 @rates
b_audio_ndot:1=1 substream_index:2=1 b_content_type:1=1 content_classifier:3=0 b_language_indicator:1=1
b_serialized_language_tag:1=0 n_language_tag_bytes:6=2 language_tag_bytes:8=0x65,0x6e n_substreams:2=2
substream_size:11=21,65 align)",
     R"(ac4_dsi_version:3=1 bitstream_version:7=2 fs_index:1=1 frame_rate_index:4=2 n_presentations:9=2 b_program_id:1=0
@bitrate
presentation_version:8=2 { presentation_config_v1:5=0x1F mdcompat:3=0 b_presentation_id:1=1 presentation_id:5=0
multiply:2=0 fraction:2=0 emdf_version:5=0 key_id:10=0 b_presentation_channel_coded:1=1 ch_mode:5=1
presentation_channel_mask_v1:24=1 b_presentation_core_differs:1=0 b_presentation_filter:1=0
b_substreams_present:1=1 b_hsf_ext:1=0 b_channel_coded:1=1 n_substreams:8=1 sf:2=0 b_bitrate:1=0 mask:24=1
b_content_type:1=1 content_classifier:3=0 b_language_indicator:1=1 n_language_tag_bytes:6=2
language_tag_bytes:8=0x65,0x6e b_pre_virtualized:1=1 b_add_emdf_substreams:1=0 bitrate_info:1=0 b_alternative:1=0
align de_indicator:8=0x80 }
presentation_version:8=1 { presentation_config_v1:5=0x1F copy_mdcompat:3=0 b_presentation_id:1=1 presentation_id:5=0
multiply:2=0 fraction:2=0 emdf_version:5=0 key_id:10=0 b_presentation_channel_coded:1=1 ch_mode:5=1
presentation_channel_mask_v1:24=1 b_presentation_core_differs:1=0 b_presentation_filter:1=0
b_substreams_present:1=1 b_hsf_ext:1=0 b_channel_coded:1=1 n_substreams:8=1 sf:2=0 b_bitrate:1=0 mask:24=1
b_content_type:1=1 content_classifier:3=0 b_language_indicator:1=1 n_language_tag_bytes:6=2
language_tag_bytes:8=0x65,0x6e b_pre_virtualized:1=0 b_add_emdf_substreams:1=0 bitrate_info:1=0 b_alternative:1=0
align de_indicator:8=0x80 })"},
    // Two presentations: music and effects with dialogue, and one of five groups that has everything.
    {"several",
     R"(bitstream_version:2=2 sequence_counter:10=1 b_wait_frames:1=0 fs_index:1=1 frame_rate_index:4=11 b_iframe_global:1=0
b_single_presentation:1=0 b_more_presentations:1=1 n_presentations_minus2:v2=0 b_payload_base:1=1
payload_base_minus1:5=31 payload_base:v3=70 b_program_id:1=1 short_program_id:16=0xBEEF b_program_uuid_present:1=1
program_uuid:16=1,2,3,4,5,6,7,8
b_single_substream_group:1=0 presentation_config:e3.2=0 presentation_version:2=2 mdcompat:3=3 b_presentation_id:1=0
b_frame_rate_fraction:1=0 @emdf b_presentation_filter:1=0 b_multi_pid:1=0 group_index:e3.2=2,0 @tail
b_single_substream_group:1=0 presentation_config:e3.2=5 presentation_version:2=2 mdcompat:3=5 b_presentation_id:1=1
presentation_id:v2=21 b_frame_rate_fraction:1=1 b_frame_rate_fraction_is_4:1=1 emdf_version:e2.2=3 key_id:e3.3=300
b_emdf_payloads_substream_info:1=1 substream_index:e2.2=40 protection_length:4=0xE bits:32=1,2,3,4,5
b_presentation_filter:1=1 b_enable_presentation:1=1 b_multi_pid:1=1 n_substream_groups_minus2:2=3
n_substream_groups:v2=0 group_index:e3.2=0,1,2,1,0 b_pre_virtualized:1=1 b_add_emdf_substreams:1=1 b_alternative:1=1
b_pres_ndot:1=1 substream_index:e2.2=3 n_add_emdf_substreams:2=0 n_add_emdf_substreams:v2=0 @emdf @emdf @emdf
emdf_version:e2.2=7 key_id:e3.3=15 b_emdf_payloads_substream_info:1=0 protection_length:4=0
b_substreams_present:1=1 b_hsf_ext:1=1 b_single_substream:1=0 n_lf_substreams_minus2:2=0 b_channel_coded:1=1
channel_mode:4=14 b_sf_multiplier:1=1 sf_multiplier:1=1 b_bitrate_info:1=1 bitrate_indicator:5=0x16 b_audio_ndot:1=1
substream_index:e2.2=5 hsf_substream_index:e2.2=6 channel_mode:1=0 b_sf_multiplier:1=1 sf_multiplier:1=0
b_bitrate_info:1=1 bitrate_indicator:3=6 b_audio_ndot:1=0 substream_index:e2.2=2 hsf_substream_index:e2.2=3
b_content_type:1=1 content_classifier:3=2 b_language_indicator:1=1 b_serialized_language_tag:1=0
n_language_tag_bytes:6=3 language_tag_bytes:8=1,2,3
b_substreams_present:1=0 b_hsf_ext:1=1 b_single_substream:1=1 b_channel_coded:1=1 channel_mode:4=12 @rates
b_audio_ndot:1=1 b_content_type:1=1 content_classifier:3=1 b_language_indicator:1=1 b_serialized_language_tag:1=1
b_start_tag:1=1 language_tag_chunk:16=0xFFFF
b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=1 b_channel_coded:1=1 channel_mode:2=2 @rates
b_audio_ndot:1=1 substream_index:e2.2=5 b_content_type:1=0 n_substreams:2=0 n_substreams:v2=1 b_more_bits:1=1
substream_size:10=1 substream_size:v2=40 substream_size:11=4,3,2,1 align)",
     R"(ac4_dsi_version:3=1 bitstream_version:7=2 fs_index:1=1 frame_rate_index:4=11 n_presentations:9=2 b_program_id:1=1
short_program_id:16=0xBEEF b_uuid:1=1 program_uuid:16=1,2,3,4,5,6,7,8
@bitrate
presentation_version:8=1 { presentation_config_v1:5=0 mdcompat:3=3 b_presentation_id:1=0 multiply:2=0 fraction:2=0
emdf_version:5=0 key_id:10=0 b_presentation_channel_coded:1=1 ch_mode:5=4 mask:24=0x47
b_presentation_core_differs:1=0 b_presentation_filter:1=0 b_multi_pid:1=0
b_substreams_present:1=1 b_hsf_ext:1=0 b_channel_coded:1=1 n_substreams:8=1 sf:2=0 b_bitrate:1=0 mask:24=1
b_content_type:1=0
b_substreams_present:1=1 b_hsf_ext:1=1 b_channel_coded:1=1 n_substreams:8=2 sf:2=2 b_bitrate:1=0 mask:24=0x47 sf:2=1
b_bitrate:1=0 mask:24=2 b_content_type:1=1 content_classifier:3=2 b_language_indicator:1=1 n_language_tag_bytes:6=3
language_tag_bytes:8=1,2,3 b_pre_virtualized:1=0 b_add_emdf_substreams:1=0 b_bitrate_info:1=0 b_alternative:1=0 }
presentation_version:8=1 { presentation_config_v1:5=5 mdcompat.1:3=5 b_presentation_id.1:1=1 presentation_id:5=21
multiply.1:2=0 fraction:2=2 emdf_version.1:5=3 key_id.1:10=300 channel_coded.1:1=1 ch_mode.1:5=4 mask.1:24=0x47
core_differs:1=0 filter:1=1 enable:1=1 n_filter_bytes:8=0 b_multi_pid:1=1 n_substream_groups_minus2:3=3
present:1=1 hsf:1=1 coded:1=1 n_substreams:8=2 sf.1:2=2 b_bitrate:1=1 bitrate:5=1 mask:24=0x47 sf:2=1 b_bitrate:1=0
mask.2:24=2 b_content:1=1 classifier:3=2 b_language:1=1 n_bytes:6=3 tag:8=1,2,3
present:1=0 hsf:1=1 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=3 content:4=9 n_language_tag_bytes:7=0x41 tag:8=9
present:1=1 hsf:1=0 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=1 b_content:1=0
present:1=0 hsf:1=1 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=3 content:5=0x13 n_bytes:6=0
present:1=1 hsf:1=1 coded:1=1 n:8=2 sf:2=2 b_bitrate:1=0 mask:24=0x47 sf:2=1 b_bitrate:1=0 mask:24=2 content:5=0x15
n_bytes:6=3 tag:8=1,2,3 b_pre_virtualized:1=1 b_add_emdf:1=1 n_add_emdf:7=4 emdf:15=0,0,0 sub_emdf_version:5=7
sub_key_id:10=15 b_bitrate_info:1=1 bit_rate_mode:2=0 bit_rate:32=1,2 b_alternative:1=1 align name_len:16=3
name:24=0x656E67 n_targets:5=2 target:11=1,2 align de_indicator:6=0 b_extended_presentation_id:1=1 extended:9=21
rest:24=0 })"},
    // 7.1.4 without a centre and with one pair of top channels, at four times the frame rate.
    {"immersive",
     R"(bitstream_version:2=2 sequence_counter:10=1 b_wait_frames:1=1 wait_frames:3=0 fs_index:1=0 frame_rate_index:4=4
b_iframe_global:1=1 b_single_presentation:1=1 b_payload_base:1=0 b_program_id:1=0
b_single_substream_group:1=1 presentation_version:2=2 mdcompat:3=3 b_presentation_id:1=0 b_multiplier:2=3 @emdf
b_presentation_filter:1=0 group_index:3=0 @tail
b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=1 b_channel_coded:1=1 channel_mode:8=0xFD
b_4_back_channels_present:1=1 b_centre_present:1=0 top_channels_present:2=1 b_bitrate_info:1=0
b_audio_ndot:1=1,0,1,0 substream_index:e2.2=0 b_content_type:1=0 @no_sizes)",
     R"(ac4_dsi_version:3=1 bitstream_version:7=2 fs_index:1=0 frame_rate_index:4=4 n_presentations:9=1 b_program_id:1=0
@bitrate
presentation_version:8=1 { presentation_config_v1:5=31 mdcompat:3=3 b_presentation_id:1=0 multiply:2=2 fraction:2=0
emdf:15=0 channel_coded:1=1 ch_mode:5=12 back:1=1 pairs:2=1 mask:24=0xCD differs:1=1 core_coded:1=1 core_mode:2=3
filter:1=0
present:1=1 hsf:1=0 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=0xCD b_content:1=0 b_pre_virtualized:1=0
b_add_emdf:1=0 b_bitrate_info:1=0 b_alternative:1=0 })"},
    // A group of objects of every kind and one of advanced joint object coding, at twice the frame rate.
    {"objects",
     R"(bitstream_version:2=2 sequence_counter:10=1 b_wait_frames:1=0 fs_index:1=1 frame_rate_index:4=7 b_iframe_global:1=1
b_single_presentation:1=1 b_payload_base:1=0 b_program_id:1=0
b_single_substream_group:1=0 presentation_config:3=2 presentation_version:2=2 mdcompat:3=4 b_presentation_id:1=0
b_multiplier:1=1 @emdf b_presentation_filter:1=0 b_multi_pid:1=0 group_index:3=0,1 @tail
b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=0 n_lf_substreams_minus2:2=2 b_channel_coded:1=0
b_oamd_substream:1=1 b_oamd_ndot:1=1 substream_index:e2.2=9
b_ajoc:1=0 n_objects_code:3=4 b_dynamic_objects:1=0 b_bed_objects:1=1 b_bed_start:1=1 b_ch_assign_code:1=0
b_nonstd:1=1 mask:17=0x1FFFF @rates b_audio_ndot:1=1,1 substream_index:e2.2=0
b_ajoc:1=0 n_objects_code:3=4 b_dynamic_objects:1=1 b_lfe:1=1 @rates b_audio_ndot:1=1,1 substream_index:e2.2=1
b_ajoc:1=0 n_objects_code:3=4 b_dynamic_objects:1=0 b_bed_objects:1=0 b_isf:1=1 b_isf_start:1=1 isf_config:3=5
@rates b_audio_ndot:1=1,1 substream_index:e2.2=2
b_ajoc:1=0 n_objects_code:3=4 b_dynamic_objects:1=0 b_bed_objects:1=0 b_isf:1=0 res_bytes:4=2 res:8=255,255 @rates
b_audio_ndot:1=1,1 substream_index:e2.2=3 b_content_type:1=0
b_substreams_present:1=0 b_hsf_ext:1=0 b_single_substream:1=0 n_lf_substreams_minus2:2=1 b_channel_coded:1=0
b_oamd_substream:1=1 b_oamd_ndot:1=1
b_ajoc:1=1 b_lfe:1=1 b_static_dmx:1=0 n_fullband_dmx_signals_minus1:4=8 b_dyn_objects_only:1=1
b_oamd_common_data_present:1=1 default_ratio:1=0 ratio:5=31 distribute:1=1 b_additional_data:1=1
add_data_bytes_minus1:1=1 add_data_bytes:v2=1 data:8=255,255,255 n_fullband_upmix_signals_minus1:4=15
n_fullband_upmix_signals:v3=4 b_dyn_objects_only:1=1 @rates b_audio_ndot:1=0,0
b_ajoc:1=1 b_lfe:1=1 b_static_dmx:1=1 b_oamd:1=0 n_fullband_upmix_signals_minus1:4=0 isf:5=13 @rates
b_audio_ndot:1=0,0
b_ajoc:1=1 b_lfe:1=0 b_static_dmx:1=0 n_fullband_dmx_signals_minus1:4=0 list:4=0 channel:4=9 b_oamd:1=1
b_default_screen_size_ratio:1=1 distribute:1=1 b_additional_data:1=0 n_fullband_upmix_signals_minus1:4=8 list:4=0
n_bed_signals_minus1:4=2 channel:4=1,2,3 @rates b_audio_ndot:1=0,0 b_content_type:1=0 @no_sizes)",
     R"(ac4_dsi_version:3=1 bitstream_version:7=2 fs_index:1=1 frame_rate_index:4=7 n_presentations:9=1 b_program_id:1=0
@bitrate
presentation_version:8=1 { presentation_config_v1:5=2 mdcompat:3=4 b_presentation_id:1=0 multiply:2=1 fraction:2=0
emdf:15=0 channel_coded:1=0 differs:1=0 filter:1=0 b_multi_pid:1=0
present:1=1 hsf:1=0 coded:1=0 n:8=4 sf:2=0 b_bitrate:1=0 ajoc:1=0 bed:1=1 dynamic:1=0 isf:1=0 reserved:1=0 sf:2=0
b_bitrate:1=0 ajoc:1=0 bed:1=0 dynamic.1:1=1 isf:1=0 reserved:1=0 sf:2=0 b_bitrate:1=0 ajoc:1=0 bed:1=0 dynamic:1=0
isf.2:1=1 reserved:1=0 sf:2=0 b_bitrate:1=0 ajoc:1=0 bed.3:1=0 dynamic:1=0 isf:1=0 reserved:1=0 b_content:1=0
present:1=0 hsf:1=0 coded:1=0 n:8=3 sf:2=0 b_bitrate:1=0 ajoc.0:1=1 static:1=0 n_dmx:4=8 n_umx:6=15 bed:1=0
dynamic:1=1 isf:1=0 reserved:1=0 sf:2=0 b_bitrate:1=0 ajoc:1=1 static.1:1=1 n_umx:6=0 bed:1=0 dynamic:1=0 isf:1=1
reserved:1=0 sf:2=0 b_bitrate:1=0 ajoc:1=1 static.2:1=0 n_dmx:4=0 n_umx:6=8 bed:1=1 dynamic:1=1 isf:1=0 reserved:1=0
b_content:1=0 b_pre_virtualized:1=0 b_add_emdf:1=0 b_bitrate_info:1=0 b_alternative:1=0 })"},
    // Main with dialogue enhancement, without and with an associated group; EMDF alone; a configuration of the future.
    {"configs",
     R"(bitstream_version:2=2 sequence_counter:10=1 b_wait_frames:1=0 fs_index:1=1 frame_rate_index:4=0 b_iframe_global:1=1
b_single_presentation:1=0 b_more_presentations:1=1 n_presentations_minus2:v2=2 b_payload_base:1=0 b_program_id:1=0
b_single_substream_group:1=0 presentation_config:e3.2=1 presentation_version:2=2 mdcompat:3=1 b_presentation_id:1=0
b_multiplier:1=0 @emdf b_presentation_filter:1=0 b_multi_pid:1=0 group_index:3=0,1 @tail
b_single_substream_group:1=0 presentation_config:e3.2=4 presentation_version:2=2 mdcompat:3=1 b_presentation_id:1=0
b_multiplier:1=0 @emdf b_presentation_filter:1=0 b_multi_pid:1=0 group_index:3=1,1,0 @tail
b_single_substream_group:1=0 presentation_config:e3.2=6 presentation_version:2=2 n_add_emdf_substreams:2=1 @emdf
b_single_substream_group:1=0 presentation_config:e3.2=8 presentation_version:2=2 mdcompat:3=1 b_presentation_id:1=0
b_multiplier:1=0 @emdf b_presentation_filter:1=0 b_multi_pid:1=0 n_skip_bytes:5=1 b_more_skip_bytes:1=1 more:v2=1
skipped:264=0 @tail
b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=1 b_channel_coded:1=1 channel_mode:4=14 @rates
b_audio_ndot:1=1 substream_index:e2.2=0 b_content_type:1=0
b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=1 b_channel_coded:1=1 channel_mode:7=0x7D @rates
add_ch_base:1=1 b_audio_ndot:1=1 substream_index:e2.2=0 b_content_type:1=0 @no_sizes)",
     R"(ac4_dsi_version:3=1 bitstream_version:7=2 fs_index:1=1 frame_rate_index:4=0 n_presentations:9=4 b_program_id:1=0
@bitrate
presentation_version:8=1 { config:5=1 mdcompat:3=1 b_presentation_id:1=0 multiply:2=0 fraction:2=0 emdf:15=0
channel_coded:1=1 ch_mode:5=10 mask:24=0x40047 differs:1=0 filter:1=0 multi:1=0
present:1=1 hsf:1=0 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=0x47 b_content:1=0
present:1=1 hsf:1=0 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=0x40047 b_content:1=0 b_pre_virtualized:1=0
b_add_emdf:1=0 b_bitrate_info:1=0 b_alternative:1=0 }
presentation_version:8=1 { config:5=4 mdcompat:3=1 b_presentation_id:1=0 multiply:2=0 fraction:2=0 emdf:15=0
channel_coded:1=1 ch_mode:5=10 mask:24=0x40047 differs:1=0 filter:1=0 multi:1=0
present:1=1 hsf:1=0 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=0x40047 b_content:1=0
present:1=1 hsf:1=0 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=0x40047 b_content:1=0
present:1=1 hsf:1=0 coded:1=1 n:8=1 sf:2=0 b_bitrate:1=0 mask:24=0x47 b_content:1=0 b_pre_virtualized:1=0
b_add_emdf:1=0 b_bitrate_info:1=0 b_alternative:1=0 }
presentation_version:8=1 { config:5=6 n_add_emdf:7=1 emdf_version:5=0 key_id.2:10=0 b_bitrate_info:1=0
b_alternative:1=0 }
presentation_version:8=1 { config:5=8 mdcompat:3=1 b_presentation_id:1=0 multiply:2=0 fraction:2=0 emdf:15=0
channel_coded:1=0 differs:1=0 filter:1=0 b_multi_pid:1=0 n_skip_bytes:7=1 skipped:8=255 b_pre_virtualized:1=0
b_add_emdf:1=0 b_bitrate_info:1=0 b_alternative:1=0 })"},
    // Version-0 presentations: single, three substreams, EMDF alone, and one that holds a version-1 presentation.
    {"old",
     R"(bitstream_version:2=1 sequence_counter:10=1 b_wait_frames:1=0 fs_index:1=1 frame_rate_index:4=3 b_iframe_global:1=1
b_single_presentation:1=0 b_more_presentations:1=1 n_presentations_minus2:v2=2 b_payload_base:1=0
b_single_substream:1=1 presentation_version:1=0 mdcompat:3=2 b_presentation_id:1=1 presentation_id:v2=9
b_multiplier:2=3 @emdf channel_mode:7=0x7B b_sf_multiplier:1=0 b_bitrate_info:1=1 bitrate_indicator:3=2
add_ch_base:1=1 b_content_type:1=1 content_classifier:3=1 b_language_indicator:1=1 b_serialized_language_tag:1=0
n_language_tag_bytes:6=2 language_tag_bytes:8=1,2 b_iframe:1=1,0,0,0 substream_index:e2.2=0 b_pre_virtualized:1=0
b_add_emdf_substreams:1=0
b_single_substream:1=0 presentation_config:e3.2=3 presentation_version:1=0 mdcompat:3=4 b_presentation_id:1=0
b_multiplier:1=0 @emdf b_hsf_ext:1=1 channel_mode:4=14 b_sf_multiplier:2=3 b_bitrate_info:1=0 b_content_type:1=0
b_iframe:1=1 substream_index:e2.2=3 hsf_substream_index:e2.2=4 channel_mode:1=0 @rates b_content_type:1=0
b_iframe:1=1 substream_index:e2.2=3 channel_mode:2=2 @rates b_content_type:1=0 b_iframe:1=1 substream_index:e2.2=3
b_pre_virtualized:1=1 b_add_emdf_substreams:1=0
b_single_substream:1=0 presentation_config:e3.2=6 presentation_version:1=0 n_add_emdf_substreams:2=1 @emdf
b_single_substream:1=0 presentation_config:e3.2=7 presentation_version:1=0 mdcompat:3=1 b_presentation_id:1=0
b_multiplier:1=0 @emdf b_hsf_ext:1=0 n_skip_bytes:5=6 b_more_skip_bytes:1=0
b_single_substream_group:1=1 b_presentation_id:1=0 b_multiplier:1=0 @emdf b_presentation_filter:1=0
b_substreams_present:1=1 b_hsf_ext:1=0 b_single_substream:1=1 b_channel_coded:1=1 sus_ver:1=1 channel_mode:2=2
@rates b_audio_ndot:1=1 substream_index:2=0 b_content_type:1=0 b_pre_virtualized:1=0 b_add_emdf_substreams:1=0
b_alternative:1=0 b_pres_ndot:1=0 substream_index:2=0 padding:7=0 skipped:8=255 b_pre_virtualized:1=0
b_add_emdf_substreams:1=0 @no_sizes)",
     R"(ac4_dsi_version:3=1 bitstream_version:7=1 fs_index:1=1 frame_rate_index:4=3 n_presentations:9=4
@bitrate
presentation_version:8=0 { config:5=31 mdcompat:3=2 b_group_index:1=1 group_index:5=9 multiply:2=2 emdf:5=0 key:10=0
mask:24=0x20047 channel_mode:5=8 sf:2=0 b_bitrate:1=1 bitrate:5=1 add_ch_base:1=1 b_content:1=1 classifier:3=1
b_language:1=1 n_bytes:6=2 tag:8=1,2 b_pre_virtualized:1=0 b_add_emdf:1=0 }
presentation_version:8=0 { config:5=3 mdcompat:3=4 b_group_index:1=0 multiply:2=0 emdf:15=0 mask.1:24=0x47 hsf:1=1
channel_mode:5=4 sf.1:2=2 b_bitrate:1=0 b_content:1=0 channel_mode.1:5=0 sf:2=0 b_bitrate:1=0 b_content:1=0
channel_mode:5=1 sf:2=0 b_bitrate.2:1=0 b_content:1=0 b_pre_virtualized.1:1=1 b_add_emdf:1=0 }
presentation_version:8=0 { config:5=6 n_add_emdf:7=1 sub_emdf:5=0 sub_key:10=0 }
presentation_version:8=0 { config:5=7 mdcompat:3=1 b_group_index:1=0 multiply:2=0 emdf:15=0 mask:24=0 hsf:1=0
n_skip_bytes:7=1 skipped:8=255 b_pre_virtualized:1=0 b_add_emdf.3:1=0 })"},
};

}  // namespace

const std::vector<Ac4Sample>& ac4_samples() {
    return SAMPLES;
}

const Ac4Sample& ac4_sample(const std::string& name) {
    for (const Ac4Sample& sample : SAMPLES)
        if (sample.name == name) return sample;
    std::abort();
}
