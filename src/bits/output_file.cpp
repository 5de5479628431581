#include "bits/output_file.h"

#include <cstdio>
#include <map>

#include "bits/finding.h"
#include "bits/place.h"
#include "bits/report.h"

namespace quorlin {

namespace {

// Large writes from aligned memory cost the kernel about half of what the size of a PES packet or a sample costs.
constexpr size_t OUTPUT_BUFFER_SIZE = size_t{256} * 1024;

// The playlist for which each file of this run was begun last, by the file's path.
std::map<std::string, std::string> file_owners;

// Playlists with one stem write the same files.
void report_started_anew(const std::string& path) {
    const char* playlist = current_place.playlist;
    if (playlist == nullptr) return;
    const auto [owner, is_new] = file_owners.try_emplace(path, playlist);
    if (is_new || owner->second == playlist) return;
    report_reason(ReasonEffect::REMARK, "reason-output-started-anew", path,
                  "started anew for %s: what this run had written of %s is replaced", playlist, owner->second.c_str());
    owner->second = playlist;
}

// Prints the failure once per file: `failed_before` is the state before the step that returned `status`.
int report_failed_write(const OutputFile& output, bool failed_before, int status) {
    if (status == 0 || failed_before) return status;
    return fail(status, "output-write", "ERROR: Failed to write elementary stream path: %s\n", output.path.c_str());
}

}  // namespace

void forget_output_files() {
    file_owners.clear();
}

std::string output_path(const std::string& directory, const std::string& stem, const std::string& suffix) {
    return directory + "/" + stem + suffix;
}

int output_open(OutputFile& output, const std::string& path, const char* mode) {
    output.path = path;
    output.failed = false;
    output.file.reset(std::fopen(path.c_str(), mode));
    if (!output.file) return -1;
    if (*mode == 'w') report_started_anew(path);
    page_buffer_allocate(output.buffer, OUTPUT_BUFFER_SIZE);
    std::setvbuf(output.file.get(), reinterpret_cast<char*>(output.buffer.bytes.get()), _IOFBF, OUTPUT_BUFFER_SIZE);
    return 0;
}

int output_write(OutputFile& output, std::span<const uint8_t> bytes) {
    if (!output.file || bytes.empty()) return output.failed ? -1 : 0;
    if (!output.failed && std::fwrite(bytes.data(), 1, bytes.size(), output.file.get()) != bytes.size())
        output.failed = true;
    return output.failed ? -1 : 0;
}

int output_close(OutputFile& output) {
    if (!output.file) return 0;
    // A close after a failed write fails again for the same reason: it is reported once.
    if (std::fclose(output.file.release()) != 0) output.failed = true;
    return output.failed ? -1 : 0;
}

int elementary_stream_open(OutputFile& output, const std::string& path, bool truncate) {
    const int status = output_open(output, path, truncate ? "wb" : "ab");
    if (status == 0) return 0;
    return fail(status, "output-create", "ERROR: Failed to create elementary stream path: %s\n", path.c_str());
}

int elementary_stream_write(OutputFile& output, std::span<const uint8_t> bytes) {
    const bool failed_before = output.failed;
    return report_failed_write(output, failed_before, output_write(output, bytes));
}

int elementary_stream_close(OutputFile& output) {
    const bool failed_before = output.failed;
    return report_failed_write(output, failed_before, output_close(output));
}

}  // namespace quorlin
