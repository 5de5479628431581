// The analyzer over streams. The tables in golden/ hold streams and what comes of them.
#include "ztpinfo/ztpinfo.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "bits/recorder.h"
#include "support/golden.h"
#include "support/syncframe_writer.h"
#include "ztpinfo/info_printer_bsi.h"

namespace quorlin {

namespace {

using Bytes = std::vector<uint8_t>;

struct Outcome {
    int result = 0;
    ZtpStreamSummary summary;
    std::string out;
    std::string err;
    Place failure_place;
};

// Of the next call of a row, whose streams count as one file; each begins a second after the one before.
Place buffer_place;

Outcome process(ZtpInfoContext* handle, std::span<const uint8_t> bytes) {
    Outcome outcome;
    outcome.summary.num_programs = 99;  // left over from an earlier use
    outcome.summary.programs[7].independent.bsid = 99;
    buffer_place.time += 90000;
    const PlaceScope scope(buffer_place);
    buffer_place.offset += static_cast<int64_t>(bytes.size());
    testing::internal::CaptureStderr();
    outcome.out = printed_by([&] { outcome.result = ztpinfo_process(bytes, outcome.summary, handle); });
    outcome.err = testing::internal::GetCapturedStderr();
    return outcome;
}

// Syncframes as described, or the real stream golden/NAME for "@NAME", low byte first for "~@NAME".
std::vector<uint8_t> stream_bytes(const std::string& text) {
    const size_t at = text.find('@');
    if (at == std::string::npos) return syncframes(text);
    std::ifstream file("golden/" + text.substr(at + 1), std::ios::binary);
    std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    if (text.find('~') != std::string::npos) swap_words(bytes);
    return bytes;
}

using Describe = std::function<std::string(const Outcome& outcome)>;

// The settings of a line "[rules=N options=BITS stop=N]".
ZtpSettings parse_settings(const std::string& line) {
    ZtpSettings settings;
    uint16_t rules = 0;
    int stop = 0;
    int contiguous = 0;
    EXPECT_GE(std::sscanf(line.c_str(), "[rules=%hu options=%hx stop=%d contiguous=%d]", &rules, &settings.options,
                          &stop, &contiguous),
              3);
    settings.rule_set = ZtpRuleSet{rules};
    settings.stop_on_failure = stop != 0;
    settings.contiguous = contiguous != 0;
    return settings;
}

// Runs the table at `path`: rows "name | stream / stream => outcomes", each row with a handle of its own and a call for
// each stream, under the settings of the last line that gave some. Outcomes that do not fit the row are indented.
void check_table(const std::string& path, const Describe& describe, const char* separator = "") {
    std::string text;
    ZtpSettings settings;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(' ')) continue;
        if (line.starts_with('[')) settings = parse_settings(line);
        const size_t begin = line.find(" | ");
        const size_t end = line.find(" =>");
        if (end == std::string::npos) {
            text += line + "\n";
            continue;
        }
        text += line.substr(0, end + 3);
        buffer_place = {.offset = 0, .time = 0};
        const ZtpInfoPtr handle(ztpinfo_open());
        ztpinfo_configure(handle.get(), settings);
        std::istringstream streams(line.substr(begin + 3, end - begin - 3));
        for (std::string stream; std::getline(streams, stream, '/');) {
            Outcome outcome = process(handle.get(), stream_bytes(stream));
            outcome.failure_place = ztpinfo_failure_place(handle.get());
            text += describe(outcome) + (streams.eof() ? "" : separator);
        }
        text += "\n";
    }
    EXPECT_NE(text, "") << path;
    expect_golden(path, text);
}

std::string listed_numbers(const Outcome& outcome) {
    const bool failed =
        outcome.out.find("FAILURE") != std::string::npos || outcome.out.find("TSC") != std::string::npos;
    EXPECT_EQ(outcome.result, failed ? 1 : 0) << outcome.out;
    std::string numbers;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) numbers += " " + line.substr(4, 3);
    return numbers;
}

void describe_substream(std::ostream& text, const std::string& name, const ZtpSubstreamSummary& substream) {
    if (substream.bsid == 0) return;
    text << "\n    " << name << ": bsid " << substream.bsid << " strmtyp " << substream.strmtyp << " substreamid "
         << substream.substreamid << " bsmod " << substream.bsmod << " fscod " << substream.fscod << " acmod "
         << substream.acmod << " lfeon " << substream.lfeon << " chanmap " << substream.chanmap << " addbsie "
         << substream.addbsie << " bytes " << substream.addbsi_bytes;
}

// The result, the summary, what is printed, and the messages in one line without the numbers of source lines.
std::string described(const Outcome& outcome) {
    const ZtpStreamSummary& summary = outcome.summary;
    std::ostringstream text;
    text << "\n  result " << outcome.result << " swapped " << summary.byte_order_swapped << " kbps "
         << summary.data_rate_kbps << " framesets " << summary.frameset_count << " programs " << summary.num_programs;
    for (size_t i = 0; i < summary.programs.size(); ++i) {
        const ZtpProgramSummary& program = summary.programs[i];
        describe_substream(text, "I" + std::to_string(i), program.independent);
        if (program.num_dep_substreams != 0) text << ", dependents " << program.num_dep_substreams;
        for (size_t d = 0; d < program.dependent.size(); ++d)
            describe_substream(text, "D" + std::to_string(d), program.dependent[d]);
    }
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) text << "\n  | " << line;
    std::string messages;
    for (const char c : outcome.err) {
        if (std::isdigit(c) != 0 && messages.ends_with("(line ")) continue;
        messages += c == '\n' ? "\\n" : std::string(1, c);
    }
    return text.str() + (messages.empty() ? "" : "\n  ! " + messages);
}

TEST(Ztpinfo, ComplianceNumbers) {
    check_table("golden/compliance.txt", listed_numbers, " /");
}

TEST(Ztpinfo, ResultsAndMessages) {
    check_table("golden/results.txt", described);
}

TEST(Ztpinfo, Reports) {
    check_table("golden/reports.txt", described);
}

std::string described(const Place& place) {
    return " @" + std::to_string(place.offset) + " t" + std::to_string(place.time) +
           (place.repeated ? " repeated" : "");
}

void print_finding(const Finding& finding) {
    std::printf("\n  %s%s%s", finding.id, finding.fails ? "" : " harmless", described(finding.place).c_str());
}

void print_reason(const Reason& reason) {
    std::printf("\n  %s%s%s%s", reason.id, reason.fails ? "" : " harmless", reason.unvalidated ? " unvalidated" : "",
                described(reason.place).c_str());
}

TEST(Ztpinfo, Places) {
    Recorder recorder = {};
    recorder.finding = print_finding;
    recorder.reason = print_reason;
    set_recorder(&recorder);
    check_table("golden/places.txt", [](const Outcome& outcome) {
        return outcome.out + (outcome.result == 0 ? "" : "\n  failed" + described(outcome.failure_place));
    });
    set_recorder(nullptr);
}

// Changes bits of the BSI after bsid, now and then any bit of its first words.
void change_bsi(Bytes& frame, std::mt19937& random) {
    const size_t begin = random() % 12 == 0 ? 16 : 45;
    const size_t count = random() % 2 == 0 ? 50 : 200;
    const size_t bit = begin + random() % count;
    frame[bit / 8] = static_cast<uint8_t>(frame[bit / 8] ^ 0x80u >> bit % 8);
}

// Frame sets, the same again but for a few changes of the BSI, with right check words; now and then another fault.
Bytes random_stream(std::mt19937& random) {
    constexpr std::array FRAME_SETS = {"I",      "I:acmod=2,lfeon=0", "I D",     "I D D1", "I D I1 D", "I S1",
                                       "I D S1", "I S1 S2",           "I I1 I2", "T",      "A",        "A D"};
    std::vector<Bytes> frames;
    std::istringstream kinds(FRAME_SETS[random() % FRAME_SETS.size()]);
    for (std::string kind; kinds >> kind;) frames.push_back(syncframes(kind));
    Bytes stream;
    for (auto sets = 2 + random() % 3; sets > 0; --sets)
        for (Bytes& frame : frames) {
            if (random() % 3 == 0)
                for (auto changes = 1 + random() % 6; changes > 0; --changes) change_bsi(frame, random);
            store_check_words(frame);
            stream.insert(stream.end(), frame.begin(), frame.end());
        }
    return random() % 8 == 0 ? with_faults(stream, random) : stream;
}

// Every rule set and listing over streams with any BSI.
TEST(Ztpinfo, RandomStreams) {
    std::string report;
    for (uint16_t rules = 1; rules <= 4; ++rules) {
        const auto run = [rules](std::mt19937& random) {
            ZtpSettings settings;
            settings.rule_set = ZtpRuleSet{rules};
            settings.options = static_cast<uint16_t>(random());
            settings.stop_on_failure = random() % 8 == 0;
            settings.contiguous = random() % 2 == 0;
            const ZtpInfoPtr handle(ztpinfo_open());
            ztpinfo_configure(handle.get(), settings);
            buffer_place = {.offset = 0, .time = 0};
            const std::string first = described(process(handle.get(), random_stream(random)));
            return random() % 2 == 0 ? first : first + described(process(handle.get(), random_stream(random)));
        };
        report += transcript_checksums("rules " + std::to_string(rules), 1440, run);
    }
    expect_golden("golden/random_streams.txt", report);
}

// A cut stream is refused only when the cut lies inside the first three words of a frame.
TEST(Ztpinfo, EveryPrefix) {
    const std::vector<uint8_t> stream = syncframes("2*I:words=20 D:words=20");
    for (size_t size = 0; size <= stream.size(); ++size) {
        const ZtpInfoPtr handle(ztpinfo_open());
        const size_t in_frame = size % 40;
        const Outcome outcome = process(handle.get(), std::span(stream).first(size));
        EXPECT_EQ(outcome.result == 2, in_frame > 0 && in_frame < 6) << size;
        EXPECT_EQ(outcome.err.find("Incomplete frame") != std::string::npos, in_frame >= 6) << size;
    }
}

TEST(Ztpinfo, ListingOfAnUnknownBsid) {
    EXPECT_EQ(printed_by([] { print_bsi_listing({.bsid = 9}); }),
              "            BSID not supported, bit stream information not available.\n");
}

}  // namespace

}  // namespace quorlin
