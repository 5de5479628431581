#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "bits/file.h"
#include "bits/page_buffer.h"

namespace quorlin {

constexpr uint32_t READER_CHUNK_SIZE = 0x100000;

// A file read through one buffer, confined to a byte range when `limited`. The owner opens `file`, sets the range and
// calls reader_start before the first read. Without a file, `memory` is read instead.
struct FileReader {
    File file;
    std::string path;                         // for messages; the file is open already
    uint64_t position = 0;                    // absolute offset of the next byte to be delivered
    PageBuffer buffer;                        // allocated by reader_start
    uint32_t valid = 0;                       // bytes now in the buffer
    uint32_t cursor = 0;                      // index of the next byte to deliver
    bool limited = false;                     // a byte limit is in force
    uint64_t start_offset = 0;                // where reading starts
    int64_t remaining = 0;                    // with `limited`: bytes that may still be consumed
    std::span<const uint8_t> memory;          // memory mode: the caller's block
    uint32_t chunk_size = READER_CHUNK_SIZE;  // bytes per request to the stream; tests make it small
    bool read_error = false;                  // the stream failed in the middle of the file (not its end)
    uint64_t error_offset = 0;                // where it failed first
};

// Opens a regular file for reading. Anything else that a playlist may name cannot be opened: a directory, a pipe that
// nobody writes to, a device without an end. Null on failure, nothing is printed (see open_failure_text).
[[nodiscard]] File open_input_file(const std::string& path);

// True when there is such a file, whether or not it can be opened.
bool is_regular_file(const std::string& path);

// Opens what is read only once and from its start, for example a pipe: anything but a directory. Null on failure,
// nothing is printed.
[[nodiscard]] File open_input_stream(const std::string& path);

// Why the last of these two calls failed, in words. To be asked before anything else is called.
const char* open_failure_text();

// Seeks to `start_offset` and fills the buffer. Always 0.
int reader_start(FileReader& reader);

// Starts again at `start_offset`, with `remaining` bytes to read when limited; a buffer that holds that place is kept.
void reader_restart(FileReader& reader, int64_t remaining);

// The bytes that wait in the buffer. Valid until the next call on the reader.
std::span<const uint8_t> reader_buffered(const FileReader& reader);

// Clears the read error, before another byte range of the same file.
void reader_clear_error(FileReader& reader);

// Copies up to `count` bytes to `destination`; returns how many were delivered (fewer at the end or the limit).
uint32_t reader_read(uint8_t* destination, uint32_t count, FileReader& reader);

// The next `count` bytes as a view: of the buffer where they lie in one piece, else copied to `scratch` (which holds
// at least `count` bytes). Shorter at the end or the limit. Valid until the next call on the reader.
std::span<const uint8_t> reader_view(FileReader& reader, uint32_t count, std::span<uint8_t> scratch);

// Moves by `offset` bytes, forwards or backwards. Always 0; a skip past the limit prints
// "ERROR: Invalid offset value for seeking." and moves all the same.
int reader_skip(int64_t offset, FileReader& reader);

// Big-endian integers; bytes that are not there read as zero.
uint16_t read_be16(FileReader& reader);
uint32_t read_be32(FileReader& reader);
uint64_t read_be64(FileReader& reader);

// Closes the file and clears the record; the buffer stays for the next file. Closing twice is harmless.
void reader_close(FileReader& reader);

// Size of the file in bytes (of the block in memory mode).
uint64_t reader_file_size(const FileReader& reader);

}  // namespace quorlin
