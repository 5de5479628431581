#include "bits/file_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <numeric>
#include <string>
#include <vector>

#include "support/golden.h"

namespace {

std::vector<uint8_t> numbered_bytes(size_t count) {
    std::vector<uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    return bytes;
}

FileReader open_bytes(std::vector<uint8_t>& bytes, uint32_t chunk_size) {
    FileReader reader;
    reader.file = File(fmemopen(bytes.data(), bytes.size(), "rb"));
    reader.chunk_size = chunk_size;
    return reader;
}

std::vector<uint8_t> read_up_to(FileReader& reader, uint32_t count) {
    std::vector<uint8_t> bytes(count);
    bytes.resize(reader_read(bytes.data(), count, reader));
    return bytes;
}

}  // namespace

TEST(FileReader, ReadsOfEverySizeThroughEveryBufferGiveTheFile) {
    std::vector<uint8_t> bytes = numbered_bytes(100);
    for (uint32_t chunk : {1u, 2u, 7u, 50u, 99u, 100u, 101u, 1000u}) {
        for (uint32_t size = 1; size <= 101; ++size) {
            FileReader reader = open_bytes(bytes, chunk);
            reader_start(reader);
            std::vector<uint8_t> read;
            for (auto part = read_up_to(reader, size); !part.empty(); part = read_up_to(reader, size))
                read.insert(read.end(), part.begin(), part.end());
            ASSERT_EQ(read, bytes) << chunk << " " << size;
            EXPECT_EQ(reader.position, 100u);
        }
    }
}

TEST(FileReader, AViewIsTheSameAsARead) {
    std::vector<uint8_t> bytes = numbered_bytes(100);
    for (uint32_t chunk : {1u, 7u, 30u, 1000u}) {
        FileReader reader = open_bytes(bytes, chunk);
        reader.limited = true;
        reader.remaining = 95;
        reader_start(reader);
        std::vector<uint8_t> scratch(9);
        for (size_t at = 0; at < 95; at += 9) {
            const auto view = reader_view(reader, 9, scratch);
            const size_t size = std::min<size_t>(9, 95 - at);
            ASSERT_EQ(std::vector<uint8_t>(view.begin(), view.end()),
                      std::vector<uint8_t>(bytes.begin() + static_cast<long>(at),
                                           bytes.begin() + static_cast<long>(at + size)));
        }
        EXPECT_TRUE(reader_view(reader, 9, scratch).empty());
    }
}

TEST(FileReader, StateOfTheBuffer) {
    std::vector<uint8_t> bytes = numbered_bytes(100);
    FileReader reader = open_bytes(bytes, 16);
    reader_start(reader);
    read_up_to(reader, 16);
    EXPECT_EQ(reader.cursor, reader.valid);
    EXPECT_EQ(read_up_to(reader, 16 + 5).back(), 36);  // one whole chunk and a rest
    EXPECT_EQ(reader.cursor, 5u);
    reader_skip(-2, reader);
    EXPECT_EQ(reader.cursor, 3u);
    EXPECT_EQ(read_up_to(reader, 1).front(), 35);
    reader_skip(-30, reader);  // out of the buffer, backwards
    EXPECT_EQ(reader.position, 6u);
    EXPECT_EQ(read_up_to(reader, 1).front(), 6);
    reader_skip(60, reader);
    EXPECT_EQ(read_up_to(reader, 1).front(), 67);
}

TEST(FileReader, ALimitConfinesReadsAndSkips) {
    std::vector<uint8_t> bytes = numbered_bytes(100);
    FileReader reader = open_bytes(bytes, 16);
    reader.start_offset = 40;
    reader.limited = true;
    reader.remaining = 8;
    reader_start(reader);
    EXPECT_EQ(reader.valid, 8u);
    EXPECT_EQ(read_be32(reader), 0x28292A2Bu);
    EXPECT_EQ(printed_by([&] { reader_skip(5, reader); }), "ERROR: Invalid offset value for seeking.\n");
    EXPECT_EQ(reader.position, 49u);  // it moves all the same
    EXPECT_EQ(reader.remaining, 4);
    EXPECT_EQ(reader.valid, 16u);  // the refill takes no notice of the limit
    EXPECT_EQ(read_up_to(reader, 100), (std::vector<uint8_t>{49, 50, 51, 52}));
    EXPECT_EQ(read_be32(reader), 0u);
    EXPECT_EQ(reader.remaining, 0);
    reader.remaining = -1;
    EXPECT_TRUE(read_up_to(reader, 1).empty());
}

TEST(FileReader, IntegersAcrossSeamsAndPastTheEnd) {
    std::vector<uint8_t> bytes = numbered_bytes(16);
    FileReader reader = open_bytes(bytes, 3);
    reader_start(reader);
    EXPECT_EQ(read_be16(reader), 0x0001u);
    EXPECT_EQ(read_be32(reader), 0x02030405u);
    EXPECT_EQ(read_be64(reader), 0x060708090A0B0C0Du);
    EXPECT_EQ(read_be32(reader), 0x0E0F0000u);
    EXPECT_EQ(reader.position, 16u);
}

TEST(FileReader, OffsetsBeyond32Bits) {
    const std::string path = testing::TempDir() + "reader_sparse_file";
    const uint64_t offset = uint64_t{5} << 30;
    {
        File file(std::fopen(path.c_str(), "wb"));
        ASSERT_EQ(fseeko(file.get(), static_cast<off_t>(offset), SEEK_SET), 0);
        std::fputc(0x5A, file.get());
    }
    FileReader reader;
    reader.file = open_input_file(path);
    EXPECT_EQ(reader_file_size(reader), offset + 1);
    reader.start_offset = offset;
    reader_start(reader);
    EXPECT_EQ(read_up_to(reader, 2), std::vector<uint8_t>{0x5A});
    reader.start_offset = uint64_t{1} << 63;  // no file reaches so far
    reader_start(reader);
    EXPECT_TRUE(read_up_to(reader, 1).empty());
    std::remove(path.c_str());
}

TEST(FileReader, OnlyRegularFilesAreInputs) {
    const std::string pipe = testing::TempDir() + "reader_pipe";
    std::remove(pipe.c_str());
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    EXPECT_FALSE(open_input_file(pipe)) << "a pipe without a writer must not be waited for";
    EXPECT_FALSE(open_input_file("/dev/zero"));
    EXPECT_TRUE(open_input_stream("/dev/zero"));
    EXPECT_FALSE(open_input_file(testing::TempDir()));
    EXPECT_FALSE(open_input_stream(testing::TempDir()));
    std::remove(pipe.c_str());
}
