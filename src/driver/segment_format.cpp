#include "driver/segment_format.h"

#include <cstdio>
#include <string_view>

#include "bits/file_reader.h"
#include "bits/report.h"

SegmentFormat detect_segment_format(const std::string& path) {
    const File file = open_input_file(path);
    if (!file) {
        const char* reason = open_failure_text();
        std::printf("ERROR: Invalid file path: %s\n", path.c_str());
        report_reason(path, "cannot be opened again: %s", reason);
        return FORMAT_UNKNOWN;
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    char bytes[8] = {};
    const size_t size = std::fread(bytes, 1, sizeof bytes, file.get());
    if (std::ferror(file.get()) != 0) {
        report_reason(path, "read error at the start of the segment");
        return FORMAT_UNKNOWN;
    }
    const std::string_view start(bytes, size);
    if (start.starts_with('G')) return FORMAT_TS;
    if (start.starts_with("ID3")) return FORMAT_PACKED_AUDIO;
    const std::string_view box_type = std::string_view(bytes, sizeof bytes).substr(4);
    if (box_type == "ftyp" || box_type == "styp" || box_type == "moof") return FORMAT_ISO_MEDIA;
    report_reason(path, "the segment's container is not recognised from its first 8 bytes");
    return start.starts_with("#M3U") ? FORMAT_PLAYLIST : FORMAT_UNKNOWN;
}
