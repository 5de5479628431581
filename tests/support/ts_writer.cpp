#include "support/ts_writer.h"

#include <algorithm>

#include "support/bit_writer.h"

namespace quorlin {

namespace {

constexpr size_t PAYLOAD_MAX = 184;

// One section after its pointer_field, its last packet filled up with 0xFF.
Bytes psi_payload(uint8_t table_id, uint16_t id, const Bytes& body, uint8_t pointer_field) {
    BitWriter w;
    w.put(8, pointer_field);
    w.put_bytes(Bytes(pointer_field, 0xFF));
    w.put(8, table_id);
    w.put(4, 0xB);               // section_syntax_indicator, reserved
    w.put(12, body.size() + 9);  // section_length
    w.put(16, id);               // transport_stream_id or program_number
    w.put(8, 0xC1);              // reserved, version_number, current_next_indicator
    w.put(16, 0);                // section_number, last_section_number
    w.put_bytes(body);
    w.put(32, 0);  // CRC_32
    w.bytes.resize((w.bytes.size() + PAYLOAD_MAX - 1) / PAYLOAD_MAX * PAYLOAD_MAX, 0xFF);
    return w.bytes;
}

void put_timestamp(BitWriter& w, uint8_t prefix, uint64_t ticks) {
    w.put(4, prefix);
    for (uint32_t shift : {30u, 15u, 0u}) {
        w.put(shift == 30 ? 3 : 15, ticks >> shift);
        w.put(1, 1);  // marker_bit
    }
}

void put_descriptors(BitWriter& w, const Bytes& descriptors) {
    w.put(4, 15);  // reserved
    w.put(12, descriptors.size());
    w.put_bytes(descriptors);
}

}  // namespace

Bytes ts_descriptor(uint8_t tag, const Bytes& body, std::optional<uint8_t> length) {
    return Bytes{tag, length.value_or(static_cast<uint8_t>(body.size()))} + body;
}

Bytes pes_packet(const PesSpec& spec) {
    const uint8_t flags = static_cast<uint8_t>((spec.pts ? 2 : 0) + (spec.dts ? 1 : 0));
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

void TsWriter::packet(const TsPacketSpec& spec) {
    const size_t fill = PAYLOAD_MAX - spec.payload.size();
    BitWriter w;
    w.put(8, 0x47);  // sync_byte
    w.put(2, spec.payload_unit_start_indicator);
    w.put(14, spec.pid);
    w.put(3, fill > 0);               // transport_scrambling_control, adaptation field
    w.put(1, !spec.payload.empty());  // payload
    w.put(4, 0);                      // continuity_counter
    if (fill > 0) w.put(8, spec.adaptation_field_length.value_or(static_cast<uint8_t>(fill - 1)));
    if (fill > 1) w.put(8, 0);  // flags
    if (fill > 2) w.put_bytes(Bytes(fill - 2, 0xFF));
    w.put_bytes(spec.payload);
    bytes.insert(bytes.end(), w.bytes.begin(), w.bytes.end());
}

void TsWriter::payload(uint16_t pid, const Bytes& unit) {
    for (size_t at = 0; at < unit.size(); at += PAYLOAD_MAX) {
        const std::span<const uint8_t> part = std::span(unit).subspan(at, std::min(PAYLOAD_MAX, unit.size() - at));
        packet({.pid = pid, .payload_unit_start_indicator = at == 0, .payload = Bytes(part.begin(), part.end())});
    }
}

void TsWriter::pat(const PatPrograms& programs, uint8_t pointer_field) {
    BitWriter w;
    for (const auto& [program_number, program_map_PID] : programs) {
        w.put(16, program_number);
        w.put(16, 0xE000u | program_map_PID);
    }
    payload(0, psi_payload(0x00, 1, w.bytes, pointer_field));
}

void TsWriter::pmt(const PmtSpec& spec, uint16_t pid, uint8_t pointer_field) {
    BitWriter w;
    w.put(16, 0xE000u | spec.PCR_PID);
    put_descriptors(w, spec.program_info);
    for (const PmtSpec::Stream& stream : spec.streams) {
        w.put(8, stream.stream_type);
        w.put(16, 0xE000u | stream.elementary_PID);
        put_descriptors(w, stream.descriptors);
    }
    payload(pid, psi_payload(0x02, spec.program_number, w.bytes, pointer_field));
}

}  // namespace quorlin
