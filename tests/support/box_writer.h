#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorlin {

// Writes ISO base media files: the mirror of src/isobmff. Sizes, counts and offsets are filled in; what is to be
// wrong is written with `size` or from a text.
using Bytes = std::vector<uint8_t>;

Bytes join(std::initializer_list<Bytes> parts);
Bytes text_bytes(std::string_view text);
Bytes zero_bytes(size_t count);
Bytes big_endian(uint32_t byte_count, std::initializer_list<uint64_t> values);

// ISO/IEC 14496-12, 4.2: a box around the parts; `size` instead of the right one.
Bytes box(std::string_view type, std::initializer_list<Bytes> parts, std::optional<uint32_t> size = {});
Bytes full_box(std::string_view type, uint8_t version, uint32_t flags, std::initializer_list<Bytes> parts);

// Boxes from a text, one a line: "stsz:32 0 0 2 100 200" is the type, the width of its numbers in bits, the numbers.
Bytes text_boxes(const std::string& text);

Bytes visual_entry(std::string_view format, std::initializer_list<Bytes> boxes);
Bytes audio_entry(std::string_view format, uint16_t channelcount, std::initializer_list<Bytes> boxes);

// A trak: track_ID, one sample entry and what else its stbl holds.
struct TrakSpec {
    uint32_t track_ID = 1;
    Bytes entry = {};
    Bytes tables = {};
    uint8_t tkhd_version = 0;
    uint8_t mdhd_version = 0;
    uint32_t timescale = 48000;
    std::string_view handler_type = "soun";
    Bytes before_mdia = {};  // edts
    uint32_t entry_count = 1;
};
Bytes trak(const TrakSpec& spec);

// ftyp and moov; a trex for every track.
Bytes init_section(const std::vector<TrakSpec>& tracks, std::initializer_list<Bytes> more_in_moov = {});

// One traf with one trun; the samples have sizes and, with flag 0x100, durations.
struct RunSpec {
    uint32_t track_ID = 1;
    std::vector<Bytes> samples = {};
    uint32_t trun_flags = 0x201;
};

// moof and mdat with the runs' samples one after the other.
Bytes media_segment(const std::vector<RunSpec>& runs);

// Codec configuration boxes.
Bytes avcC(uint8_t length_size, const std::vector<Bytes>& sps, const std::vector<Bytes>& pps);
struct HevcArray {
    uint8_t nal_unit_type = 0;
    std::vector<Bytes> units = {};
};
Bytes hvcC(uint8_t length_size, const std::vector<HevcArray>& arrays);

}  // namespace quorlin
