#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace quorlin {

// ISO/IEC 14496-10 and 23008-2, annex B: what each NAL unit of a byte stream begins with.
constexpr std::array<uint8_t, 4> START_CODE = {0, 0, 0, 1};

// A piece of VideoConfiguration::payload.
struct ParameterSet {
    size_t offset = 0;
    size_t size = 0;
};

// ISO/IEC 14496-15, avcC and hvcC, avcE and hvcE: the length fields of the samples and the parameter sets.
struct VideoConfiguration {
    std::vector<uint8_t> payload;
    uint32_t length_size_minus_one = 0;
    std::vector<ParameterSet> vps;  // H.265 only
    std::vector<ParameterSet> sps;
    std::vector<ParameterSet> pps;
};

// ISO/IEC 23008-2, table 7-1: the parameter sets.
constexpr uint32_t HEVC_VPS = 32;
constexpr uint32_t HEVC_SPS = 33;
constexpr uint32_t HEVC_PPS = 34;

// A NAL unit that runs past the payload of its box.
struct UnitOverrun {
    uint32_t nal_unit_type = 0;
    size_t offset = 0;
    size_t size = 0;
};

// Both take the fields out of `video.payload`, where what lies past its end reads as zero, and stop at the first unit
// that runs past it: those before it are kept.

// ISO/IEC 14496-15, 5.3.3.1.2: AVCDecoderConfigurationRecord, or a payload that begins with "PIFF" and holds the
// parameter sets after start codes. False when a unit runs past the payload.
[[nodiscard]] bool parse_avc_configuration(VideoConfiguration& video);

// ISO/IEC 14496-15, 8.3.3.1.2: HEVCDecoderConfigurationRecord. Returns the unit that runs past the payload, if any.
[[nodiscard]] std::optional<UnitOverrun> parse_hevc_configuration(VideoConfiguration& video);

}  // namespace quorlin
