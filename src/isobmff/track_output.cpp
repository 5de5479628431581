#include "isobmff/track_output.h"

#include <cerrno>
#include <cstring>
#include <string>

#include "bits/finding.h"
#include "bits/report.h"
#include "isobmff/segment_status.h"

namespace quorlin {

namespace {

const char* codec_extension(CodecKind kind) {
    switch (kind) {
        case CodecKind::AAC:
            return ".aac";
        case CodecKind::AVC1:
        case CodecKind::AVC3:
            return ".264";
        case CodecKind::AC3:
            return ".ac3";
        case CodecKind::EC3:
            return ".ec3";
        case CodecKind::HEV1:
        case CodecKind::HVC1:
            return ".265";
        case CodecKind::AC4:
            return ".ac4";
        default:
            return ".data";
    }
}

std::string track_suffix(const OutputNaming& naming, uint32_t track_ID, CodecKind kind) {
    // The number is printed as a signed one, deliberately.
    const auto id = static_cast<int32_t>(track_ID);
    return "_" + naming.init_stem + "_track_id_" + std::to_string(id) + codec_extension(kind);
}

}  // namespace

int open_track_output(TrackOutput& output, const OutputNaming& naming, uint32_t track_ID, CodecKind kind) {
    if (!naming.dir || output.opened) return 0;
    const std::string path = output_path(*naming.dir, naming.stem, track_suffix(naming, track_ID, kind));
    if (output_open(output.file, path, "wb") != 0) {
        report_reason(ReasonEffect::FAILS_UNVALIDATED, "reason-mp4-output-open", path,
                      "the track's file cannot be opened: %s", std::strerror(errno));
        return MP4_FINDING;
    }
    output.opened = true;
    return 0;
}

WriteResult write_track_output(TrackOutput& output, std::span<const uint8_t> bytes) {
    const bool failed_before = output.file.failed;
    if (output_write(output.file, bytes) == 0) return WRITE_DONE;
    if (failed_before) return WRITE_FAILED_AGAIN;
    // The messages of a failed write name no file.
    report_reason(ReasonEffect::REMARK, "reason-mp4-output-write", output.file.path, "cannot be written: %s",
                  std::strerror(errno));
    return WRITE_FAILED;
}

int write_sample_data(TrackOutput& output, std::span<const uint8_t> bytes) {
    const WriteResult result = write_track_output(output, bytes);
    if (result == WRITE_FAILED)
        return fail(MP4_FINDING, "mp4-write-samples", "[SV]   : Failed to fwrite %zu bytes to file\n", bytes.size());
    return result == WRITE_DONE ? 0 : MP4_FINDING;
}

int close_track_output(TrackOutput& output) {
    const bool failed_before = output.file.failed;
    if (output_close(output.file) == 0) return 0;
    if (!failed_before)
        report_reason(ReasonEffect::FAILS, "reason-mp4-output-close", output.file.path,
                      "data could not be written when the file was closed: %s", std::strerror(errno));
    return MP4_FINDING;
}

}  // namespace quorlin
