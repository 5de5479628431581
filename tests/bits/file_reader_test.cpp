#include "bits/file_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "support/files.h"
#include "support/golden.h"

namespace quorlin {

namespace {

using Bytes = std::vector<uint8_t>;

// The bytes 0 to 99.
Bytes& numbered_bytes() {
    static Bytes bytes(100);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    return bytes;
}

// A started reader on the numbered bytes; `limit` bytes from `start` on, if any.
FileReader open_numbers(uint32_t chunk_size, int64_t limit = -1, uint64_t start = 0) {
    FileReader reader;
    reader.file = File(fmemopen(numbered_bytes().data(), numbered_bytes().size(), "rb"));
    reader.chunk_size = chunk_size;
    reader.start_offset = start;
    reader.limited = limit >= 0;
    reader.remaining = limit;
    reader_start(reader);
    return reader;
}

Bytes read_up_to(FileReader& reader, uint32_t count) {
    Bytes bytes(count);
    bytes.resize(reader_read(bytes.data(), count, reader));
    return bytes;
}

}  // namespace

TEST(FileReader, ReadsAndViewsOfEverySizeThroughEveryBufferGiveTheFile) {
    for (uint32_t chunk : {1u, 2u, 7u, 25u, 50u, 99u, 100u, 101u, 1000u}) {
        for (uint32_t size = 1; size <= 101; ++size) {
            FileReader reader = open_numbers(chunk);
            FileReader limited = open_numbers(chunk, 95);
            Bytes read, seen, scratch(size);
            for (Bytes part = read_up_to(reader, size); !part.empty(); part = read_up_to(reader, size))
                read.insert(read.end(), part.begin(), part.end());
            for (auto view = reader_view(limited, size, scratch); !view.empty();
                 view = reader_view(limited, size, scratch))
                seen.insert(seen.end(), view.begin(), view.end());
            ASSERT_EQ(read, numbered_bytes()) << chunk << " " << size;
            ASSERT_EQ(seen, Bytes(read.begin(), read.begin() + 95)) << chunk << " " << size;
            EXPECT_EQ(reader.position, 100u);
        }
    }
}

TEST(FileReader, StateOfTheBuffer) {
    FileReader reader = open_numbers(16);
    read_up_to(reader, 16);
    EXPECT_EQ(reader.cursor, reader.valid);
    EXPECT_EQ(read_up_to(reader, 16 + 5).back(), 36);  // one whole chunk and a rest
    // Inside the buffer; to its end, where it is filled at once; out of it.
    const std::tuple<int, uint32_t, uint8_t> skips[] = {{-2, 3, 35}, {12, 0, 48}, {-43, 0, 6}, {60, 0, 67}};
    for (const auto& [offset, cursor, next] : skips) {
        reader_skip(offset, reader);
        EXPECT_EQ(reader.cursor, cursor);
        EXPECT_EQ(reader.position, next);
        EXPECT_EQ(read_up_to(reader, 1), Bytes{next});
    }
}

TEST(FileReader, ALimitConfinesReadsAndSkips) {
    FileReader reader = open_numbers(16, 8, 40);
    EXPECT_EQ(reader.valid, 8u);
    EXPECT_EQ(read_be32(reader), 0x28292A2Bu);
    EXPECT_EQ(printed_by([&] { reader_skip(5, reader); }), "ERROR: Invalid offset value for seeking.\n");
    EXPECT_EQ(reader.position, 49u);  // it moves all the same
    EXPECT_EQ(reader.remaining, 4);
    EXPECT_EQ(reader.valid, 16u);  // the refill takes no notice of the limit
    EXPECT_EQ(read_up_to(reader, 100), (Bytes{49, 50, 51, 52}));
    reader.remaining = 3;
    EXPECT_EQ(printed_by([&] { reader_skip(3, reader); }), "") << "all that remains";
    reader.remaining = -1;
    EXPECT_TRUE(read_up_to(reader, 1).empty());
}

TEST(FileReader, IntegersAcrossSeamsAndPastTheEnd) {
    FileReader reader = open_numbers(3, 16);
    EXPECT_EQ(read_be16(reader), 0x0001u);
    EXPECT_EQ(read_be32(reader), 0x02030405u);
    EXPECT_EQ(read_be64(reader), 0x060708090A0B0C0Du);
    EXPECT_EQ(read_be32(reader), 0x0E0F0000u);
    EXPECT_EQ(reader.position, 16u);
}

TEST(FileReader, OffsetsBeyond32Bits) {
    const std::string path = scratch_path("sparse_file");
    const uint64_t offset = uint64_t{5} << 30;
    std::ofstream(path).close();
    std::filesystem::resize_file(path, offset + 1);
    FileReader reader;
    reader.file = open_input_file(path);
    EXPECT_EQ(reader_file_size(reader), offset + 1);
    for (const uint64_t start : {offset, uint64_t{1} << 63}) {  // no file reaches as far as the second
        reader.start_offset = start;
        reader_start(reader);
        EXPECT_EQ(read_up_to(reader, 2).size(), start == offset ? 1u : 0u);
    }
    std::filesystem::remove(path);
}

TEST(FileReader, OnlyRegularFilesAreInputs) {
    const std::string pipe = scratch_path("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    EXPECT_FALSE(open_input_file(pipe)) << "a pipe without a writer must not be waited for";
    EXPECT_FALSE(open_input_file("/dev/zero"));
    EXPECT_TRUE(open_input_stream("/dev/zero"));
    EXPECT_FALSE(open_input_file(testing::TempDir()));
    EXPECT_FALSE(open_input_stream(testing::TempDir()));
    std::filesystem::remove(pipe);
}

}  // namespace quorlin
