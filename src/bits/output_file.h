#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "bits/file.h"
#include "bits/page_buffer.h"

namespace quorlin {

// An elementary-stream file being written. After the first failed write nothing more is written to it.
struct OutputFile {
    PageBuffer buffer;  // of the stream: outlives it
    File file;
    std::string path;
    bool failed = false;
};

// Forgets which playlist began which file; at the start of a run.
void forget_output_files();

// "<directory>/<stem><suffix>"
std::string output_path(const std::string& directory, const std::string& stem, const std::string& suffix);

// Opens `path` with `mode` ("wb" or "ab"). Returns 0, or -1 when it cannot be opened (nothing is printed). A file that
// was begun in this run for another playlist has a remark on standard error.
[[nodiscard]] int output_open(OutputFile& output, const std::string& path, const char* mode);

// Appends `bytes`. Returns 0, or -1 when this write failed or an earlier one did. Does nothing on a file that is not
// open.
[[nodiscard]] int output_write(OutputFile& output, std::span<const uint8_t> bytes);

// Closes the file; 0, or -1 when data that was still buffered could not be written. Closing twice is harmless.
[[nodiscard]] int output_close(OutputFile& output);

// Opens an elementary-stream file for a new run ("wb") or to append to it ("ab"); on failure prints
// "ERROR: Failed to create elementary stream path: ..." and returns -1.
[[nodiscard]] int elementary_stream_open(OutputFile& output, const std::string& path, bool truncate);

// output_write and output_close that print "ERROR: Failed to write elementary stream path: ..." once per file; -1 on
// failure.
[[nodiscard]] int elementary_stream_write(OutputFile& output, std::span<const uint8_t> bytes);
[[nodiscard]] int elementary_stream_close(OutputFile& output);

}  // namespace quorlin
