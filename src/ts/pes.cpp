#include "ts/pes.h"

#include <algorithm>
#include <cinttypes>
#include <cstddef>
#include <cstring>

#include "bits/byte_order.h"
#include "bits/finding.h"
#include "bits/stream_clock.h"
#include "ts/ts_status.h"

namespace quorlin {

namespace {

constexpr size_t TIMESTAMPS_END = 19;   // PTS and DTS follow the fixed header
constexpr uint32_t PES_LENGTH_END = 6;  // where the bytes that PES_packet_length counts begin
constexpr uint32_t PES_START_CODE_PREFIX = 1;
constexpr uint8_t PES_SCRAMBLING_CONTROL = 0x30;

// ISO/IEC 13818-1, 2.4.3.6: 33 bits in three parts, a marker bit after each.
int64_t read_timestamp(std::span<const uint8_t> bytes, size_t offset) {
    const uint64_t bits = load_be(bytes, offset, 5);
    return static_cast<int64_t>((bits >> 33 & 0x7) << 30 | (bits >> 17 & 0x7FFF) << 15 | (bits >> 1 & 0x7FFF));
}

// PES_scrambling_control, of what is a PES header indeed.
bool is_scrambled(std::span<const uint8_t> header) {
    const bool is_header = load_be(header, 0, 3) == PES_START_CODE_PREFIX && load_u8(header, 6) >> 6 == 2;
    return is_header && (load_u8(header, 6) & PES_SCRAMBLING_CONTROL) != 0;
}

// The stream_id of a PES packet against the stream types of its PID. Returns 0 or TS_CHECK_FAILED.
int check_stream_id(uint8_t stream_id, const PrivateStreamRule& rule) {
    using Wanted = PrivateStreamRule::Wanted;
    const bool is_private = stream_id == STREAM_ID_PRIVATE_STREAM_1;
    if (!is_private && rule.wanted == Wanted::EAC3)
        return fail(TS_CHECK_FAILED, "ts-pes-eac3-stream-id",
                    "ERROR: In a Zentra Plus stream, the stream_id must be set to 0xbd in the PES header.\n");
    if (!is_private && rule.wanted == Wanted::AC4)
        return fail(TS_CHECK_FAILED, "ts-pes-ac4-stream-id",
                    "ERROR: In a Vexro AC4 stream, the stream_id must be set to 0xbd in the PES header.\n");
    if (is_private && rule.private_forbidden)
        return fail(
            TS_CHECK_FAILED, "ts-pes-private-stream-type",
            "ERROR: In a Zentra Plus or Vexro AC4 stream, stream type must be set to 0x87 or 0x06 in the Program Map Table.\n");
    return 0;
}

void read_timestamps(PesTimestamps& times, std::span<const uint8_t> header) {
    times.PTS_DTS_flags = load_u8(header, 7) >> 6;
    times.pts = times.PTS_DTS_flags >= PTS_ONLY ? read_timestamp(header, 9) : NO_PTS;
    if (times.PTS_DTS_flags == PTS_AND_DTS) times.dts = read_timestamp(header, 14);
}

// Returns TS_CHECK_FAILED when the DTS is the later one. Deliberately only with bit 32 of the PTS set: below that the
// order of the two is not looked at.
int check_timestamps(const PesTimestamps& times) {
    if (times.PTS_DTS_flags != PTS_AND_DTS || (times.pts >> 32 & 1) == 0 || times.pts >= times.dts) return 0;
    return fail(TS_CHECK_FAILED, "ts-pes-pts-before-dts",
                "ERROR: PTS %" PRId64 " is smaller than DTS %" PRId64 " in PES.\n", times.pts, times.dts);
}

// Takes what is missing of the header from the front of `bytes`; true when it is complete.
bool collect_header(PesStream& stream, std::span<const uint8_t>& bytes) {
    const auto collect_to = [&](size_t size) {
        const size_t held = stream.header_length;
        const size_t count = held < size ? std::min(size - held, bytes.size()) : 0;
        std::copy_n(bytes.begin(), count, stream.header.begin() + static_cast<std::ptrdiff_t>(held));
        stream.header_length += static_cast<uint32_t>(count);
        bytes = bytes.subspan(count);
        return stream.header_length >= size;
    };
    return collect_to(PES_FIXED_HEADER_SIZE) && collect_to(PES_FIXED_HEADER_SIZE + stream.header[8]);
}

// Completes the bytes that time stamps may be read from when PES_header_data_length leaves them out, deliberately: with
// the first ones of the payload.
void append_timestamp_bytes(PesStream& stream, std::span<const uint8_t> payload) {
    const size_t held = std::min<size_t>(stream.header_length, TIMESTAMPS_END);
    const auto missing = std::span(stream.header).first(TIMESTAMPS_END).subspan(held);
    const size_t count = std::min(missing.size(), payload.size());
    std::copy_n(payload.begin(), count, missing.begin());
    std::fill(missing.begin() + static_cast<std::ptrdiff_t>(count), missing.end(), uint8_t{0});
}

// Reads and checks the complete header and prepares for the payload.
PesState finish_header(PesStream& stream, int64_t packets_read, int& status) {
    const std::span<const uint8_t> header = stream.header;
    stream.in_header = false;
    stream.stream_id = load_u8(header, 3);
    PlaceScope scope(pes_place(stream));
    const int checked = check_stream_id(stream.stream_id, stream.listed->rule);
    status |= checked;
    stream.dropped = checked != 0;
    if (stream.dropped) return PesState::CUT_SHORT;
    if (is_scrambled(header)) add_loss(stream.losses.scrambled_packets, 1);
    read_timestamps(stream.times, header);
    if (stream.times.pts != NO_PTS) stream.place_time = advance_stream_clock(stream.times.pts);
    current_place.time = stream.place_time;
    status |= check_timestamps(stream.times);
    log_timestamps(stream.log, stream.times, stream.bytes_total, packets_read);

    stream.expected = PES_MAX_PAYLOAD;
    const uint16_t PES_packet_length = load_be16(header, 4);
    if (PES_packet_length == 0) return PesState::OPEN;
    // What follows PES_packet_length counts, the rest of the header too. A length that ends inside the header leaves a
    // packet that never completes; one that ends with the header is an empty packet, complete at once.
    const int32_t rest = PES_packet_length - static_cast<int32_t>(stream.header_length - PES_LENGTH_END);
    stream.expected = static_cast<uint32_t>(std::max(rest, 0));
    stream.dropped = rest < 0;
    if (stream.dropped) add_loss(stream.losses.short_lengths, 1);
    return rest == 0 ? PesState::COMPLETE : PesState::OPEN;
}

void grow_storage(PesStream& stream, uint32_t size) {
    if (stream.data.size() >= size) return;
    const uint32_t doubled = static_cast<uint32_t>(stream.data.size()) * 2;
    stream.data.resize(std::min(std::max({size, doubled, uint32_t{65536}}), PES_MAX_PAYLOAD));
}

PesState collect_payload(PesStream& stream, std::span<const uint8_t> bytes) {
    const uint32_t count = static_cast<uint32_t>(std::min<size_t>(bytes.size(), stream.expected - stream.length));
    if (bytes.size() > count && !stream.dropped) add_loss(stream.losses.bytes, bytes.size() - count);
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

void keep_video_time(TsStreamTable& table, int64_t pts) {
    if (table.video_first_pts == NO_PTS || (pts != NO_PTS && pts < table.video_first_pts)) table.video_first_pts = pts;
    if (table.video_last_pts == NO_PTS || (pts != NO_PTS && pts > table.video_last_pts)) table.video_last_pts = pts;
}

void keep_audio_time(TsAudioStream& audio, int64_t pts) {
    if (audio.first_pts == NO_PTS || (pts != NO_PTS && pts < audio.first_pts)) audio.first_pts = pts;
    if (audio.last_pts == NO_PTS || (pts != NO_PTS && pts > audio.last_pts)) {
        audio.last_pts = pts;
        // A product of 32 bits, deliberately.
        audio.end_pts = pts + static_cast<int32_t>(audio.frames_in_pes * audio.frame_ticks);
    }
}

// What the recorder is told of the packets that are flushed with a payload.
void keep_facts(PesStream& stream) {
    stream.payload_bytes += stream.length;
    if (stream.place_time == NO_TIME || stream.length == 0) return;
    if (stream.first_time == NO_TIME || stream.place_time < stream.first_time) stream.first_time = stream.place_time;
    stream.last_time = std::max(stream.last_time, stream.place_time);
}

}  // namespace

void add_loss(Loss& loss, uint64_t count) {
    if (loss.count == 0) loss.offset = current_place.offset;
    loss.count += count;
}

void drop_open_header(PesStream& stream) {
    if (!stream.in_header) return;
    const PlaceScope scope(pes_place(stream));
    add_loss(stream.losses.cut_headers, 1);
    stream.in_header = false;
}

void start_pes(PesStream& stream) {
    stream.in_header = true;
    stream.header_length = 0;
    stream.expected = 0;
    stream.dropped = false;
    stream.offset = current_place.offset;
    stream.place_time = NO_TIME;
}

PesState collect_pes(PesStream& stream, std::span<const uint8_t> bytes, int64_t packets_read, int& status) {
    if (stream.in_header) {
        if (!collect_header(stream, bytes)) return PesState::OPEN;
        append_timestamp_bytes(stream, bytes);
        const PesState state = finish_header(stream, packets_read, status);
        if (state != PesState::OPEN) return state;
    }
    return collect_payload(stream, bytes);
}

Place pes_place(const PesStream& stream) {
    Place place = current_place;
    place.offset = stream.offset;
    place.stream = stream.pid;
    place.time = stream.place_time;
    return place;
}

int flush_pes(PesStream& stream, TsStreamTable& table) {
    int status = 0;
    const auto payload = std::span<const uint8_t>(stream.data).first(stream.length);
    if (elementary_stream_write(stream.output, payload) != 0) status = TS_OUTPUT_FAILED;
    if (stream.audio == nullptr)
        keep_video_time(table, stream.times.pts);
    else
        keep_audio_time(*stream.audio, stream.times.pts);
    keep_facts(stream);
    stream.length = 0;
    stream.expected = 0;
    stream.stream_id = 0;
    stream.times.pts = NO_PTS;
    return status;
}

}  // namespace quorlin
