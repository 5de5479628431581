#pragma once

#include <string>

enum SegmentFormat {
    FORMAT_UNKNOWN = -1,
    FORMAT_PLAYLIST = 0,
    FORMAT_TS = 1,
    FORMAT_ISO_MEDIA = 2,
    FORMAT_PACKED_AUDIO = 3,  // behind an ID3 tag
};

// Recognises the container of a segment from the first 8 bytes of its file (not of its byte range). Prints
// "ERROR: Invalid file path: ..." and returns FORMAT_UNKNOWN when the file cannot be opened. What is no segment has its
// reason on standard error.
SegmentFormat detect_segment_format(const std::string& path);
