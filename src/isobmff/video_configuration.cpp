#include "isobmff/video_configuration.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "bits/byte_order.h"

namespace quorlin {

namespace {

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

bool parse_avc_record(VideoConfiguration& video) {
    const std::span<const uint8_t> payload(video.payload);
    video.length_size_minus_one = load_u8(payload, 4) & 3;
    const uint32_t num_sps = load_u8(payload, 5) & 31;
    size_t position = 6;
    if (!parse_avc_parameter_sets(payload, position, num_sps, video.sps)) return false;
    const uint32_t num_pps = load_u8(payload, position++);
    return parse_avc_parameter_sets(payload, position, num_pps, video.pps);
}

constexpr std::string_view PIFF_MARK = "PIFF";

bool is_piff(std::span<const uint8_t> payload) {
    return payload.size() >= PIFF_MARK.size() && std::equal(PIFF_MARK.begin(), PIFF_MARK.end(), payload.begin());
}

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

}  // namespace

bool parse_avc_configuration(VideoConfiguration& video) {
    if (!is_piff(video.payload)) return parse_avc_record(video);
    parse_piff_configuration(video);
    return true;
}

std::optional<UnitOverrun> parse_hevc_configuration(VideoConfiguration& video) {
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
            if (position + size > payload.size()) return UnitOverrun{nal_unit_type, position, size};
            std::vector<ParameterSet>* sets = parameter_sets_of_type(video, nal_unit_type);
            if (sets != nullptr) sets->push_back({position, size});
            position += size;
        }
    }
    return std::nullopt;
}

}  // namespace quorlin
