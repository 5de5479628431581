#include "isobmff/codec_configuration.h"

#include <algorithm>
#include <array>
#include <bit>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "bits/byte_order.h"
#include "bits/finding.h"
#include "bits/place.h"
#include "isobmff/box_reader.h"
#include "ztpinfo/channel_locations.h"

namespace {

constexpr uint32_t CHAN_LOC_BITS = 9;
// The locations that stand for a pair: Lc/Rc, Lrs/Rrs, Lsd/Rsd, Lw/Rw, Lvh/Rvh, Lts/Rts.
constexpr uint32_t CHANMAP_PAIRS = 0x0674;

// chan_loc counts from the least significant bit and leaves out Lts/Rts: bits 0 to 7 are locations 5 to 12, bit 8 is
// LFE2 (location 14).
uint32_t chan_loc_location(uint32_t bit) {
    return bit < 8 ? 0x0400u >> bit : 0x0002u;
}

uint32_t chan_loc_to_chanmap(uint32_t chan_loc) {
    uint32_t chanmap = 0;
    for (uint32_t bit = 0; bit < CHAN_LOC_BITS; ++bit)
        if ((chan_loc >> bit & 1) != 0) chanmap |= chan_loc_location(bit);
    return chanmap;
}

void check_reserved(uint32_t bits) {
    if (bits != 0) note("mp4-dec3-reserved", "ERROR: Reserved field is not zero.\n");
}

// ETSI TS 102 366, F.6.1: one independent substream at `position`, which moves past it.
Ec3IndependentSubstream parse_independent_substream(std::span<const uint8_t> payload, size_t& position) {
    Ec3IndependentSubstream substream;
    const uint32_t a = load_u8(payload, position++);
    substream.fscod = a >> 6;
    substream.bsid = a >> 1 & 31;
    check_reserved(a & 1);
    const uint32_t b = load_u8(payload, position++);
    substream.asvc = b >> 7;
    substream.bsmod = b >> 4 & 7;
    substream.acmod = b >> 1 & 7;
    substream.lfeon = b & 1;
    const uint32_t c = load_u8(payload, position++);
    check_reserved(c & 0x20);  // of the three reserved bits only this one, deliberately
    substream.num_dep_sub = c >> 1 & 15;
    if (substream.num_dep_sub != 0) substream.chan_loc = (c & 1) << 8 | load_u8(payload, position++);
    return substream;
}

// ETSI TS 102 366, F.6.1.
Ec3Configuration parse_dec3(std::span<const uint8_t> payload) {
    Ec3Configuration ec3;
    ec3.data_rate = load_u8(payload, 0) * 32u + (load_u8(payload, 1) >> 3);
    ec3.num_ind_sub = (load_u8(payload, 1) & 7u) + 1;
    size_t position = 2;
    for (uint32_t i = 0; i < ec3.num_ind_sub; ++i) ec3.substreams[i] = parse_independent_substream(payload, position);
    if (position < payload.size()) {
        ec3.flag_ec3_extension_type_a = load_u8(payload, position) & 1;
        if (ec3.flag_ec3_extension_type_a == 1) ec3.complexity_index_type_a = load_u8(payload, position + 1);
    }
    return ec3;
}

void note_cut_parameter_set(const MediaContext& context, const FileReader& reader) {
    note_box(context, reader, "reason-mp4-parameter-set-cut",
             "a NAL unit runs past its end: this one and those after it are not read");
}

// `count` parameter sets, each after a 16-bit length; false at the first one that runs past the payload.
bool parse_avc_parameter_sets(std::span<const uint8_t> payload, size_t& position, uint32_t count,
                              std::vector<ParameterSet>& sets) {
    for (uint32_t i = 0; i < count; ++i) {
        const size_t size = load_be16(payload, position);
        position += 2;
        if (position + size > payload.size()) return false;
        sets.push_back({position, size});
        position += size;
    }
    return true;
}

// ISO/IEC 14496-15, 5.3.3.1.2: AVCDecoderConfigurationRecord. False when a set runs past the payload: those before it
// are kept.
bool parse_avc_configuration(VideoConfiguration& video) {
    const std::span<const uint8_t> payload(video.payload);
    video.length_size_minus_one = load_u8(payload, 4) & 3;
    const uint32_t num_sps = load_u8(payload, 5) & 31;
    size_t position = 6;
    if (!parse_avc_parameter_sets(payload, position, num_sps, video.sps)) return false;
    const uint32_t num_pps = load_u8(payload, position++);
    return parse_avc_parameter_sets(payload, position, num_pps, video.pps);
}

constexpr std::string_view PIFF_MARK = "PIFF";

// The units between start codes: the first is the SPS, the others are PPS.
void parse_piff_configuration(VideoConfiguration& video) {
    video.length_size_minus_one = 3;
    const auto begin = video.payload.begin();
    const auto end = video.payload.end();
    const auto next_code = [end](auto from) { return std::search(from, end, START_CODE.begin(), START_CODE.end()); };
    for (auto code = next_code(begin); code != end;) {
        const auto unit = code + static_cast<ptrdiff_t>(START_CODE.size());
        code = next_code(unit);
        const ParameterSet set = {static_cast<size_t>(unit - begin), static_cast<size_t>(code - unit)};
        (video.sps.empty() ? video.sps : video.pps).push_back(set);
    }
}

// ISO/IEC 14496-15, 8.3.3.1.2 and ISO/IEC 23008-2, table 7-1.
enum HevcParameterSetType : uint32_t { HEVC_VPS = 32, HEVC_SPS = 33, HEVC_PPS = 34 };

std::vector<ParameterSet>* parameter_sets_of_type(VideoConfiguration& video, uint32_t nal_unit_type) {
    switch (nal_unit_type) {
        case HEVC_VPS:
            return &video.vps;
        case HEVC_SPS:
            return &video.sps;
        case HEVC_PPS:
            return &video.pps;
        default:
            return nullptr;
    }
}

// A unit of another type that runs past the payload, for which there is no message.
constexpr int UNNAMED_OVERRUN = -1;

int report_overrun(uint32_t nal_unit_type, size_t offset, size_t size, size_t payload_size) {
    switch (nal_unit_type) {
        case HEVC_VPS:
            return fail(SEGMENT_FINDING, "mp4-hevc-configuration-vps",
                        "[SV]   : VPS offset + length (%zu + %zu) exceeds DSI size (%zu)\n", offset, size,
                        payload_size);
        case HEVC_SPS:
            return fail(SEGMENT_FINDING, "mp4-hevc-configuration-sps",
                        "[SV]   : SPS offset + length (%zu + %zu) exceeds DSI size (%zu)\n", offset, size,
                        payload_size);
        case HEVC_PPS:
            return fail(SEGMENT_FINDING, "mp4-hevc-configuration-pps",
                        "[SV]   : PPS offset + length (%zu + %zu) exceeds DSI size (%zu)\n", offset, size,
                        payload_size);
        default:
            return UNNAMED_OVERRUN;
    }
}

// ISO/IEC 14496-15, 8.3.3.1.2: HEVCDecoderConfigurationRecord. Returns 0, or 11 when a set runs past the payload, or
// UNNAMED_OVERRUN; what lies before is kept.
int parse_hevc_configuration(VideoConfiguration& video) {
    const std::span<const uint8_t> payload(video.payload);
    video.length_size_minus_one = load_u8(payload, 21) & 3;
    const uint32_t num_of_arrays = load_u8(payload, 22);
    size_t position = 23;
    for (uint32_t i = 0; i < num_of_arrays; ++i) {
        const uint32_t nal_unit_type = load_u8(payload, position) & 63;
        const uint32_t num_nalus = load_be16(payload, position + 1);
        position += 3;
        for (uint32_t j = 0; j < num_nalus; ++j) {
            const size_t size = load_be16(payload, position);
            position += 2;
            if (position + size > payload.size()) return report_overrun(nal_unit_type, position, size, payload.size());
            std::vector<ParameterSet>* sets = parameter_sets_of_type(video, nal_unit_type);
            if (sets != nullptr) sets->push_back({position, size});
            position += size;
        }
    }
    return 0;
}

int read_avc_record(MediaContext& context, FileReader& reader, int64_t payload_size, VideoConfiguration& video) {
    video = {};
    const int status = read_payload(context, reader, payload_size, video.payload);
    if (status != 0) return status;
    const auto mark_end =
        video.payload.begin() + static_cast<ptrdiff_t>(std::min(PIFF_MARK.size(), video.payload.size()));
    if (std::equal(video.payload.begin(), mark_end, PIFF_MARK.begin(), PIFF_MARK.end()))
        parse_piff_configuration(video);
    else if (!parse_avc_configuration(video))
        note_cut_parameter_set(context, reader);
    return 0;
}

int read_hevc_record(MediaContext& context, FileReader& reader, int64_t payload_size, VideoConfiguration& video) {
    video = {};
    const int status = read_payload(context, reader, payload_size, video.payload);
    if (status != 0) return status;
    try {
        const int parsed = parse_hevc_configuration(video);
        if (parsed == UNNAMED_OVERRUN)
            note_cut_parameter_set(context, reader);
        else
            context.status |= parsed;
    } catch (const std::bad_alloc&) {
        context.status |= fail(SEGMENT_FINDING, "mp4-hevc-configuration-memory", "[SV]   : Allocation failure\n");
        return refuse_box(context, reader, "reason-mp4-parameter-sets-memory",
                          "memory is short for its parameter sets");
    }
    return 0;
}

}  // namespace

int store_configuration(MediaContext& context, FileReader& reader, int64_t payload_size) {
    TrackRecord& track = *context.current_track;
    track.config_place = current_place;
    return read_payload(context, reader, payload_size, track.config.emplace());
}

int read_esds(MediaContext& context, FileReader& reader, int64_t payload_size) {
    context.current_track->codec_kind = CODEC_AAC;
    return store_configuration(context, reader, payload_size);
}

int read_dec3(MediaContext& context, FileReader& reader, int64_t payload_size) {
    TrackRecord& track = *context.current_track;
    const int status = store_configuration(context, reader, payload_size);
    if (status != 0) return status;
    track.ec3 = parse_dec3(*track.config);
    const Ec3IndependentSubstream& first = track.ec3.substreams[0];
    track.channel_count = count_channels(first.acmod, first.lfeon != 0, chan_loc_to_chanmap(first.chan_loc));
    return 0;
}

int read_avcC(MediaContext& context, FileReader& reader, int64_t payload_size) {
    return read_avc_record(context, reader, payload_size, context.current_track->video);
}

int read_avcE(MediaContext& context, FileReader& reader, int64_t payload_size) {
    return read_avc_record(context, reader, payload_size, context.current_track->enhancement_layer.emplace());
}

int read_hvcC(MediaContext& context, FileReader& reader, int64_t payload_size) {
    return read_hevc_record(context, reader, payload_size, context.current_track->video);
}

int read_hvcE(MediaContext& context, FileReader& reader, int64_t payload_size) {
    return read_hevc_record(context, reader, payload_size, context.current_track->enhancement_layer.emplace());
}

int read_lumora_configuration(MediaContext& context, FileReader& reader, int64_t payload_size) {
    std::array<uint8_t, 5> payload{};
    read_payload_start(reader, payload_size, payload);
    LumoraConfiguration& lumora = context.current_track->lumora.emplace();
    lumora.version_major = payload[0];
    lumora.version_minor = payload[1];
    lumora.profile = payload[2] >> 1;
    lumora.level = (payload[2] & 1u) << 5 | payload[3] >> 3;
    lumora.rpu_present = (payload[3] >> 2 & 1) != 0;
    lumora.el_present = (payload[3] >> 1 & 1) != 0;
    lumora.bl_present = (payload[3] & 1) != 0;
    lumora.compatibility_id = payload[4] >> 4;
    return 0;
}

uint32_t chanmap_to_chan_loc(uint32_t chanmap) {
    uint32_t chan_loc = 0;
    for (uint32_t bit = 0; bit < CHAN_LOC_BITS; ++bit)
        if ((chanmap & chan_loc_location(bit)) != 0) chan_loc |= 1u << bit;
    return chan_loc;
}

uint32_t count_channels(uint32_t acmod, bool lfeon, uint32_t chanmap) {
    const uint32_t mask = ztpinfo_acmod_locations(acmod) | chanmap | (lfeon ? CHANMAP_LFE : 0u);
    return static_cast<uint32_t>(std::popcount(mask) + std::popcount(mask & CHANMAP_PAIRS));
}
