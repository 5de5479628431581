#include "ac4/ac4_dsi_compare_v1.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "ac4/ac4_derived_channels.h"
#include "ac4/ac4_dsi_fields.h"
#include "bits/finding.h"

namespace quorlin {

namespace {

// The fields before the channel layout.
int compare_head(const std::string& subject, const ac4_presentation_v1_dsi& dsi, const ac4_presentation_v1_info& toc) {
    // The extended identifier stands for one that the field's five bits cannot hold.
    const bool extended = dsi.b_extended_presentation_id != 0;
    const uint32_t id = extended ? dsi.extended_presentation_id : dsi.presentation_id;
    const bool has_id = extended || dsi.b_presentation_id != 0;
    const Ac4FieldRow rows[] = {
        {"ac4-dsi-mdcompat", "mdcompat", dsi.mdcompat, toc.mdcompat},
        {"ac4-dsi-b-presentation-id", "b_presentation_id", has_id, toc.b_presentation_id},
        {"ac4-dsi-presentation-id", "presentation_id", id, toc.presentation_id, has_id && toc.b_presentation_id != 0},
        {"ac4-dsi-frame-rate-multiply-info", "frame_rate_multiply_info", dsi.dsi_frame_rate_multiply_info,
         dsi_frame_rate_code(toc.frame_rate_factor)},
        {"ac4-dsi-frame-rate-fraction-info", "frame_rate_fraction_info", dsi.dsi_frame_rate_fraction_info,
         dsi_frame_rate_code(toc.frame_rate_fraction)},
        {"ac4-dsi-presentation-emdf-version", "presentation_emdf_version", dsi.emdf_info.emdf_version,
         toc.emdf_info.emdf_version},
        {"ac4-dsi-presentation-key-id", "presentation_key_id", dsi.emdf_info.key_id, toc.emdf_info.key_id},
    };
    return compare_fields(subject, rows);
}

Ac4FieldRow substream_group_row(const ac4_presentation_v1_dsi& dsi, const ac4_presentation_v1_info& toc) {
    return {"ac4-dsi-n-substream-groups",
            "n_substream_groups",
            static_cast<int64_t>(dsi.substream_groups.size()),
            toc.n_group_indices,
            true,
            "does not match in toc"};
}

// Channel layout and core; the count of groups is tested among them.
int compare_channels(const std::string& subject, const ac4_presentation_v1_dsi& dsi,
                     const ac4_presentation_v1_info& toc) {
    const bool coded = dsi.b_presentation_channel_coded != 0 && toc.b_presentation_channel_coded != 0;
    const bool immersive =
        coded && ac4_is_immersive_mode(dsi.dsi_presentation_ch_mode) && ac4_is_immersive_mode(toc.presentation_ch_mode);
    const bool toc_core = toc.pres_ch_mode_core != Ac4ChannelMode::NONE;
    const bool both_core_modes = toc_core && dsi.b_presentation_core_channel_coded != 0;
    const Ac4FieldRow rows[] = {
        {"ac4-dsi-b-presentation-channel-coded", "b_presentation_channel_coded", dsi.b_presentation_channel_coded,
         toc.b_presentation_channel_coded},
        {"ac4-dsi-presentation-ch-mode", "presentation_ch_mode", channel_mode_number(dsi.dsi_presentation_ch_mode),
         channel_mode_number(toc.presentation_ch_mode), coded},
        substream_group_row(dsi, toc),
        {"ac4-dsi-pres-b-4-back-channels-present", "pres_b_4_back_channels_present", dsi.pres_b_4_back_channels_present,
         toc.pres_b_4_back_channels_present, immersive},
        {"ac4-dsi-pres-top-channel-pairs", "pres_top_channel_pairs", dsi.pres_top_channel_pairs,
         toc.pres_top_channel_pairs, immersive, "does not match top_channels_present in toc."},
        {"ac4-dsi-presentation-channel-mask", "presentation_channel_mask", dsi.presentation_channel_mask_v1,
         toc.presentation_channel_mask, coded, "does not match pre_channel_mask in toc."},
        {"ac4-dsi-b-presentation-core-differs", "b_presentation_core_differs", dsi.b_presentation_core_differs,
         toc_core, true, "does not match the result of \"pres_ch_mode_core != -1\" in toc."},
        {"ac4-dsi-b-presentation-core-channel-coded", "b_presentation_core_channel_coded",
         dsi.b_presentation_core_channel_coded, toc_core, dsi.b_presentation_core_differs != 0,
         "does not match the result of \"pres_ch_mode_core != -1\" in toc."},
        {"ac4-dsi-presentation-channel-mode-core", "dsi_presentation_channel_mode_core",
         dsi.dsi_presentation_channel_mode_core, channel_mode_number(toc.pres_ch_mode_core) - 3, both_core_modes,
         "does not match the result of \"pres_ch_mode_core - 3\" in toc."},
    };
    return compare_fields(subject, rows);
}

int compare_filter(const std::string& subject, const ac4_presentation_v1_dsi& dsi,
                   const ac4_presentation_v1_info& toc) {
    const bool filter = dsi.b_presentation_filter != 0 && toc.b_presentation_filter != 0;
    const bool multi_pid = dsi.presentation_config_v1 != AC4_DSI_CONFIG_SINGLE && toc.b_single_substream_group == 0;
    const Ac4FieldRow rows[] = {
        {"ac4-dsi-b-presentation-filter", "b_presentation_filter", dsi.b_presentation_filter,
         toc.b_presentation_filter},
        {"ac4-dsi-b-enable-presentation", "b_enable_presentation", dsi.b_enable_presentation, toc.b_enable_presentation,
         filter},
        {"ac4-dsi-n-filter-bytes", "n_filter_bytes", dsi.n_filter_bytes, 0, true, "should be 0."},
        {"ac4-dsi-b-multi-pid", "b_multi_pid", dsi.b_multi_pid, toc.b_multi_pid, multi_pid},
    };
    return compare_fields(subject, rows);
}

// An immersive stereo presentation is virtualized whatever the table of contents says.
int compare_pre_virtualized(size_t index, const Ac4DsiPresentation& entry, const ac4_presentation_v1_info& toc) {
    const uint8_t b_pre_virtualized = entry.v1->b_pre_virtualized;
    if (entry.presentation_version != AC4_IMS_PRESENTATION_VERSION) {
        const Ac4FieldRow rows[] = {
            {"ac4-dsi-b-pre-virtualized", "b_pre_virtualized", b_pre_virtualized, toc.b_pre_virtualized}};
        return compare_fields("presentation " + std::to_string(index), rows);
    }
    if (b_pre_virtualized == 1) return 0;
    return fail(1, "ac4-dsi-ims-pre-virtualized",
                "[SV]   : ERROR: b_pre_virtualized of presentation %zu (IMS) info should be 1.\n", index);
}

int compare_emdf(const std::string& subject, const ac4_presentation_v1_dsi& dsi,
                 const ac4_presentation_v1_info& presentation, const ac4_toc& toc) {
    return compare_emdf_substreams(
        {"ac4-dsi-emdf-version", "emdf_version", "ac4-dsi-key-id", "key_id", "emdf substream"}, subject,
        {dsi.b_add_emdf_substreams, dsi.emdf_substreams},
        {presentation.b_add_emdf_substreams, ac4_emdf_substreams(toc, presentation)});
}

// The group's own fields; the content comes last.
int compare_group(const std::string& subject, const ac4_substream_group_dsi& dsi, const ac4_substream_group_info& toc) {
    const ac4_content_type& dsi_content = dsi.content_type;
    const ac4_content_type& toc_content = toc.content_type;
    const bool content = dsi_content.b_content_type != 0 && toc_content.b_content_type != 0;
    const Ac4FieldRow rows[] = {
        {"ac4-dsi-group-b-substreams-present", "b_substreams_present", dsi.b_substreams_present,
         toc.b_substreams_present},
        {"ac4-dsi-group-b-hsf-ext", "b_hsf_ext", dsi.b_hsf_ext, toc.b_hsf_ext},
        {"ac4-dsi-group-b-channel-coded", "b_channel_coded", dsi.b_channel_coded, toc.b_channel_coded},
        {"ac4-dsi-group-n-substreams", "n_substreams", static_cast<int64_t>(dsi.substreams.size()),
         toc.n_lf_substreams},
        {"ac4-dsi-group-b-content-type", "b_content_type", dsi_content.b_content_type, toc_content.b_content_type},
        {"ac4-dsi-group-content-classifier", "content_classifier", dsi_content.content_classifier,
         toc_content.content_classifier, content},
        {"ac4-dsi-group-b-language-indicator", "b_language_indicator", dsi_content.b_language_indicator,
         toc_content.b_language_indicator, content},
        {"ac4-dsi-group-n-language-tag-bytes", "n_language_tag_bytes", dsi_content.n_language_tag_bytes,
         toc_content.n_language_tag_bytes, language_on_both_sides(dsi_content, toc_content)},
    };
    int status = compare_fields(subject, rows);
    if (language_tag_bytes_differ(dsi_content, toc_content)) {
        // No blank after the colon in this one; this is deliberate.
        status |= fail(1, "ac4-dsi-group-language-tag-bytes",
                       "[SV]   : ERROR:language_tag_bytes of %s info in dsi does not match in toc.\n", subject.c_str());
    }
    return status;
}

// How the substreams of a group are to be taken.
struct SubstreamKind {
    bool ims;                // the DSI's presentation is immersive stereo
    bool dsi_channel_coded;  // the group, in the DSI
    bool channel_coded;      // in both
    bool objects;            // in both
};

int compare_substream(const std::string& subject, const SubstreamKind& kind, const ac4_group_substream_dsi& dsi,
                      const ac4_group_substream& toc, uint32_t toc_channel_mask) {
    const bool ajoc = kind.objects && dsi.b_ajoc != 0 && toc.b_ajoc != 0;
    const bool dynamic_dmx = ajoc && dsi.b_static_dmx == 0 && toc.b_static_dmx == 0;
    const Ac4FieldRow rows[] = {
        {"ac4-dsi-group-sf-multiplier", "dsi_sf_multiplier", dsi.dsi_sf_multiplier,
         dsi_sf_multiplier(toc.b_sf_multiplier, toc.sf_multiplier)},
        {"ac4-dsi-ims-substream-channel-mask", "IMS dsi_substream_channel_mask", dsi.dsi_substream_channel_mask, 1,
         kind.ims && kind.dsi_channel_coded, "does not eqaul to 1."},
        {"ac4-dsi-group-substream-channel-mask", "dsi_substream_channel_mask", dsi.dsi_substream_channel_mask,
         toc_channel_mask, !kind.ims && kind.channel_coded},
        {"ac4-dsi-b-ajoc", "b_ajoc", dsi.b_ajoc, toc.b_ajoc, kind.objects},
        {"ac4-dsi-b-static-dmx", "b_static_dmx", dsi.b_static_dmx, toc.b_static_dmx, ajoc},
        {"ac4-dsi-n-dmx-objects-minus1", "n_dmx_objects_minus1", dsi.n_dmx_objects_minus1, toc.n_dmx_objects_minus1,
         dynamic_dmx},
        {"ac4-dsi-n-umx-objects-minus1", "n_umx_objects_minus1", dsi.n_umx_objects_minus1, toc.n_umx_objects_minus1,
         ajoc},
        {"ac4-dsi-contains-bed-objects", "b_substream_contains_bed_objects", dsi.b_substream_contains_bed_objects,
         toc.b_substream_contains_bed_objects, kind.objects},
        {"ac4-dsi-contains-dynamic-objects", "b_substream_contains_dynamic_objects",
         dsi.b_substream_contains_dynamic_objects, toc.b_substream_contains_dynamic_objects, kind.objects},
        {"ac4-dsi-contains-isf-objects", "b_substream_contains_ISF_objects", dsi.b_substream_contains_ISF_objects,
         toc.b_substream_contains_ISF_objects, kind.objects},
    };
    return compare_fields(subject, rows);
}

int compare_groups(const std::string& presentation_subject, const Ac4DsiPresentation& entry,
                   const ac4_presentation_v1_info& presentation, const ac4_toc& toc) {
    const Ac4PresentationKind toc_kind = ac4_presentation_kind(presentation.presentation_version);
    const std::span<const uint16_t> indices = ac4_group_indices(toc, presentation);
    int status = 0;
    for (size_t i = 0; i < std::min(entry.v1->substream_groups.size(), indices.size()); ++i) {
        const ac4_substream_group_dsi& dsi = entry.v1->substream_groups[i];
        const ac4_substream_group_info& group = toc.substream_groups[indices[i]];
        const std::span<const ac4_group_substream> substreams = ac4_group_substreams(toc, group);
        const std::string subject = subject_name("group", i, presentation_subject);
        const SubstreamKind kind{.ims = entry.presentation_version == AC4_IMS_PRESENTATION_VERSION,
                                 .dsi_channel_coded = dsi.b_channel_coded != 0,
                                 .channel_coded = dsi.b_channel_coded != 0 && group.b_channel_coded != 0,
                                 .objects = dsi.b_channel_coded == 0 && group.b_channel_coded == 0};
        status |= compare_group(subject, dsi, group);
        for (size_t k = 0; k < std::min(dsi.substreams.size(), substreams.size()); ++k)
            status |= compare_substream(subject_name("substream", k, subject), kind, dsi.substreams[k], substreams[k],
                                        ac4_substream_channel_mask(substreams[k], toc_kind));
    }
    return status;
}

}  // namespace

int compare_presentation_v1(size_t index, const Ac4DsiPresentation& entry, const ac4_presentation_v1_info& presentation,
                            const ac4_toc& toc) {
    const std::string subject = "presentation " + std::to_string(index);
    const ac4_presentation_v1_dsi& dsi = *entry.v1;
    const bool single = presentation.b_single_substream_group != 0;
    int status = 0;
    if (single && dsi.presentation_config_v1 != AC4_DSI_CONFIG_SINGLE) {
        status |= fail(
            1, "ac4-dsi-single-group-config",
            "[SV]   : ERROR: if the b_single_substream_group element is set to 1, the presentation_config_v1 element "
            "value of presentation %zu shall be set to 0x1f\n",
            index);
    }
    const bool toc_emdf_only = !single && presentation.presentation_config == AC4_CONFIG_EMDF_ONLY;
    const bool dsi_emdf_only = dsi.presentation_config_v1 == AC4_CONFIG_EMDF_ONLY;
    if (toc_emdf_only != dsi_emdf_only) {
        const Ac4FieldRow rows[] = {substream_group_row(dsi, presentation)};
        status |= compare_fields(subject, rows);
    }
    if (toc_emdf_only || dsi_emdf_only) return status | compare_emdf(subject, dsi, presentation, toc);
    status |= compare_head(subject, dsi, presentation);
    status |= compare_channels(subject, dsi, presentation);
    status |= compare_filter(subject, dsi, presentation);
    status |= compare_pre_virtualized(index, entry, presentation);
    status |= compare_emdf(subject, dsi, presentation, toc);
    status |= compare_groups(subject, entry, presentation, toc);
    return status;
}

}  // namespace quorlin
