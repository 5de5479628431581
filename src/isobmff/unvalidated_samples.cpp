#include "isobmff/unvalidated_samples.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>

#include "ac4/ac4_dsi.h"
#include "bits/byte_order.h"
#include "bits/place.h"
#include "bits/report.h"

namespace quorlin {

namespace {

// ISO/IEC 14496-1, table 1: tags of descriptors.
constexpr uint8_t ES_DESCRIPTOR_TAG = 0x03;
constexpr uint8_t DECODER_CONFIG_DESCRIPTOR_TAG = 0x04;

// ISO/IEC 14496-1, 8.3.3: the length after a tag takes 7 bits of a byte, and of the next one while bit 7 is set.
size_t after_descriptor_length(std::span<const uint8_t> payload, size_t position) {
    while ((load_u8(payload, position) & 0x80) != 0) ++position;
    return position + 1;
}

// ISO/IEC 14496-1, 7.2.6.5 and 7.2.6.6: objectTypeIndication of the payload of an esds box; nothing when it is not
// there.
std::optional<uint8_t> object_type_indication(std::span<const uint8_t> payload) {
    size_t position = 4;  // version and flags
    if (load_u8(payload, position) != ES_DESCRIPTOR_TAG) return std::nullopt;
    position = after_descriptor_length(payload, position + 1) + 2;  // ES_ID
    const uint8_t flags = load_u8(payload, position++);
    if ((flags & 0x80) != 0) position += 2;                                       // dependsOn_ES_ID
    if ((flags & 0x40) != 0) position += size_t{1} + load_u8(payload, position);  // URLstring
    if ((flags & 0x20) != 0) position += 2;                                       // OCR_ES_Id
    if (load_u8(payload, position) != DECODER_CONFIG_DESCRIPTOR_TAG) return std::nullopt;
    position = after_descriptor_length(payload, position + 1);
    if (position >= payload.size()) return std::nullopt;
    return payload[position];
}

// ISO/IEC 14496-1, table 5: MPEG-4 audio and the three profiles of MPEG-2 AAC.
bool is_aac(uint8_t object_type) {
    constexpr std::array<uint8_t, 4> AAC_TYPES = {0x40, 0x66, 0x67, 0x68};
    return std::find(AAC_TYPES.begin(), AAC_TYPES.end(), object_type) != AAC_TYPES.end();
}

void report_object_type(const TrackRecord& track, const std::string& path) {
    if (!track.config) return;
    const std::optional<uint8_t> type = object_type_indication(*track.config);
    if (!type || is_aac(*type)) return;
    const PlaceScope scope(track.config_box.place);
    report_reason(ReasonEffect::REMARK, "reason-mp4-not-aac", path,
                  "track %d: 'mp4a' of object type 0x%02X is not AAC: its samples are written to a file named .aac",
                  static_cast<int32_t>(track.track_ID), *type);
}

void report_uncompared_presentations(const TrackRecord& track, const std::string& path) {
    Ac4Dsi dsi;
    if (track.config) ac4_dsi_parse(*track.config, dsi);
    const PlaceScope scope(track.config_box.place);
    for (size_t i = 0; i < dsi.presentations.size(); ++i) {
        const uint32_t version = dsi.presentations[i].presentation_version;
        if (version <= AC4_DSI_NEWEST_VERSION) continue;
        report_reason(ReasonEffect::UNVALIDATED, "reason-mp4-dac4-version", path,
                      "track %d: presentation %zu of dac4 has the version %u: it is not compared with the samples",
                      static_cast<int32_t>(track.track_ID), i, version);
    }
}

// The box that tells how the samples are to be read and that a sample entry lacks; null when there is one, or need not
// be.
const char* missing_box(const TrackRecord& track) {
    if (is_avc(track)) return track.video.payload.empty() ? "avcC" : nullptr;
    if (is_hevc(track)) return track.video.payload.empty() ? "hvcC" : nullptr;
    return track.codec_kind == CodecKind::EC3 && !track.config ? "dec3" : nullptr;
}

bool has_checks(const TrackRecord& track) {
    switch (track.codec_kind) {
        case CodecKind::UNKNOWN:
        case CodecKind::TIMED_METADATA:
        case CodecKind::MLPA:
        case CodecKind::S263:
            return false;
        default:
            return true;
    }
}

}  // namespace

void report_unvalidated_samples(TrackRecord& track, const std::string& path) {
    if (track.samples.sample_count == 0) return;
    if (std::exchange(track.output.unvalidated_reported, true)) return;
    const auto id = static_cast<int32_t>(track.track_ID);
    const PlaceScope scope(track.entry_box.place);
    if (track.codec_kind == CodecKind::AC4) report_uncompared_presentations(track, path);
    if (track.codec_kind == CodecKind::AAC) report_object_type(track, path);
    if (track.encrypted)
        report_reason(ReasonEffect::UNVALIDATED, "reason-mp4-encrypted", path,
                      "track %d: encrypted (%s): its content is not validated", id,
                      track.scheme[0] != '\0' ? track.scheme.data() : "no scheme is named");
    else if (!has_checks(track))
        report_reason(ReasonEffect::UNVALIDATED, "reason-mp4-sample-entry", path,
                      "track %d: no check knows its sample entry '%s': its samples are not validated", id,
                      track.format.data());
    if (const char* box = missing_box(track))
        report_reason(ReasonEffect::REMARK, "reason-mp4-no-configuration", path,
                      "track %d: its sample entry '%s' has no %s: its samples are read as if it held zeros", id,
                      track.format.data(), box);
}

}  // namespace quorlin
