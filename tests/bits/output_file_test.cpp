#include "bits/output_file.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/golden.h"

namespace {

const std::vector<uint8_t> SOME_BYTES(1000000, 0x55);

}  // namespace

TEST(OutputFile, AFullDiskIsReportedOncePerFile) {
    OutputFile output;
    ASSERT_EQ(elementary_stream_open(output, "/dev/full", true), 0);
    const std::string printed = printed_by([&] {
        EXPECT_EQ(elementary_stream_write(output, SOME_BYTES), -1);
        EXPECT_EQ(elementary_stream_write(output, SOME_BYTES), -1);
        EXPECT_EQ(elementary_stream_close(output), -1);
        EXPECT_EQ(elementary_stream_close(output), 0);  // closed already
    });
    EXPECT_EQ(printed, "ERROR: Failed to write elementary stream path: /dev/full\n");
}

TEST(OutputFile, ACloseThatLosesBufferedBytesIsReported) {
    OutputFile output;
    ASSERT_EQ(elementary_stream_open(output, "/dev/full", true), 0);
    const std::string printed = printed_by([&] {
        EXPECT_EQ(elementary_stream_write(output, std::vector<uint8_t>{1, 2, 3}), 0);
        EXPECT_EQ(elementary_stream_close(output), -1);
    });
    EXPECT_EQ(printed, "ERROR: Failed to write elementary stream path: /dev/full\n");
}

TEST(OutputFile, AFileThatCannotBeCreated) {
    OutputFile output;
    const std::string path = output_path(testing::TempDir() + "no_such_directory", "a", "_pid_1.ec3");
    const std::string printed = printed_by([&] { EXPECT_EQ(elementary_stream_open(output, path, false), -1); });
    EXPECT_EQ(printed, "ERROR: Failed to create elementary stream path: " + path + "\n");
    EXPECT_EQ(elementary_stream_write(output, SOME_BYTES), 0);  // nothing is open, nothing is lost
}
