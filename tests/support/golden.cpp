#include "support/golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "bits/recorder.h"
#include "support/files.h"
#include "support/place_recorder.h"

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

// Prints all that a front end gets of the content of segments.
constexpr Recorder WHOLE_RECORDER = {
    .finding =
        [](const Finding& finding) {
            print_text(finding.text);
            std::printf("%s line %u ", finding.fails ? "fails" : "note", finding.place.line);
            print_place(finding.id, finding.place);
        },
    .text = print_text,
    .verdict = [](std::string_view text, bool) { print_text(text); },
    .reason =
        [](const Reason& reason) {
            // The numbers of source lines, in messages of the analyzer, change.
            print_text(reason.reason.substr(0, reason.reason.find("(line ")));
            std::printf("%s%s line %u ", reason.fails ? " fails" : "", reason.unvalidated ? " unvalidated" : "",
                        reason.place.line);
            print_place(reason.id, reason.place);
        },
    .playlist = [](const PlaylistFacts&, const Place&) {},
    .segment = PLACE_RECORDER.segment,
};

// FNV-1a.
uint64_t checksum(const std::string& text) {
    uint64_t sum = 0xCBF29CE484222325;
    for (const char character : text) sum = (sum ^ static_cast<uint8_t>(character)) * 0x100000001B3;
    return sum;
}

void add_fault(std::vector<uint8_t>& bytes, std::mt19937& random) {
    if (bytes.empty()) return;
    constexpr uint8_t VALUES[] = {0, 1, 0x7F, 0x80, 0xFF};
    const size_t at = random() % bytes.size();
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    const auto end = begin + static_cast<std::ptrdiff_t>(std::min<size_t>(1 + random() % 8, bytes.size() - at));
    switch (random() % 16) {
        case 0:
            bytes.erase(begin, end);
            break;
        case 1: {
            const std::vector<uint8_t> doubled(begin, end);
            bytes.insert(begin, doubled.begin(), doubled.end());
            break;
        }
        case 2:
            bytes.resize(at);
            break;
        case 3:
        case 4:
        case 5:
            *begin = VALUES[random() % std::size(VALUES)];
            break;
        case 6:
        case 7:
            *begin = static_cast<uint8_t>(random());
            break;
        default:
            *begin = static_cast<uint8_t>(*begin ^ 1u << random() % 8);
    }
}

}  // namespace

std::vector<uint8_t> with_faults(std::vector<uint8_t> bytes, std::mt19937& random) {
    for (auto faults = 1 + random() % 4; faults > 0; --faults) add_fault(bytes, random);
    return bytes;
}

std::string transcript_checksums(const std::string& name, int count,
                                 const std::function<std::string(std::mt19937& random)>& run) {
    constexpr int TOGETHER = 16;
    const char* folder = std::getenv("QUORLIN_TRANSCRIPTS");
    const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
    std::string report = "== " + name + ":";
    set_recorder(&WHOLE_RECORDER);
    for (int first = 0; first < count; first += TOGETHER) {
        std::mt19937 random(static_cast<uint32_t>(first));
        std::string transcripts;
        for (int call = 0; call < TOGETHER; ++call) transcripts += run(random) + "\n";
        char sum[20];
        std::snprintf(sum, sizeof sum, " %08x", static_cast<uint32_t>(checksum(transcripts)));
        report += sum;
        if (folder != nullptr)
            std::ofstream(folder + ("/" + test) + " " + name + " " + std::to_string(first), std::ios::binary)
                << transcripts;
    }
    set_recorder(nullptr);
    return report + "\n";
}

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
