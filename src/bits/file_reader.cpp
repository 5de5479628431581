#include "bits/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "bits/finding.h"

namespace quorlin {

namespace {

// No open fails with this one: it stands for what the system has no error for.
constexpr int NOT_A_REGULAR_FILE = ESPIPE;

uint64_t remaining_bytes(const FileReader& reader) {
    return reader.remaining > 0 ? static_cast<uint64_t>(reader.remaining) : 0;
}

// One request to the stream: up to `count` bytes into the buffer. A failed read counts as the end of the file.
uint32_t fill_buffer(FileReader& reader, uint32_t count) {
    page_buffer_allocate(reader.buffer, count);  // a restart may have made a small one
    const size_t got = std::fread(reader.buffer.bytes.get(), 1, count, reader.file.get());
    if (std::ferror(reader.file.get()) != 0 && !reader.read_error) {
        reader.read_error = true;
        // A pipe cannot tell where it stands; it is read from front to back.
        const off_t place = ftello(reader.file.get());
        reader.error_offset = place < 0 ? reader.position : static_cast<uint64_t>(place);
    }
    return static_cast<uint32_t>(got);
}

// A place that the stream cannot reach (RFC 8216 byte ranges name any number) is past its end.
void seek(FileReader& reader, int64_t offset, int whence) {
    if (fseeko(reader.file.get(), offset, whence) != 0 && offset != 0) fseeko(reader.file.get(), 0, SEEK_END);
}

bool at_end_of_stream(const FileReader& reader) {
    return reader.cursor == reader.valid && (!reader.file || std::feof(reader.file.get()) != 0 || reader.read_error);
}

std::span<const uint8_t> reader_bytes(const FileReader& reader) {
    return reader.file ? page_buffer_bytes(reader.buffer) : reader.memory;
}

uint32_t copy_from_buffer(FileReader& reader, uint8_t* destination, uint32_t count) {
    const uint32_t size = std::min(count, reader.valid - reader.cursor);
    if (size == 0) return 0;
    std::memcpy(destination, reader_bytes(reader).data() + reader.cursor, size);
    reader.cursor += size;
    return size;
}

// With the buffer used up: whole chunks first, then one fill of the buffer for the rest.
uint32_t fetch(FileReader& reader, uint8_t* destination, uint32_t count) {
    if (!reader.file) return 0;
    uint32_t delivered = 0;
    while (count - delivered >= reader.chunk_size) {
        reader.valid = fill_buffer(reader, reader.chunk_size);
        reader.cursor = 0;
        delivered += copy_from_buffer(reader, destination + delivered, reader.chunk_size);
        if (reader.valid < reader.chunk_size) return delivered;
    }
    if (count > delivered) {
        reader.valid = fill_buffer(reader, reader.chunk_size);
        reader.cursor = 0;
        delivered += copy_from_buffer(reader, destination + delivered, count - delivered);
    }
    return delivered;
}

uint64_t read_be(FileReader& reader, uint32_t count) {
    uint64_t value = 0;
    for (uint32_t i = 0; i < count; ++i) {
        uint8_t byte = 0;
        reader_read(&byte, 1, reader);
        value = value << 8 | byte;
    }
    return value;
}

}  // namespace

File open_input_file(const std::string& path) {
    // Does not wait for the other end of a pipe; for a regular file the flag means nothing.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    struct stat status = {};
    const bool known = fstat(descriptor, &status) == 0;
    const bool regular = known && S_ISREG(status.st_mode);
    File file(regular ? fdopen(descriptor, "rb") : nullptr);
    if (file) return file;
    const bool by_kind = known && !regular;
    const int cause = !by_kind ? errno : S_ISDIR(status.st_mode) ? EISDIR : NOT_A_REGULAR_FILE;
    close(descriptor);
    errno = cause;
    return nullptr;
}

bool is_regular_file(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

File open_input_stream(const std::string& path) {
    File file(std::fopen(path.c_str(), "rb"));
    struct stat status = {};
    if (file && fstat(fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode)) {
        file.reset();
        errno = EISDIR;
    }
    return file;
}

const char* open_failure_text() {
    return errno == NOT_A_REGULAR_FILE ? "not a regular file" : std::strerror(errno);
}

int reader_start(FileReader& reader) {
    reader.position = reader.start_offset;
    reader.cursor = 0;
    if (!reader.file) {
        // Memory mode counts the limit from the start of the block.
        const uint64_t end = reader.limited ? remaining_bytes(reader) + reader.start_offset : reader.memory.size();
        reader.valid = static_cast<uint32_t>(std::min<uint64_t>(end, reader.memory.size()));
        reader.cursor = static_cast<uint32_t>(std::min<uint64_t>(reader.start_offset, reader.valid));
        return 0;
    }
    // The reader's own buffer is the only one: whole chunks go straight into it.
    std::setvbuf(reader.file.get(), nullptr, _IONBF, 0);
    page_buffer_allocate(reader.buffer, reader.chunk_size);
    seek(reader, static_cast<int64_t>(reader.start_offset), SEEK_SET);
    uint32_t count = reader.chunk_size;
    if (reader.limited) count = static_cast<uint32_t>(std::min<uint64_t>(remaining_bytes(reader), count));
    reader.valid = fill_buffer(reader, count);
    return 0;
}

void reader_restart(FileReader& reader, int64_t remaining) {
    if (reader.limited) reader.remaining = remaining;
    const uint64_t buffer_start = reader.position - reader.cursor;
    if (reader.start_offset < buffer_start || reader.start_offset >= buffer_start + reader.valid) {
        reader_start(reader);
        return;
    }
    reader.cursor = static_cast<uint32_t>(reader.start_offset - buffer_start);
    reader.position = reader.start_offset;
}

std::span<const uint8_t> reader_buffered(const FileReader& reader) {
    return reader_bytes(reader).subspan(reader.cursor, reader.valid - reader.cursor);
}

void reader_clear_error(FileReader& reader) {
    if (reader.file) std::clearerr(reader.file.get());
    reader.read_error = false;
}

uint32_t reader_read(uint8_t* destination, uint32_t count, FileReader& reader) {
    if (at_end_of_stream(reader)) return 0;
    if (reader.limited) count = static_cast<uint32_t>(std::min<uint64_t>(remaining_bytes(reader), count));
    uint32_t delivered = copy_from_buffer(reader, destination, count);
    if (delivered < count) delivered += fetch(reader, destination + delivered, count - delivered);
    reader.position += delivered;
    if (reader.limited) reader.remaining -= delivered;
    return delivered;
}

std::span<const uint8_t> reader_view(FileReader& reader, uint32_t count, std::span<uint8_t> scratch) {
    const bool inside_limit = !reader.limited || remaining_bytes(reader) >= count;
    if (!inside_limit || reader.valid - reader.cursor < count)
        return scratch.first(reader_read(scratch.data(), count, reader));
    const std::span<const uint8_t> view = reader_bytes(reader).subspan(reader.cursor, count);
    reader.cursor += count;
    reader.position += count;
    if (reader.limited) reader.remaining -= count;
    return view;
}

int reader_skip(int64_t offset, FileReader& reader) {
    reader.position += static_cast<uint64_t>(offset);
    if (!reader.file) return 0;
    const int64_t cursor = reader.cursor;
    const int64_t valid = reader.valid;
    if (offset >= -cursor && offset < valid - cursor) {
        reader.cursor = static_cast<uint32_t>(cursor + offset);
    } else {
        seek(reader, offset - (valid - cursor), SEEK_CUR);
        // Deliberately a whole chunk even when limited, unlike reader_start: reads are clamped by `remaining` anyway.
        reader.valid = fill_buffer(reader, reader.chunk_size);
        reader.cursor = 0;
    }
    if (reader.limited) {
        if (reader.remaining < offset)
            note("reader-seek-past-range", "ERROR: Invalid offset value for seeking.\n");
        else
            reader.remaining -= offset;
    }
    return 0;
}

uint16_t read_be16(FileReader& reader) {
    return static_cast<uint16_t>(read_be(reader, 2));
}

uint32_t read_be32(FileReader& reader) {
    return static_cast<uint32_t>(read_be(reader, 4));
}

uint64_t read_be64(FileReader& reader) {
    return read_be(reader, 8);
}

void reader_close(FileReader& reader) {
    PageBuffer buffer = std::move(reader.buffer);
    reader = {};
    reader.buffer = std::move(buffer);
}

uint64_t reader_file_size(const FileReader& reader) {
    if (!reader.file) return reader.memory.size();
    std::FILE* const file = reader.file.get();
    struct stat status = {};
    if (fstat(fileno(file), &status) == 0) return static_cast<uint64_t>(status.st_size);
    // A stream over memory has no descriptor to ask.
    const off_t place = ftello(file);
    fseeko(file, 0, SEEK_END);
    const off_t size = ftello(file);
    fseeko(file, place, SEEK_SET);
    return size > 0 ? static_cast<uint64_t>(size) : 0;
}

}  // namespace quorlin
