#include "support/ts_writer.h"

#include <algorithm>

#include "support/bit_writer.h"

namespace {

constexpr size_t PAYLOAD_MAX = 184;

// ISO/IEC 13818-1, annex A.
uint32_t mpeg_crc32(const Bytes& bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (uint8_t byte : bytes) {
        crc ^= static_cast<uint32_t>(byte) << 24;
        for (int bit = 0; bit < 8; ++bit) crc = (crc << 1) ^ ((crc >> 31) != 0 ? 0x04C11DB7u : 0u);
    }
    return crc;
}

// The header up to section_length, whatever stands between it and the CRC, and the CRC.
Bytes psi_section(uint8_t table_id, const Bytes& body, std::optional<uint16_t> length, std::optional<uint32_t> crc) {
    BitWriter w;
    w.put(8, table_id);
    w.put(1, 1);  // section_syntax_indicator
    w.put(1, 0);
    w.put(2, 3);  // reserved
    w.put(12, length.value_or(static_cast<uint16_t>(body.size() + 4)));
    w.put_bytes(body);
    w.put(32, crc.value_or(mpeg_crc32(w.bytes)));
    return w.bytes;
}

template <typename Spec>
void put_version(BitWriter& w, const Spec& spec) {
    w.put(2, 3);  // reserved
    w.put(5, spec.version_number);
    w.put(1, spec.current_next_indicator);
    w.put(8, spec.section_number);
    w.put(8, spec.last_section_number);
}

void put_timestamp(BitWriter& w, uint8_t prefix, uint64_t ticks) {
    w.put(4, prefix);
    w.put(3, ticks >> 30);
    w.put(1, 1);  // marker_bit
    w.put(15, ticks >> 15);
    w.put(1, 1);
    w.put(15, ticks);
    w.put(1, 1);
}

void put_adaptation_field(BitWriter& w, const TsPacketSpec& spec, size_t field_bytes) {
    w.put(8, spec.adaptation_field_length.value_or(static_cast<uint8_t>(field_bytes)));
    const size_t end = w.bytes.size() + field_bytes;
    if (field_bytes > 0) w.put(8, spec.pcr_base ? 0x10 : 0);
    if (spec.pcr_base) {
        w.put(33, *spec.pcr_base);
        w.put(6, 0x3F);  // reserved
        w.put(9, spec.pcr_extension);
    }
    while (w.bytes.size() < end) w.put(8, 0xFF);
}

}  // namespace

Bytes ts_packet(const TsPacketSpec& spec) {
    const size_t payload = std::min(spec.payload.size(), PAYLOAD_MAX - (spec.pcr_base ? 8 : 0));
    const bool fill = payload < PAYLOAD_MAX;
    BitWriter w;
    w.put(8, spec.sync_byte);
    w.put(1, spec.transport_error_indicator);
    w.put(1, spec.payload_unit_start_indicator);
    w.put(1, spec.transport_priority);
    w.put(13, spec.pid);
    w.put(2, 0);  // transport_scrambling_control
    w.put(2, spec.adaptation_field_control.value_or(static_cast<uint8_t>((fill ? 2 : 0) + (payload > 0 ? 1 : 0))));
    w.put(4, spec.continuity_counter);
    if (fill) put_adaptation_field(w, spec, PAYLOAD_MAX - payload - 1);
    w.put_bytes(std::span(spec.payload).first(payload));
    return w.bytes;
}

Bytes pat_section(const PatSpec& spec) {
    BitWriter w;
    w.put(16, spec.transport_stream_id);
    put_version(w, spec);
    for (const PatSpec::Program& program : spec.programs) {
        w.put(16, program.program_number);
        w.put(3, 7);  // reserved
        w.put(13, program.program_map_PID);
    }
    return psi_section(0x00, w.bytes, spec.section_length, spec.CRC_32);
}

Bytes pmt_section(const PmtSpec& spec) {
    BitWriter w;
    w.put(16, spec.program_number);
    put_version(w, spec);
    w.put(3, 7);  // reserved
    w.put(13, spec.PCR_PID);
    w.put(4, 15);  // reserved
    w.put(12, spec.program_info_length.value_or(static_cast<uint16_t>(spec.program_info.size())));
    w.put_bytes(spec.program_info);
    for (const PmtSpec::Stream& stream : spec.streams) {
        w.put(8, stream.stream_type);
        w.put(3, 7);  // reserved
        w.put(13, stream.elementary_PID);
        w.put(4, 15);  // reserved
        w.put(12, stream.ES_info_length.value_or(static_cast<uint16_t>(stream.descriptors.size())));
        w.put_bytes(stream.descriptors);
    }
    return psi_section(0x02, w.bytes, spec.section_length, spec.CRC_32);
}

Bytes ts_descriptor(uint8_t tag, const Bytes& body, std::optional<uint8_t> length) {
    Bytes bytes = {tag, length.value_or(static_cast<uint8_t>(body.size()))};
    bytes.insert(bytes.end(), body.begin(), body.end());
    return bytes;
}

Bytes pes_packet(const PesSpec& spec) {
    const uint8_t flags = spec.PTS_DTS_flags.value_or(static_cast<uint8_t>((spec.pts ? 2 : 0) + (spec.dts ? 1 : 0)));
    BitWriter times;
    if (spec.pts) put_timestamp(times, flags, *spec.pts);
    if (spec.dts) put_timestamp(times, 1, *spec.dts);
    const size_t length = 3 + times.bytes.size() + spec.payload.size();
    BitWriter w;
    w.put(24, 1);  // packet_start_code_prefix
    w.put(8, spec.stream_id);
    w.put(16, spec.PES_packet_length.value_or(static_cast<uint16_t>(length > 0xFFFF ? 0 : length)));
    w.put(8, 0x80);  // '10', no scrambling, no flags
    w.put(2, flags);
    w.put(6, 0);
    w.put(8, spec.PES_header_data_length.value_or(static_cast<uint8_t>(times.bytes.size())));
    w.put_bytes(times.bytes);
    w.put_bytes(spec.payload);
    return w.bytes;
}

void TsWriter::packet(TsPacketSpec spec) {
    uint8_t& counter = continuity[spec.pid];
    spec.continuity_counter = counter++ & 15;
    const Bytes packet_bytes = ts_packet(spec);
    bytes.insert(bytes.end(), packet_bytes.begin(), packet_bytes.end());
}

void TsWriter::section(uint16_t pid, const Bytes& section_bytes) {
    Bytes payload(1, 0);  // pointer_field
    payload.insert(payload.end(), section_bytes.begin(), section_bytes.end());
    payload.resize((payload.size() + PAYLOAD_MAX - 1) / PAYLOAD_MAX * PAYLOAD_MAX, 0xFF);
    for (size_t at = 0; at < payload.size(); at += PAYLOAD_MAX) {
        const std::span<const uint8_t> part = std::span(payload).subspan(at, PAYLOAD_MAX);
        packet({.pid = pid, .payload_unit_start_indicator = at == 0, .payload = Bytes(part.begin(), part.end())});
    }
}

void TsWriter::pes(uint16_t pid, const PesSpec& spec) {
    const Bytes data = pes_packet(spec);
    for (size_t at = 0; at < data.size(); at += PAYLOAD_MAX) {
        const std::span<const uint8_t> part = std::span(data).subspan(at, std::min(PAYLOAD_MAX, data.size() - at));
        packet({.pid = pid, .payload_unit_start_indicator = at == 0, .payload = Bytes(part.begin(), part.end())});
    }
}
