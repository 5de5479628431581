#include "support/golden.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "bits/recorder.h"
#include "support/files.h"

namespace quorlin {

namespace {

void print_text(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

// Prints what a front end gets, so that the transcripts hold for it, too.
constexpr Recorder PRINTING_RECORDER = {
    .finding = [](const Finding& finding) { print_text(finding.text); },
    .text = print_text,
    .verdict = [](std::string_view text, bool) { print_text(text); },
    .reason = [](const Reason&) {},
    .playlist = [](const PlaylistFacts&, const Place&) {},
    .segment = [](const SegmentFacts&, const Place&) {},
};

}  // namespace

std::string printed_by(const std::function<void()>& run) {
    testing::internal::CaptureStdout();
    const Recorder* given = current_recorder();  // of a test that looks at what is recorded
    if (given == nullptr) set_recorder(&PRINTING_RECORDER);
    run();
    if (given == nullptr) set_recorder(nullptr);  // else what it has of the segment would be lost
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

}  // namespace quorlin
