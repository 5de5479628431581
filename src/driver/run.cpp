#include "driver/run.h"

#include <cerrno>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>

#include "bits/finding.h"
#include "bits/output_file.h"
#include "bits/place.h"
#include "bits/report.h"
#include "bits/stream_clock.h"
#include "driver/help.h"
#include "driver/master_playlist.h"
#include "driver/media_playlist.h"
#include "driver/name_template.h"
#include "driver/paths.h"
#include "driver/segment_facts.h"
#include "driver/segment_source.h"
#include "driver/timing_checks.h"
#include "playlist/playlist_reader.h"
#include "ts/ts_segment.h"

namespace quorlin {

namespace {

int refuse_input(const std::string& path) {
    return fail(-1, "run-invalid-input", "ERROR: Invalid input file path: %s\n", path.c_str());
}

// Validates the transport stream that the reader is open on, and gives what is known of it to the recorder.
int validate_file(FileReader& reader, const SegmentJob& job, TsSegmentTiming* timing) {
    reader_start(reader);
    const int status = ts_process_segment(reader, job, timing);
    record_file_facts(reader);
    return status;
}

int run_ts_file(const std::string& path, const SegmentJob& job) {
    const PlaceScope scope({.segment = path.c_str()});
    FileReader reader;
    reset_stream_clock();
    if (is_http_address(path)) {
        note("run-segment-path", "ERROR: Invalid segment path: %s\n", path.c_str());
        return refuse_input(path);
    }
    if (set_segment(reader, open_input_stream(path), path) != SEGMENT_READABLE) return refuse_input(path);
    announce_verdict(validate_file(reader, job, nullptr) == 0);
    return 0;
}

// What lives across the segments of a numbered series.
struct SeriesState {
    SegmentJob job;
    int error_flag = 0;
    FileReader reader = {};  // its buffer serves all of them
    TsSegmentTiming previous_timing = {};
};

// The segment that the reader of the series is open on.
void validate_series_segment(SeriesState& series) {
    const PlaceScope scope({.segment = series.reader.path.c_str()});
    TsSegmentTiming timing;
    series.error_flag |= validate_file(series.reader, series.job, &timing);
    series.job.first_segment = false;
    if (series.error_flag == 0 && series.previous_timing.video_first_pts != NO_PTS) {
        // A series reports its timing findings but they leave the verdict alone, deliberately.
        const VerdictUntouched untouched;
        (void)check_segment_timing(timing, series.previous_timing, TimingCaller::TEMPLATE);
    }
    series.previous_timing = timing;
}

// Says why the series ends where there are files that it leaves out: at `name`, of `index`, which cannot be opened or,
// with a file of the next index, is missing. errno is that of the failed open.
void report_end_of_series(const char* input, int32_t index, const std::string& name) {
    std::string next;
    if (errno != ENOENT)
        report_reason(ReasonEffect::UNVALIDATED, "reason-series-ends", name,
                      "cannot be opened: %s; the series ends here", open_failure_text());
    else if (index != std::numeric_limits<int32_t>::max() &&
             expand_template(input, index + 1, next) == TemplateKind::NUMBERED && is_regular_file(next))
        report_reason(ReasonEffect::UNVALIDATED, "reason-series-gap", name,
                      "is missing: the series ends here, and %s is not validated", next.c_str());
}

// Opens the reader on a file of the series. Returns 0, or -1 when it cannot be opened: errno says why.
int open_in_series(FileReader& reader, const std::string& name) {
    reader_close(reader);
    reader.path = name;
    reader.file = open_input_file(name);
    return reader.file ? 0 : -1;
}

// Takes the stem of the template itself, not of a segment's name.
int run_template(const CommandLineOptions& options, const SegmentJob& job) {
    SeriesState series = {.job = job};
    std::string name;
    reset_stream_clock();
    for (int64_t next = options.start_index; next <= std::numeric_limits<int32_t>::max(); ++next) {
        const auto index = static_cast<int32_t>(next);
        const TemplateKind kind = expand_template(options.input_path, index, name);
        if (kind == TemplateKind::NO_MATCH) break;
        if (open_in_series(series.reader, name) != 0) {
            report_end_of_series(options.input_path, index, name);
            break;
        }
        validate_series_segment(series);
        if (kind == TemplateKind::FIXED || std::ferror(stdout) != 0) break;
    }
    if (series.job.first_segment)  // none was found
        return fail(-1, "run-no-series-files",
                    "ERROR: No matching files have been found which follow the rules of the template:%s\n",
                    options.input_path);
    announce_verdict(series.error_flag == 0);
    return 0;
}

int run_playlist(const std::string& path, const SegmentJob& job) {
    Playlist playlist;
    int error_flag = 0;
    {
        const PlaceScope scope({.playlist = path.c_str()});
        error_flag = read_playlist(path, playlist);
    }
    if (error_flag == PLAYLIST_REFUSED) return -1;
    if (playlist.is_master) {
        report_playlist_losses(path, playlist.losses);
        error_flag |= validate_master_playlist(path, playlist, job.output_dir);
    } else {
        error_flag |= validate_read_playlist({path, job}, playlist);
    }
    announce_verdict(error_flag == 0);
    return 0;
}

int run_input(const CommandLineOptions& options) {
    SegmentJob job;
    if (options.output_dir != nullptr) job.output_dir = options.output_dir;
    if (job.output_dir && create_output_dir(*job.output_dir) != 0)
        return fail(-1, "run-output-directory", "ERROR: create output folider (%s) failed.\n", job.output_dir->c_str());
    // It has one: an input of a known kind has an extension.
    (void)file_stem(options.input_path, job.stem);
    switch (options.input_kind) {
        case InputKind::TS_FILE:
            return run_ts_file(options.input_path, job);
        case InputKind::TS_TEMPLATE:
            return run_template(options, job);
        case InputKind::PLAYLIST:
            return run_playlist(options.input_path, job);
        default:
            return refuse_input(options.input_path);
    }
}

}  // namespace

int run(int argc, const char* const* argv) {
    forget_output_files();
    if (argc <= 1) {
        print_help();
        return 0;
    }
    CommandLineOptions options;
    if (parse_command_line(argc, argv, options) != 0) {
        print_help();
        return -1;
    }
    // After -h or -v an input that was named before it is looked at all the same, deliberately: of unknown kind, since
    // the options were not read to their end.
    if (options.input_path == nullptr) return 0;
    return run_input(options);
}

}  // namespace quorlin
