#include "support/golden.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "support/files.h"

std::string printed_by(const std::function<void()>& run) {
    testing::internal::CaptureStdout();
    run();
    return testing::internal::GetCapturedStdout();
}

std::string transcript_entry(const std::string& name, const std::function<int()>& run) {
    int status = -1;
    const std::string printed = printed_by([&] { status = run(); });
    return "== " + name + ": " + std::to_string(status) + "\n" + printed;
}

void expect_golden(const std::string& path, const std::string& text) {
    if (std::getenv("QUORLIN_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(path, std::ios::binary) << text;
        return;
    }
    EXPECT_EQ(file_text(path), text) << path;
}
