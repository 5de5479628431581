#include "bits/output_file.h"

#include <cstdio>

namespace {

// Large writes from aligned memory cost the kernel about half of what the size of a PES packet or a sample costs.
constexpr size_t OUTPUT_BUFFER_SIZE = 256 * 1024;

// Prints the failure once per file: `failed_before` is the state before the step that returned `status`.
int report_failed_write(const OutputFile& output, bool failed_before, int status) {
    if (status != 0 && !failed_before)
        std::printf("ERROR: Failed to write elementary stream path: %s\n", output.path.c_str());
    return status;
}

}  // namespace

std::string output_path(const std::string& directory, const std::string& stem, const std::string& suffix) {
    return directory + "/" + stem + suffix;
}

int output_open(OutputFile& output, const std::string& path, const char* mode) {
    output.path = path;
    output.failed = false;
    output.file.reset(std::fopen(path.c_str(), mode));
    if (!output.file) return -1;
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
    if (status != 0) std::printf("ERROR: Failed to create elementary stream path: %s\n", path.c_str());
    return status;
}

int elementary_stream_write(OutputFile& output, std::span<const uint8_t> bytes) {
    const bool failed_before = output.failed;
    return report_failed_write(output, failed_before, output_write(output, bytes));
}

int elementary_stream_close(OutputFile& output) {
    const bool failed_before = output.failed;
    return report_failed_write(output, failed_before, output_close(output));
}
