#include "driver/segment_format.h"

#include <algorithm>
#include <string_view>

#include "bits/report.h"

SegmentFormat detect_segment_format(std::span<const uint8_t> start, const std::string& path) {
    const std::string_view text(reinterpret_cast<const char*>(start.data()),
                                std::min<size_t>(start.size(), FORMAT_DECIDING_SIZE));
    if (text.starts_with('G')) return SegmentFormat::TRANSPORT_STREAM;
    if (text.starts_with("ID3")) return SegmentFormat::PACKED_AUDIO;
    const bool playlist = text.starts_with("#M3U");
    if (!playlist && (text.ends_with("ftyp") || text.ends_with("styp") || text.ends_with("moof")) &&
        text.size() == FORMAT_DECIDING_SIZE)
        return SegmentFormat::ISO_MEDIA;
    report_reason(path, "the segment's container is not recognised from its first 8 bytes");
    return playlist ? SegmentFormat::PLAYLIST : SegmentFormat::UNKNOWN;
}
