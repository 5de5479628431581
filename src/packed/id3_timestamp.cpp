#include "packed/id3_timestamp.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <span>
#include <string_view>

#include "bits/byte_order.h"
#include "bits/place.h"
#include "bits/report.h"
#include "bits/stream_clock.h"

namespace quorlin {

namespace {

using namespace std::string_view_literals;

constexpr uint32_t ID3_HEADER_SIZE = 10;
constexpr size_t ID3_SIZE_OFFSET = 6;

// Inside the tag body, which begins with the PRIV frame's ten-byte header.
constexpr size_t PRIV_OWNER_OFFSET = 10;
constexpr std::string_view PRIV_OWNER = "com.apple.streaming.transportStreamTimestamp\0"sv;
constexpr size_t PRIV_TIMESTAMP_OFFSET = PRIV_OWNER_OFFSET + PRIV_OWNER.size();
constexpr uint32_t PRIV_BODY_SIZE = PRIV_TIMESTAMP_OFFSET + sizeof(uint64_t);

bool has_text(std::span<const uint8_t> bytes, size_t offset, std::string_view text) {
    return bytes.size() >= offset + text.size() &&
           std::equal(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset),
                      [](char character, uint8_t byte) { return static_cast<uint8_t>(character) == byte; });
}

// Reads on over `count` bytes of the tag. False when they are not all there.
bool read_over(FileReader& reader, uint32_t count) {
    std::array<uint8_t, 4096> scratch;
    while (count > 0) {
        const uint32_t piece = std::min<uint32_t>(count, scratch.size());
        if (reader_view(reader, piece, scratch).size() < piece) return false;
        count -= piece;
    }
    return true;
}

// Refuses the tag where the reader stands. A failed read has a reason of its own. Always -1.
int refuse_tag(const FileReader& reader, const std::string& path, const char* id, const char* text) {
    current_place.offset = static_cast<int64_t>(reader.position);
    if (!reader.read_error)
        report_reason(ReasonEffect::FAILS_UNVALIDATED, id, path, "%s (byte %" PRIu64 ")", text, reader.position);
    return -1;
}

// ID3 writes its size as four times seven bits.
uint32_t syncsafe(uint32_t size) {
    return (size >> 24 & 127) << 21 | (size >> 16 & 127) << 14 | (size >> 8 & 127) << 7 | (size & 127);
}

// The usual tag is shorter than 128 bytes, where both ways to read its size agree.
void remark_size(const std::string& path, uint32_t size) {
    if (size == syncsafe(size)) return;
    report_reason(ReasonEffect::REMARK, "reason-packed-id3-size", path,
                  "the size of the ID3 tag is read as the plain number %" PRIu32
                  "; as four times seven bits it is %" PRIu32,
                  size, syncsafe(size));
}

void remark_timestamp(const std::string& path, int64_t timestamp) {
    if (timestamp >= 0 && timestamp < CLOCK_WRAP) return;
    report_reason(ReasonEffect::REMARK, "reason-packed-id3-33-bits", path,
                  "the time stamp of the ID3 tag has more than 33 bits: the upper ones are to be 0");
}

using TagBody = std::array<uint8_t, PRIV_BODY_SIZE>;

// Reads the tag: the start of its body into `body`. Returns 0 or -1.
int read_tag(FileReader& reader, const std::string& path, TagBody& body) {
    std::array<uint8_t, ID3_HEADER_SIZE> header = {};
    if (reader_read(header.data(), ID3_HEADER_SIZE, reader) < ID3_HEADER_SIZE || !has_text(header, 0, "ID3"))
        return refuse_tag(reader, path, "reason-packed-id3-none",
                          "no ID3 tag at the start of the packed audio segment");
    // Deliberately a plain 32-bit number, not ID3's form of four times seven bits.
    const uint32_t size = load_be32(header, ID3_SIZE_OFFSET);
    remark_size(path, size);
    if (size < PRIV_BODY_SIZE)
        return refuse_tag(reader, path, "reason-packed-id3-short", "the ID3 tag is too short for a timestamp");
    if (reader_read(body.data(), PRIV_BODY_SIZE, reader) < PRIV_BODY_SIZE || !read_over(reader, size - PRIV_BODY_SIZE))
        return refuse_tag(reader, path, "reason-packed-id3-cut", "the ID3 tag is longer than the segment");
    return 0;
}

// Returns 0, or -1 when the frame that the tag begins with is not that of the time stamp.
int check_frame(const FileReader& reader, const std::string& path, const TagBody& body) {
    if (!has_text(body, 0, "PRIV"))
        return refuse_tag(reader, path, "reason-packed-id3-frame", "the ID3 tag does not begin with a PRIV frame");
    if (!has_text(body, PRIV_OWNER_OFFSET, PRIV_OWNER))
        return refuse_tag(reader, path, "reason-packed-id3-owner",
                          "the PRIV frame of the ID3 tag has another owner than the timestamp's");
    return 0;
}

}  // namespace

int read_id3_timestamp(FileReader& reader, const std::string& path, int64_t& timestamp) {
    TagBody body = {};
    if (read_tag(reader, path, body) != 0 || check_frame(reader, path, body) != 0) return -1;
    timestamp = static_cast<int64_t>(load_be64(body, PRIV_TIMESTAMP_OFFSET));
    remark_timestamp(path, timestamp);
    return 0;
}

}  // namespace quorlin
