#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/files.h"
#include "support/run_program.h"

namespace quorlin {

namespace {

const std::string STREAMS = "../ztpinfo/golden/";
const std::string CLEAN = STREAMS + "eac3_51_metadata.ec3";
const std::string FAILING = STREAMS + "ac3_51_metadata.ac3";  // rule 68: not E-AC-3
const std::string BSID_FAILURE = "    068 - FAILURE: Zentra Plus: Primary audio: I0: BSID is not 16.\n";

// Of several files.
const std::string LOCATED_BSID_FAILURE = BSID_FAILURE.substr(0, BSID_FAILURE.size() - 1) + " (timeslice 1, 0.000 s)\n";

// `$ZTPINFO` in a command is the program under test, after a launcher such as valgrind if there is one.
ProgramResult run(const std::string& command) {
    return run_program("ZTPINFO=\"$QUORLIN_LAUNCHER " ZTPINFO_PROGRAM "\"; " + command);
}

struct CommandCase {
    const char* name;
    std::string command;
    int exit_code;
    std::string out;  // the whole output
    std::string err;  // a part of the messages; empty: there are none
};

const CommandCase CASES[] = {
    {"clean file", "$ZTPINFO " + CLEAN, 0, "", ""},
    {"failing file", "$ZTPINFO " + FAILING, 1, BSID_FAILURE + BSID_FAILURE, ""},
    {"standard input", "$ZTPINFO - <" + FAILING, 1, BSID_FAILURE + BSID_FAILURE, ""},
    {"a pipe", "cat " + FAILING + " | $ZTPINFO -", 1, BSID_FAILURE + BSID_FAILURE, ""},
    {"the end of a pipe of 2.4 MB", "{ cat $(yes " + CLEAN + " | head -100); printf '12345678'; } | $ZTPINFO -", 2, "",
     "Invalid syncword detected"},
    {"no bytes at all", "$ZTPINFO /dev/null", 0, "", ""},
    {"the worst of several files counts, each has its own analysis", "$ZTPINFO none " + FAILING + " " + CLEAN, 2,
     "none:\n" + FAILING + ":\n" + LOCATED_BSID_FAILURE + LOCATED_BSID_FAILURE + CLEAN + ":\n",
     "ztpinfo: none: No such file"},
    {"an ID3 tag", "printf ID3 | $ZTPINFO -", 2, "", "ztpinfo: -: begins with an ID3 tag"},
    {"AC-4", "printf '\\254\\101' | $ZTPINFO -", 2, "", "ztpinfo: -: begins with an AC-4 sync word"},
    {"a directory", "$ZTPINFO .", 2, "", "ztpinfo: .: Is a directory"},
    {"not a stream", "$ZTPINFO ztpinfo_command_test.cpp", 2, "", "Invalid syncword detected"},
    {"options in decimal, separate", "$ZTPINFO --options 16 " + FAILING, 1, BSID_FAILURE, ""},
    {"options in hexadecimal", "$ZTPINFO --options=0x0010 " + FAILING, 1, BSID_FAILURE, ""},
    {"options after the file", "$ZTPINFO " + FAILING + " --opt=0", 1, "", ""},
    {"rule set", "$ZTPINFO --rules=2 " + FAILING, 0, "", ""},
    {"the last rule set", "$ZTPINFO --rules=4 --options=0 " + FAILING, 1, "", ""},
    {"end of the options", "$ZTPINFO -- --help", 2, "", "ztpinfo: --help: No such file"},
    {"a name is never a format", "$ZTPINFO %s%n", 2, "", "ztpinfo: %s%n: No such file"},
    {"no file", "$ZTPINFO --rules=1", 64, "", "no file given"},
    {"unknown option", "$ZTPINFO --rule-set=1 x", 64, "", "--help"},
    {"short option", "$ZTPINFO -x x", 64, "", "--help"},
    {"missing value", "$ZTPINFO --options", 64, "", "--help"},
    {"value of a flag", "$ZTPINFO --stop-on-failure=1 x", 64, "", "--help"},
    {"options beyond 16 bits", "$ZTPINFO --options=65536 x", 64, "", "--options"},
    {"options that are no number", "$ZTPINFO --options=0x51g x", 64, "", "'0x51g'"},
    {"negative options", "$ZTPINFO --options=-1 x", 64, "", "--options"},
    {"empty options", "$ZTPINFO --options= x", 64, "", "--options"},
    {"rule set 0", "$ZTPINFO --rules=0 x", 64, "", "--rules"},
    {"rule set 5", "$ZTPINFO --rules=5 x", 64, "", "--rules"},
    {"full device", "$ZTPINFO " + FAILING + " >/dev/full", 255, "", "standard output"},
    {"help to a full device", "$ZTPINFO --help >/dev/full", 255, "", "standard output"},
    {"closed output", "$ZTPINFO " + FAILING + " >&-", 1, "", ""},
    {"closed input", "$ZTPINFO - <&-", 0, "", ""},
};

TEST(ZtpInfoCommand, Cases) {
    for (const CommandCase& test : CASES) {
        SCOPED_TRACE(test.name);
        const ProgramResult result = run(test.command);
        EXPECT_EQ(result.exit_code, test.exit_code);
        EXPECT_EQ(result.out, test.out);
        EXPECT_NE(result.err.find(test.err), std::string::npos) << result.err;
        EXPECT_EQ(result.err.empty(), test.err.empty()) << result.err;
    }
}

TEST(ZtpInfoCommand, HelpExplainsEveryBitAndRuleSet) {
    const ProgramResult help = run("$ZTPINFO --help");
    EXPECT_EQ(help.exit_code, 0);
    for (const char* words :
         {"--options", "--rules", "--stop-on-failure", "0x002", "0x004", "0x008", "0x010", "0x020", "0x040", "0x100",
          "0x200", "0x400", "0x800", "Blu-ray primary", "HD-DVD secondary", "Blu-ray secondary", "Exit status"})
        EXPECT_NE(help.out.find(words), std::string::npos) << words;
    EXPECT_EQ(run("$ZTPINFO --version").out, "ztpinfo (quorlin) " QUORLIN_VERSION "\n");
}

// One file is one analysis: every rule sees the stream from its start to its end.
TEST(ZtpInfoCommand, StopsOnFailure) {
    const ProgramResult whole = run("$ZTPINFO --options=0x20 " + FAILING);
    const ProgramResult stopped = run("$ZTPINFO --options=0x20 --stop-on-failure " + FAILING);
    EXPECT_EQ(stopped.exit_code, 1);
    EXPECT_NE(whole.out.find("Total number of timeslices: 16\n"), std::string::npos) << whole.out;
    EXPECT_LT(stopped.out.find("Total number of timeslices: "), stopped.out.size());
    EXPECT_NE(whole.out, stopped.out);
}

TEST(ZtpInfoCommand, RefusesFourGigabytes) {
    const std::string path = scratch_path("four_gigabytes.ec3");
    std::ofstream(path).put('\x0b');
    std::error_code error;
    std::filesystem::resize_file(path, uint64_t{1} << 32, error);  // a hole: takes no room
    if (error) GTEST_SKIP() << "no sparse files here";
    const ProgramResult result = run("$ZTPINFO '" + path + "'");
    std::filesystem::remove(path);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_NE(result.err.find("4 GiB or larger"), std::string::npos) << result.err;
}

}  // namespace

}  // namespace quorlin
