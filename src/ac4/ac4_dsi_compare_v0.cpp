#include "ac4/ac4_dsi_compare_v0.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "ac4/ac4_dsi_fields.h"

namespace quorlin {

namespace {

// The number of bytes has no finding of its own here: a tag of another length is another tag.
bool language_tag_differs(const ac4_content_type& in_dsi, const ac4_content_type& in_toc) {
    if (!language_on_both_sides(in_dsi, in_toc)) return false;
    return in_dsi.n_language_tag_bytes != in_toc.n_language_tag_bytes || language_tag_bytes_differ(in_dsi, in_toc);
}

int compare_substream(const std::string& subject, const ac4_substream_dsi& dsi, const ac4_substream_info& toc) {
    const ac4_content_type& dsi_content = dsi.content_type;
    const ac4_content_type& toc_content = toc.content_type;
    const bool bitrate = dsi.b_substream_bitrate_indicator != 0 && toc.b_bitrate_indicator != 0;
    const bool add_ch_base = ac4_has_add_ch_base(dsi.channel_mode) && ac4_has_add_ch_base(toc.channel_mode);
    const bool content = dsi_content.b_content_type != 0 && toc_content.b_content_type != 0;
    const Ac4FieldRow rows[] = {
        {"ac4-dsi-substream-channel-mode", "channel_mode", channel_mode_number(dsi.channel_mode),
         channel_mode_number(toc.channel_mode)},
        {"ac4-dsi-substream-sf-multiplier", "sf_multiplier", dsi.dsi_sf_multiplier,
         dsi_sf_multiplier(toc.b_sf_multiplier, toc.sf_multiplier)},
        {"ac4-dsi-substream-b-bitrate-indicator", "b_bitrate_indicator", dsi.b_substream_bitrate_indicator,
         toc.b_bitrate_indicator},
        {"ac4-dsi-substream-bitrate-indicator", "bitrate_indicator", dsi.substream_bitrate_indicator,
         toc.bitrate_indicator, bitrate},
        {"ac4-dsi-substream-add-ch-base", "add_ch_base", dsi.add_ch_base, toc.add_ch_base, add_ch_base},
        {"ac4-dsi-substream-b-content-type", "b_content_type", dsi_content.b_content_type, toc_content.b_content_type},
        {"ac4-dsi-substream-content-classifier", "content_classifier", dsi_content.content_classifier,
         toc_content.content_classifier, content},
        {"ac4-dsi-substream-b-language-indicator", "b_language_indicator", dsi_content.b_language_indicator,
         toc_content.b_language_indicator, content},
        {"ac4-dsi-substream-language-tag-bytes", "language_tag_bytes", language_tag_differs(dsi_content, toc_content),
         false},
    };
    return compare_fields(subject, rows);
}

// The fields that a presentation of EMDF substreams alone does not have.
int compare_body(const std::string& subject, const ac4_presentation_v0_dsi& dsi, const ac4_presentation_info& toc) {
    const bool id = dsi.b_presentation_group_index != 0 && toc.b_presentation_id != 0;
    const bool hsf_ext = dsi.presentation_config != AC4_DSI_CONFIG_SINGLE && toc.b_single_substream == 0;
    const Ac4FieldRow rows[] = {
        {"ac4-dsi-mdcompat", "mdcompat", dsi.mdcompat, toc.mdcompat},
        {"ac4-dsi-b-presentation-group-index", "b_presentation_group_index", dsi.b_presentation_group_index,
         toc.b_presentation_id},
        {"ac4-dsi-presentation-group-index", "presentation_group_index", dsi.presentation_group_index,
         toc.presentation_id, id},
        {"ac4-dsi-frame-rate-multiply-info", "frame_rate_multiply_info", dsi.dsi_frame_rate_multiply_info,
         dsi_frame_rate_code(toc.frame_rate_factor)},
        {"ac4-dsi-presentation-emdf-version", "presentation_emdf_version", dsi.emdf_info.emdf_version,
         toc.emdf_info.emdf_version},
        {"ac4-dsi-presentation-key-id", "presentation_key_id", dsi.emdf_info.key_id, toc.emdf_info.key_id},
        {"ac4-dsi-presentation-channel-mask-v0", "presentation_channel_mask", dsi.presentation_channel_mask,
         toc.presentation_channel_mask, true, "does not match in toc"},
        {"ac4-dsi-presentation-b-hsf-ext", "b_hsf_ext", dsi.b_hsf_ext, toc.b_hsf_ext, hsf_ext},
        {"ac4-dsi-b-pre-virtualized", "b_pre_virtualized", dsi.b_pre_virtualized, toc.b_pre_virtualized},
    };
    return compare_fields(subject, rows);
}

int compare_emdf(const std::string& subject, const ac4_presentation_v0_dsi& dsi,
                 const ac4_presentation_info& presentation, const ac4_toc& toc) {
    return compare_emdf_substreams({"ac4-dsi-substream-emdf-version", "substream_emdf_version",
                                    "ac4-dsi-substream-key-id", "substream_key_id", "emdf_substreams"},
                                   subject, {dsi.b_add_emdf_substreams, dsi.emdf_substreams},
                                   {presentation.b_add_emdf_substreams, ac4_emdf_substreams(toc, presentation)});
}

}  // namespace

int compare_presentation_v0(size_t index, const ac4_presentation_v0_dsi& dsi, const ac4_presentation_info& presentation,
                            const ac4_toc& toc) {
    const std::string subject = "presentation " + std::to_string(index);
    const bool toc_emdf_only =
        presentation.b_single_substream == 0 && presentation.presentation_config == AC4_CONFIG_EMDF_ONLY;
    if (toc_emdf_only || dsi.presentation_config == AC4_CONFIG_EMDF_ONLY)
        return compare_emdf(subject, dsi, presentation, toc);
    int status = compare_body(subject, dsi, presentation);
    status |= compare_emdf(subject, dsi, presentation, toc);
    for (size_t i = 0; i < std::min(dsi.n_substreams, presentation.n_substreams); ++i)
        status |=
            compare_substream(subject_name("substream", i, subject), dsi.substreams[i], presentation.substreams[i]);
    return status;
}

}  // namespace quorlin
