#include "ts/pes.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>

#include "bits/byte_order.h"
#include "ts/timestamp_log.h"
#include "ts/ts_status.h"

namespace {

constexpr size_t PES_FIXED_HEADER_SIZE = 9;

// ISO/IEC 13818-1, 2.4.3.6: 33 bits in three parts, a marker bit behind each.
int64_t read_timestamp(std::span<const uint8_t> bytes, size_t offset) {
    const uint64_t bits = load_be(bytes, offset, 5);
    return static_cast<int64_t>((bits >> 33 & 0x7) << 30 | (bits >> 17 & 0x7FFF) << 15 | (bits >> 1 & 0x7FFF));
}

bool has_ac4_descriptor(const EsRecord& es) {
    return std::any_of(es.descriptors.begin(), es.descriptors.end(),
                       [](const StreamDescriptor& d) { return d.tag == DESCRIPTOR_DVB_EXTENSION; });
}

// The stream_id of a PES packet against the stream type of its PID. Returns 11 at the first finding.
int check_stream_id(const PesStream& stream, const std::vector<ProgramRecord>& programs) {
    const bool is_private = stream.stream_id == STREAM_ID_PRIVATE_STREAM_1;
    for (const ProgramRecord& program : programs) {
        for (const EsRecord& es : program.streams) {
            if (es.elementary_PID != stream.pid) continue;
            const bool is_eac3 = es.stream_type == STREAM_TYPE_ATSC_EAC3;
            const bool is_private_data = es.stream_type == STREAM_TYPE_PES_PRIVATE_DATA;
            if (is_eac3 && !is_private) {
                std::printf("ERROR: In a Zentra Plus stream, the stream_id must be set to 0xbd in the PES header.\n");
                return TS_CHECK_FAILED;
            }
            if (is_private_data && !is_private && has_ac4_descriptor(es)) {
                std::printf("ERROR: In a Vexro AC4 stream, the stream_id must be set to 0xbd in the PES header.\n");
                return TS_CHECK_FAILED;
            }
            if (is_private && !is_eac3 && !is_private_data && es.stream_type != STREAM_TYPE_ATSC_AC3) {
                std::printf(
                    "ERROR: In a Zentra Plus or Vexro AC4 stream, stream type must be set to 0x87 or 0x06 in the Program "
                    "Map Table.\n");
                return TS_CHECK_FAILED;
            }
        }
    }
    return 0;
}

// Reads PTS and DTS. Returns 11 when the DTS is the later one.
int read_timestamps(PesStream& stream, std::span<const uint8_t> bytes) {
    stream.PTS_DTS_flags = load_u8(bytes, 7) >> 6;
    stream.pts = -1;
    if (stream.PTS_DTS_flags < PTS_ONLY) return 0;
    stream.pts = read_timestamp(bytes, 9);
    if (stream.PTS_DTS_flags == PTS_AND_DTS) stream.dts = read_timestamp(bytes, 14);
    // Deliberately only with bit 32 of the PTS set: below that the order of the two is not looked at.
    if (stream.PTS_DTS_flags == PTS_AND_DTS && (stream.pts >> 32 & 1) != 0 && stream.pts < stream.dts) {
        std::printf("ERROR: PTS %" PRId64 " is smaller than DTS %" PRId64 " in PES.\n", stream.pts, stream.dts);
        return TS_CHECK_FAILED;
    }
    return 0;
}

void grow_storage(PesStream& stream, uint32_t size) {
    if (stream.data.size() >= size) return;
    const uint32_t doubled = static_cast<uint32_t>(stream.data.size()) * 2;
    stream.data.resize(std::min(std::max({size, doubled, uint32_t{65536}}), PES_MAX_PAYLOAD));
}

void note_video_time(TsStreamTable& table, int64_t pts) {
    if (table.video_first_pts == -1 || (pts != -1 && pts < table.video_first_pts)) table.video_first_pts = pts;
    if (table.video_last_pts == -1 || (pts != -1 && pts > table.video_last_pts)) table.video_last_pts = pts;
}

void note_audio_time(TsAudioStream& audio, int64_t pts) {
    if (audio.first_pts == -1 || (pts != -1 && pts < audio.first_pts)) audio.first_pts = pts;
    if (audio.last_pts == -1 || (pts != -1 && pts > audio.last_pts)) {
        audio.last_pts = pts;
        // A product of 32 bits, deliberately.
        audio.end_pts = pts + static_cast<int32_t>(audio.frames_in_pes * audio.frame_ticks);
    }
}

}  // namespace

PesState start_pes(PesStream& stream, std::span<const uint8_t> bytes, const std::vector<ProgramRecord>& programs,
                   int64_t packets_read, int& status) {
    stream.stream_id = load_u8(bytes, 3);
    stream.PES_packet_length = load_be16(bytes, 4);
    const int checked = check_stream_id(stream, programs);
    status |= checked;
    stream.refused = checked != 0;
    if (stream.refused) return PesState::CUT_SHORT;
    status |= read_timestamps(stream, bytes);
    log_timestamp(stream, packets_read);

    stream.PES_header_data_length = load_u8(bytes, 8);
    const size_t payload = PES_FIXED_HEADER_SIZE + stream.PES_header_data_length;
    stream.expected = PES_MAX_PAYLOAD;
    if (stream.PES_packet_length != 0) {
        // The three bytes behind PES_packet_length count too. A length that ends inside the header leaves a packet that
        // never completes; one that ends with the header is an empty packet, complete at once.
        const int32_t rest = stream.PES_packet_length - stream.PES_header_data_length - 3;
        stream.expected = static_cast<uint32_t>(std::max(rest, 0));
        stream.refused = rest < 0;
        if (stream.refused) ++stream.losses.short_lengths;
        if (rest == 0) return PesState::COMPLETE;
    }
    return continue_pes(stream, bytes.subspan(std::min(payload, bytes.size())));
}

PesState continue_pes(PesStream& stream, std::span<const uint8_t> bytes) {
    const uint32_t count = static_cast<uint32_t>(std::min<size_t>(bytes.size(), stream.expected - stream.length));
    if (!stream.refused) stream.losses.bytes += bytes.size() - count;
    if (stream.expected == 0) return PesState::OPEN;
    if (count > 0) {
        grow_storage(stream, stream.length + count);
        std::memcpy(stream.data.data() + stream.length, bytes.data(), count);
        stream.length += count;
    }
    if (stream.length < stream.expected) return PesState::OPEN;
    stream.bytes_total += stream.expected;
    return PesState::COMPLETE;
}

int flush_pes(PesStream& stream, TsStreamTable& table) {
    int status = 0;
    const auto payload = std::span<const uint8_t>(stream.data).first(stream.length);
    if (elementary_stream_write(stream.output, payload) != 0) status = TS_OUTPUT_FAILED;
    if (stream.audio == nullptr)
        note_video_time(table, stream.pts);
    else
        note_audio_time(*stream.audio, stream.pts);
    stream.length = 0;
    stream.expected = 0;
    stream.PES_packet_length = 0;
    stream.stream_id = 0;
    stream.PES_header_data_length = 0;
    stream.pts = -1;
    return status;
}
