#pragma once

#include <cstdarg>
#include <string_view>

#include "bits/facts.h"
#include "bits/place.h"

namespace quorlin {

struct Finding {
    const char* id;
    std::string_view text;  // as on standard output, line ends included
    bool fails;             // sets the verdict, in this run
    const Place& place;
};

struct Reason {
    const char* id;
    std::string_view reason;  // without "quorlin: <path>: " and the line end
    std::string_view file;
    bool fails;
    bool unvalidated;  // something was left out
    const Place& place;
};

// What a front end does with the events of a run, in place of standard output. Reasons are printed all the same.
struct Recorder {
    void (*finding)(const Finding& finding);
    void (*text)(std::string_view text);  // what frames the findings
    void (*verdict)(std::string_view text, bool passed);
    void (*reason)(const Reason& reason);
    void (*playlist)(const PlaylistFacts& playlist, const Place& place);
    void (*segment)(const SegmentFacts& segment, const Place& place);
};

// Null ends the recording. The recorder is borrowed.
void set_recorder(const Recorder* recorder);

// Null when nothing records: the usual case.
const Recorder* current_recorder();

// Formats into a buffer that the next call reuses.
__attribute__((format(printf, 1, 0))) std::string_view format_text(const char* format, va_list args);

}  // namespace quorlin
