#include "ztpinfo/ztpinfo.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/golden.h"
#include "support/syncframe_writer.h"

namespace {

struct Outcome {
    int result = 0;
    ZtpStreamSummary summary;
    std::string out;
    std::string err;
};

Outcome process(ZtpInfoContext* handle, std::span<const uint8_t> bytes) {
    Outcome outcome;
    outcome.summary.num_programs = 99;  // left over from an earlier use
    outcome.summary.programs[7].independent.bsid = 99;
    testing::internal::CaptureStderr();
    outcome.out = printed_by([&] { outcome.result = ztpinfo_process(bytes, outcome.summary, handle); });
    outcome.err = testing::internal::GetCapturedStderr();
    return outcome;
}

Outcome process(ZtpInfoContext* handle, const char* description) {
    return process(handle, syncframes(description));
}

// What stands between `before` and the next `after` at the begin of `text`, and takes it off.
std::string take_between(std::string& text, const std::string& before, const std::string& after) {
    const size_t end = text.starts_with(before) ? text.find(after, before.size()) : std::string::npos;
    if (end == std::string::npos) return "";
    const std::string found = text.substr(before.size(), end - before.size());
    text.erase(0, end + after.size());
    return found;
}

// Messages on standard error, each "TEXT" or, fatal ones, "TEXT @SOURCE".
std::vector<std::string> messages(std::string err) {
    std::vector<std::string> found;
    while (!err.empty()) {
        std::string message = take_between(err, "\nWARNING:  ", "\n");
        if (message.empty()) {
            message = take_between(err, "\n\nFATAL ERROR:  ", "\n\nError occurred in:\n");
            message += " @" + take_between(err, "", " (line ");
            EXPECT_GT(std::stoi("0" + take_between(err, "", ")\n\n")), 0);
        }
        found.push_back(message);
        if (message == " @") return found;
    }
    return found;
}

struct MessageCase {
    const char* stream;
    int result;
    std::vector<std::string> messages;
};

#define INVALID "Invalid bitstream detected.  "

TEST(Ztpinfo, MessagesAndResults) {
    const std::string processing = "Processing error in ZIT subroutine @ztpinfo_api";
    const MessageCase cases[] = {
        {"", 0, {}},
        {"x:0B", 2, {"Cannot read from input file @zit_fio"}},
        {"x:00", 2, {"Cannot read from input file @zit_fio"}},
        {"x:0B77", 2, {"Cannot read from input file @zit_fio"}},
        {"I x:0B770000", 2, {"Cannot read from input file @zit_fio"}},
        {"I x:0B77000000", 2, {"Cannot read from input file @zit_fio"}},
        {"I x:0B", 2, {"Cannot read from input file @zit_fio"}},
        {"I I:cut=6", 0, {"Incomplete frame @ztpinfo_api"}},
        {"I I:cut=511", 0, {"Incomplete frame @ztpinfo_api"}},
        {"A A A:cut=511", 1, {"Incomplete frame @ztpinfo_api"}},
        {"I x:1234", 2, {"Invalid syncword detected while detecting byte order @zit_fio"}},
        {"I:bsid=9", 2, {"Unsupported bitstream id @bsid_ztp"}},
        {"I:bsid=10", 2, {"Unsupported bitstream id @bsid_ztp"}},
        {"I:bsid=17", 2, {"Unsupported bitstream id @bsid_ztp"}},
        {"x:0B770000C040", 2, {"Invalid sampling rate code @bsid_ztp"}},
        {"x:0B7700002640", 2, {"Invalid frame size code @bsid_ztp"}},
        {"I:fscod=3", 2, {"Half sample rate unsupported @bsid_ztp"}},
        {"x:0B7700013F80", 2, {"Insufficient data in input frame buffer @fmi_api"}},
        {"x:0B7700023F80", 0, {}},
        {"I:strmtyp=3", 2, {INVALID "Streamtype is not supported. @tsi", processing}},
        {"D", 2, {INVALID "Dependent stream type has no associated independent frames. @tsi", processing}},
        {"I1", 2, {INVALID "First independent frame is not I0. @tsi", processing}},
        {"I I1 I1", 2, {INVALID "Multiple independent frames exist for the same program. @tsi", processing}},
        {"I D D", 2, {INVALID "Multiple dependent frames exist with same substream ID. @tsi", processing}},
        {"I I2", 0, {INVALID "Indpendent frames are out of order."}},
        {"I D1", 1, {INVALID "Dependent frames are out of order."}},
        {"I I:swap=1 I", 0, {"FIO: Byte order status changed", "FIO: Byte order status changed"}},
        {"2*I:swap=1", 0, {}},
    };
    for (const MessageCase& message_case : cases) {
        const ZtpInfoPtr handle(ztpinfo_open());
        const Outcome outcome = process(handle.get(), message_case.stream);
        // A frame of three words has no room for its check word.
        const int result = message_case.stream == std::string("x:0B7700023F80") ? 1 : message_case.result;
        EXPECT_EQ(outcome.result, result) << message_case.stream;
        EXPECT_EQ(messages(outcome.err), message_case.messages) << message_case.stream;
        EXPECT_TRUE(outcome.result != 2 || outcome.summary.num_programs == 0) << message_case.stream;
        EXPECT_EQ(outcome.summary.programs[7].independent.bsid, 0u) << message_case.stream;
    }
}

TEST(Ztpinfo, UnknownRuleSet) {
    for (const char* stream : {"I", "3*I"}) {
        const ZtpInfoPtr handle(ztpinfo_open());
        ztpinfo_configure(handle.get(), {.rule_set = 5});
        const Outcome outcome = process(handle.get(), stream);
        EXPECT_EQ(outcome.result, 2);
        EXPECT_EQ(messages(outcome.err), (std::vector<std::string>{"Unknown compliance mode requested @tsc",
                                                                   "Processing error in ZIT subroutine @ztpinfo_api"}));
    }
}

// A cut stream is refused only when the cut lies inside the first three words of a frame.
TEST(Ztpinfo, EveryPrefix) {
    const std::vector<uint8_t> frame = syncframes("I:words=20");
    const std::vector<uint8_t> stream = syncframes("2*I:words=20 D:words=20");
    for (size_t size = 0; size <= stream.size(); ++size) {
        const ZtpInfoPtr handle(ztpinfo_open());
        const std::vector<uint8_t> prefix(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
        const size_t in_frame = size % frame.size();
        const Outcome outcome = process(handle.get(), prefix);
        EXPECT_EQ(outcome.result == 2, in_frame > 0 && in_frame < 6) << size;
        EXPECT_EQ(outcome.err.find("Incomplete frame") != std::string::npos, in_frame >= 6) << size;
    }
}

TEST(Ztpinfo, Summary) {
    const ZtpInfoPtr handle(ztpinfo_open());
    const Outcome outcome = process(handle.get(),
                                    "I:infomdate=1,bsmod=3 D I2:acmod=2,lfeon=0,addbsie=1,addbsil=1 D "
                                    "I:infomdate=1,bsmod=3 D I2:acmod=2,lfeon=0,addbsie=1,addbsil=1 D");
    const ZtpStreamSummary& summary = outcome.summary;
    EXPECT_EQ(summary.byte_order_swapped, 0u);
    EXPECT_EQ(summary.data_rate_kbps, 384u);  // 128 + 64 + 128 + 64 kbps
    EXPECT_EQ(summary.frameset_count, 2u);
    EXPECT_EQ(summary.num_programs, 2u);
    const ZtpProgramSummary& first = summary.programs[0];
    EXPECT_EQ(first.num_dep_substreams, 1u);
    EXPECT_EQ(first.independent.bsmod, 3u);
    EXPECT_EQ(first.independent.acmod, 7u);
    EXPECT_EQ(first.independent.lfeon, 1u);
    EXPECT_EQ(first.independent.addbsi_bytes, 0u);
    EXPECT_EQ(first.dependent[0].strmtyp, 1u);
    EXPECT_EQ(first.dependent[0].chanmap, 0x0200u);
    EXPECT_EQ(summary.programs[1].independent.bsid, 0u);  // by program number
    EXPECT_EQ(summary.programs[2].num_dep_substreams, 1u);
    const ZtpSubstreamSummary& third = summary.programs[2].independent;
    EXPECT_EQ(third.bsid, 16u);
    EXPECT_EQ(third.substreamid, 2u);
    EXPECT_EQ(third.addbsie, 1u);
    EXPECT_EQ(third.addbsi_bytes, 2u);
}

TEST(Ztpinfo, SubstreamsThatWentAreForgotten) {
    const ZtpInfoPtr handle(ztpinfo_open());
    EXPECT_EQ(process(handle.get(), "I D I1").summary.programs[0].num_dep_substreams, 1u);
    for (const char* stream : {"I:acmod=1", "I", "I:acmod=1", "I"}) {
        const ZtpStreamSummary summary = process(handle.get(), stream).summary;
        EXPECT_EQ(summary.num_programs, 1u);
        EXPECT_EQ(summary.programs[0].num_dep_substreams, 0u);
        EXPECT_EQ(summary.programs[0].dependent[0].bsid, 0u);
        EXPECT_EQ(summary.programs[1].independent.bsid, 0u);
    }
}

TEST(Ztpinfo, WarningsAreListedWhenAsked) {
    const ZtpInfoPtr handle(ztpinfo_open());
    ztpinfo_configure(handle.get(), {.rule_set = ZTP_RULES_HD_DVD_SECONDARY});
    EXPECT_EQ(process(handle.get(), "2*I:acmod=2,lfeon=0").out, "");
    ztpinfo_configure(handle.get(), {.options = 0x0840, .rule_set = ZTP_RULES_HD_DVD_SECONDARY});
    const Outcome outcome = process(handle.get(), "");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out,
              "    176 - WARNING: HD-DVD: EC3: Secondary Audio: I0: The \"acmod\" of primary cannot be 1 (1/0)\n");
}

TEST(Ztpinfo, SummaryOverSeveralCalls) {
    const ZtpInfoPtr handle(ztpinfo_open());
    EXPECT_EQ(process(handle.get(), "").summary.num_programs, 0u);
    EXPECT_EQ(process(handle.get(), "I:blocks=3,sync=1 I:blocks=3").summary.frameset_count, 1u);
    const Outcome empty = process(handle.get(), "");
    EXPECT_EQ(empty.summary.num_programs, 1u);
    EXPECT_EQ(empty.summary.frameset_count, 0u);
    EXPECT_EQ(empty.summary.data_rate_kbps, 256u);
    const Outcome cut = process(handle.get(), "I:blocks=3,sync=1 I:blocks=3 I:blocks=3,sync=1,cut=100");
    EXPECT_EQ(cut.summary.frameset_count, 0u);  // one of the two frames waits
    EXPECT_EQ(cut.summary.num_programs, 1u);
    EXPECT_EQ(cut.out, "");
    EXPECT_EQ(process(handle.get(), "I:blocks=3,sync=1 I:blocks=3").summary.frameset_count, 1u);
}

// The frames before a fatal one stay and are closed by the next call.
TEST(Ztpinfo, GoesOnAfterAFatalError) {
    const ZtpInfoPtr handle(ztpinfo_open());
    EXPECT_EQ(process(handle.get(), "I D D").result, 2);
    EXPECT_EQ(process(handle.get(), "D1 x:00").result, 2);
    const Outcome outcome = process(handle.get(), "I D");
    EXPECT_EQ(outcome.summary.frameset_count, 2u);
    EXPECT_EQ(outcome.summary.programs[0].num_dep_substreams, 1u);
    EXPECT_EQ(outcome.result, 1);  // D1 was part of the timeslice
}

TEST(Ztpinfo, StopsAtAFailureWhenAsked) {
    for (const bool stop : {false, true}) {
        const ZtpInfoPtr handle(ztpinfo_open());
        ztpinfo_configure(handle.get(), {.stop_on_failure = stop});
        const Outcome outcome = process(handle.get(), "I I:crc=1 6*I");
        EXPECT_EQ(outcome.result, 1);
        EXPECT_EQ(outcome.summary.frameset_count, stop ? 3u : 8u);
    }
}

std::string numbers_of(const std::string& list) {
    std::string numbers;
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) numbers += line.substr(4, 4);
    return numbers;
}

// The compliance list comes with a changed layout, at the end of a call, and once more as the list of all.
TEST(Ztpinfo, WhenListsArePrinted) {
    struct {
        const char* stream;
        const char* numbers;
    } const cases[] = {
        {"2*I", ""},
        {"A", "068 068 "},
        {"4*A", "068 068 "},
        {"I I:crc=1 I", "166 166 "},
        {"I I:crc=1 I:crc=1", "166 166 166 "},
        {"I I:crc=1 I:crc=1 I", "166 166 "},
        {"I I:crc=1 I I:crc=1", "166 166 166 "},
        {"A A:dialnorm=30 A", "068 068 068 "},
        {"A:compre=1 A:compre=1,compr=9 A:compre=1", "068 068 "},
        {"A:acmod=0,compr2e=1 A:acmod=0,compr2e=1,compr2=9 A:acmod=0,compr2e=1", "068 068 "},
        {"2*A:fscod=1 A:fscod=1,frmsizecod=31", "068 068 "},
        {"2*A:fscod=1 A:fscod=1,frmsizecod=32 A", "068 068 068 "},
    };
    for (const auto& [stream, numbers] : cases) {
        const ZtpInfoPtr handle(ztpinfo_open());
        EXPECT_EQ(numbers_of(process(handle.get(), stream).out), numbers) << stream;
    }
    // What a call's end has reported is not reported again.
    const ZtpInfoPtr handle(ztpinfo_open());
    EXPECT_EQ(numbers_of(process(handle.get(), "A A:compre=1").out), "068 068 ");
    EXPECT_EQ(numbers_of(process(handle.get(), "A:compre=1,compr=9 A:compre=1").out), "068 068 ");
}

std::vector<std::filesystem::path> real_streams() {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator("golden")) {
        const std::string extension = entry.path().extension().string();
        if (extension == ".ac3" || extension == ".ec3") paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string described(const std::string& name, const Outcome& outcome) {
    const ZtpStreamSummary& summary = outcome.summary;
    const ZtpSubstreamSummary& i0 = summary.programs[0].independent;
    std::ostringstream text;
    text << name << ": result " << outcome.result << "\n  data_rate_kbps " << summary.data_rate_kbps
         << " frameset_count " << summary.frameset_count << " num_programs " << summary.num_programs
         << "; program 0: bsid " << i0.bsid << " bsmod " << i0.bsmod << " fscod " << i0.fscod << " acmod " << i0.acmod
         << " lfeon " << i0.lfeon << " addbsie " << i0.addbsie << " dependents "
         << summary.programs[0].num_dep_substreams << "\n";
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) text << "  | " << line << "\n";
    return text.str();
}

// Streams of an independent encoder, in both byte orders.
TEST(Ztpinfo, RealStreams) {
    std::string text =
        "Each file given whole to one analyzer call with the options of ztpinfo_open: the result, the summary, what is "
        "printed.\n";
    for (const std::filesystem::path& path : real_streams()) {
        std::ifstream file(path, std::ios::binary);
        std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
        const std::string name = path.filename().string();
        const ZtpInfoPtr handle(ztpinfo_open());
        const std::string normal = described(name, process(handle.get(), bytes));
        text += "\n" + normal;
        swap_words(bytes);
        const ZtpInfoPtr swapped_handle(ztpinfo_open());
        const Outcome swapped = process(swapped_handle.get(), bytes);
        EXPECT_EQ(described(name, swapped), normal);
        EXPECT_EQ(swapped.summary.byte_order_swapped, 1u);
        EXPECT_EQ(swapped.err, "");
    }
    expect_golden("golden/elementary.txt", text);
}

}  // namespace
