#include "driver/segment_format.h"

#include <algorithm>
#include <string_view>

#include "bits/report.h"

namespace quorlin {

namespace {

using namespace std::string_view_literals;

std::string_view text_of(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

struct FirstBytes {
    std::string_view bytes;
    const char* meaning;
};

// Not "MPEG audio": its sync word has bits that noise has, too.
constexpr FirstBytes FIRST_BYTES[] = {
    {"#EXTM3U"sv, "a playlist"},
    {"\xFF\xF0"sv, "ADTS audio without the ID3 tag that packed audio begins with"},
    {"\xFF\xF1"sv, "ADTS audio without the ID3 tag that packed audio begins with"},
    {"\xFF\xF9"sv, "ADTS audio without the ID3 tag that packed audio begins with"},
    {"\x0B\x77"sv, "AC-3 or E-AC-3 audio without the ID3 tag that packed audio begins with"},
    {"\xAC\x40"sv, "AC-4 audio without the ID3 tag that packed audio begins with"},
    {"\xAC\x41"sv, "AC-4 audio without the ID3 tag that packed audio begins with"},
    {"\0\0\x01\xBA"sv, "an MPEG program stream"},
    {"\0\0\0\x01"sv, "an H.264 or H.265 elementary stream"},
    {"\x1A\x45\xDF\xA3"sv, "Matroska or WebM"},
    {"WEBVTT"sv, "WebVTT subtitles"},
    {"\xEF\xBB\xBFWEBVTT"sv, "WebVTT subtitles"},
    {"RIFF"sv, "RIFF (AVI or WAVE)"},
    {"OggS"sv, "Ogg"},
    {"fLaC"sv, "FLAC"},
    {"FLV"sv, "Flash video"},
    {"\x1F\x8B"sv, "gzip data"},
};

// Box types of ISO/IEC 14496-12 that a file may begin with and a segment may not.
constexpr std::string_view OTHER_BOXES[] = {"moov", "sidx", "emsg", "prft", "mdat", "free", "skip", "ssix", "uuid"};

bool is_text(std::string_view start) {
    const auto printable = [](char c) { return (c >= ' ' && c < 127) || c == '\t' || c == '\r' || c == '\n'; };
    return std::all_of(start.begin(), start.end(), printable);
}

// Whether bytes 0x47 stand at the distance of packets, from some place on; `first` becomes that place.
bool has_packets(std::string_view start, size_t distance, size_t& first) {
    for (first = 0; first < distance && first + 2 * distance < start.size(); ++first)
        if (start[first] == 'G' && start[first + distance] == 'G' && start[first + 2 * distance] == 'G') return true;
    return false;
}

// ISO/IEC 13818-1, 2.4.3.2: packets of 188 bytes; others put 4 or 16 more to each.
const char* packet_meaning(std::string_view start) {
    size_t first = 0;
    if (has_packets(start, 192, first)) return "a transport stream with packets of 192 bytes";
    if (has_packets(start, 204, first)) return "a transport stream with packets of 204 bytes";
    if (has_packets(start, 188, first)) return "a transport stream that does not begin with a packet";
    return nullptr;
}

// Null for what is not known.
const char* meaning_of(std::string_view start) {
    for (const FirstBytes& known : FIRST_BYTES)
        if (start.starts_with(known.bytes)) return known.meaning;
    const std::string_view box_type = start.substr(std::min<size_t>(start.size(), 4), 4);
    if (std::find(std::begin(OTHER_BOXES), std::end(OTHER_BOXES), box_type) != std::end(OTHER_BOXES))
        return "ISO media that does not begin with a box ftyp, styp or moof";
    if (const char* packets = packet_meaning(start)) return packets;
    if (start.front() == '<' && is_text(start)) return "HTML or XML text, such as the error page of a server";
    return is_text(start) ? "text" : nullptr;
}

}  // namespace

SegmentFormat detect_segment_format(std::span<const uint8_t> start) {
    const std::string_view text = text_of(start).substr(0, FORMAT_DECIDING_SIZE);
    if (text.starts_with('G')) return SegmentFormat::TRANSPORT_STREAM;
    if (text.starts_with("ID3")) return SegmentFormat::PACKED_AUDIO;
    if (text.starts_with("#M3U")) return SegmentFormat::PLAYLIST;
    const std::string_view box_type = text.substr(std::min<size_t>(text.size(), 4));
    const bool media = box_type == "ftyp" || box_type == "styp" || box_type == "moof";
    return media ? SegmentFormat::ISO_MEDIA : SegmentFormat::UNKNOWN;
}

void report_unknown_format(std::span<const uint8_t> start, const std::string& path, const std::string& key_method) {
    using enum ReasonEffect;
    if (start.empty()) {
        report_reason(FAILS_UNVALIDATED, "reason-segment-empty", path, "the segment is empty");
        return;
    }
    const char* meaning = meaning_of(text_of(start));
    if (meaning != nullptr)
        report_reason(FAILS_UNVALIDATED, "reason-segment-looks-like", path,
                      "the segment's container is not recognised from its first 8 bytes: it looks like %s", meaning);
    else if (key_method != "NONE")
        report_reason(FAILS_UNVALIDATED, "reason-segment-encrypted", path,
                      "the segment's container is not recognised: it is encrypted (EXT-X-KEY with METHOD=%s)",
                      key_method.c_str());
    else
        report_reason(FAILS_UNVALIDATED, "reason-segment-container", path,
                      "the segment's container is not recognised from its first 8 bytes");
}

}  // namespace quorlin
