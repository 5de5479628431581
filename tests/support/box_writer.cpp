#include "support/box_writer.h"

#include <sstream>

#include "support/bit_writer.h"

namespace quorlin {

namespace {

void append(Bytes& to, const Bytes& from) {
    to.insert(to.end(), from.begin(), from.end());
}

Bytes length_prefixed(const Bytes& unit) {
    return join({big_endian(2, {unit.size()}), unit});
}

Bytes trun(const RunSpec& run, size_t data_offset) {
    Bytes fields = big_endian(4, {run.samples.size(), data_offset});
    for (const Bytes& sample : run.samples) {
        if ((run.trun_flags & 0x100) != 0) append(fields, big_endian(4, {1024}));
        append(fields, big_endian(4, {sample.size()}));
    }
    return full_box("trun", 0, run.trun_flags, {fields});
}

Bytes moof(const std::vector<RunSpec>& runs, size_t first_data_offset) {
    Bytes trafs;
    size_t data_offset = first_data_offset;
    for (const RunSpec& run : runs) {
        const Bytes tfhd = full_box("tfhd", 0, 0x020000, {big_endian(4, {run.track_ID})});
        append(trafs, box("traf", {tfhd, trun(run, data_offset)}));
        for (const Bytes& sample : run.samples) data_offset += sample.size();
    }
    return box("moof", {full_box("mfhd", 0, 0, {big_endian(4, {1})}), trafs});
}

}  // namespace

Bytes join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) append(all, part);
    return all;
}

Bytes text_bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes zero_bytes(size_t count) {
    return Bytes(count, 0);
}

Bytes big_endian(uint32_t byte_count, std::initializer_list<uint64_t> values) {
    BitWriter writer;
    for (const uint64_t value : values) writer.put(8 * byte_count, value);
    return writer.bytes;
}

Bytes box(std::string_view type, std::initializer_list<Bytes> parts, std::optional<uint32_t> size) {
    const Bytes payload = join(parts);
    return join({big_endian(4, {size.value_or(static_cast<uint32_t>(payload.size() + 8))}), text_bytes(type), payload});
}

Bytes full_box(std::string_view type, uint8_t version, uint32_t flags, std::initializer_list<Bytes> parts) {
    return box(type, {big_endian(1, {version}), big_endian(3, {flags}), join(parts)});
}

Bytes text_boxes(const std::string& text) {
    Bytes boxes;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line.substr(5));
        uint32_t width = 0;
        words >> width;
        BitWriter writer;
        for (std::string number; words >> number;) writer.put(width, std::stoull(number, nullptr, 0));
        append(boxes, box(line.substr(0, 4), {writer.bytes}));
    }
    return boxes;
}

Bytes visual_entry(std::string_view format, std::initializer_list<Bytes> boxes) {
    return box(format, {zero_bytes(24), big_endian(2, {320, 180}), zero_bytes(50), join(boxes)});
}

Bytes audio_entry(std::string_view format, uint16_t channelcount, std::initializer_list<Bytes> boxes) {
    return box(format, {zero_bytes(16), big_endian(2, {channelcount, 16, 0, 0, 48000, 0}), join(boxes)});
}

Bytes trak(const TrakSpec& track) {
    const Bytes tkhd =
        full_box("tkhd", track.tkhd_version, 7,
                 {zero_bytes(track.tkhd_version == 1 ? 16 : 8), big_endian(4, {track.track_ID}), zero_bytes(60)});
    const Bytes mdhd = full_box("mdhd", track.mdhd_version, 0,
                                {zero_bytes(track.mdhd_version == 1 ? 16 : 8), big_endian(4, {track.timescale}),
                                 zero_bytes(track.mdhd_version == 1 ? 8 : 4), big_endian(2, {0x15C7, 0})});
    const Bytes hdlr = full_box("hdlr", 0, 0, {zero_bytes(4), text_bytes(track.handler_type), zero_bytes(13)});
    const Bytes stsd = full_box("stsd", 0, 0, {big_endian(4, {track.entry_count}), track.entry});
    const Bytes minf = box("minf", {box("stbl", {stsd, track.tables})});
    return box("trak", {tkhd, track.before_mdia, box("mdia", {mdhd, hdlr, minf})});
}

Bytes init_section(const std::vector<TrakSpec>& tracks, std::initializer_list<Bytes> more_in_moov) {
    Bytes traks;
    Bytes trexs;
    for (const TrakSpec& track : tracks) {
        append(traks, trak(track));
        append(trexs, full_box("trex", 0, 0, {big_endian(4, {track.track_ID, 1, 0, 0, 0})}));
    }
    const Bytes mvhd = full_box("mvhd", 0, 0, {zero_bytes(8), big_endian(4, {1000}), zero_bytes(84)});
    return join({box("ftyp", {text_bytes("iso6"), zero_bytes(4)}),
                 box("moov", {mvhd, traks, box("mvex", {trexs}), join(more_in_moov)})});
}

Bytes media_segment(const std::vector<RunSpec>& runs) {
    const size_t data_offset = moof(runs, 0).size() + 8;
    Bytes data;
    for (const RunSpec& run : runs)
        for (const Bytes& sample : run.samples) append(data, sample);
    return join({moof(runs, data_offset), box("mdat", {data})});
}

Bytes avcC(uint8_t length_size, const std::vector<Bytes>& sps, const std::vector<Bytes>& pps) {
    Bytes payload = join({big_endian(1, {1, 100, 0, 40, 0xFCu | (length_size - 1u), 0xE0u | sps.size()})});
    for (const Bytes& unit : sps) append(payload, length_prefixed(unit));
    append(payload, big_endian(1, {pps.size()}));
    for (const Bytes& unit : pps) append(payload, length_prefixed(unit));
    return box("avcC", {payload});
}

Bytes hvcC(uint8_t length_size, const std::vector<HevcArray>& arrays) {
    Bytes payload = join({zero_bytes(21), big_endian(1, {0x0Cu | (length_size - 1u), arrays.size()})});
    for (const HevcArray& array : arrays) {
        append(payload, join({big_endian(1, {array.nal_unit_type}), big_endian(2, {array.units.size()})}));
        for (const Bytes& unit : array.units) append(payload, length_prefixed(unit));
    }
    return box("hvcC", {payload});
}

}  // namespace quorlin
