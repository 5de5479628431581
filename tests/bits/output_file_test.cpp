#include "bits/output_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "support/files.h"
#include "support/golden.h"

namespace quorlin {

// Many bytes fail when they are written, few when the file is closed.
TEST(OutputFile, AFullDiskIsReportedOncePerFile) {
    for (const size_t size : {1000000u, 3u}) {
        const std::vector<uint8_t> bytes(size, 0x55);
        const int written = size > 3 ? -1 : 0;
        OutputFile output;
        ASSERT_EQ(elementary_stream_open(output, "/dev/full", true), 0);
        const std::string printed = printed_by([&] {
            EXPECT_EQ(elementary_stream_write(output, bytes), written);
            EXPECT_EQ(elementary_stream_write(output, bytes), written);
            EXPECT_EQ(elementary_stream_close(output), -1);
            EXPECT_EQ(elementary_stream_close(output), 0);  // closed already
        });
        EXPECT_EQ(printed, "ERROR: Failed to write elementary stream path: /dev/full\n") << size;
    }
}

TEST(OutputFile, IsTruncatedOrAppendedTo) {
    const std::string path = scratch_path("output_file");
    for (const auto& [truncate, size] : {std::pair(true, 3u), {false, 6u}, {true, 3u}}) {
        OutputFile output;
        EXPECT_EQ(elementary_stream_open(output, path, truncate), 0);
        EXPECT_EQ(elementary_stream_write(output, std::vector<uint8_t>{1, 2, 3}), 0);
        EXPECT_EQ(elementary_stream_close(output), 0);
        EXPECT_EQ(std::filesystem::file_size(path), size);
    }
    std::filesystem::remove(path);
}

TEST(OutputFile, AFileThatCannotBeCreated) {
    OutputFile output;
    const std::string path = output_path(scratch_path("no_such_directory"), "a", "_pid_1.ec3");
    const std::string printed = printed_by([&] { EXPECT_EQ(elementary_stream_open(output, path, false), -1); });
    EXPECT_EQ(printed, "ERROR: Failed to create elementary stream path: " + path + "\n");
    EXPECT_EQ(elementary_stream_write(output, std::vector<uint8_t>(9)), 0);  // nothing is open, nothing is lost
}

}  // namespace quorlin
