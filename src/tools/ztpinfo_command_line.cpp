#include "tools/ztpinfo_command_line.h"

#include <getopt.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <system_error>

namespace quorlin {

namespace {

enum LongOption : int {
    OPTION_OPTIONS = 256,  // above every character, so that no short option can be meant
    OPTION_RULES,
    OPTION_STOP_ON_FAILURE,
    OPTION_HELP,
    OPTION_VERSION,
};

constexpr option LONG_OPTIONS[] = {
    {"options", required_argument, nullptr, OPTION_OPTIONS},
    {"rules", required_argument, nullptr, OPTION_RULES},
    {"stop-on-failure", no_argument, nullptr, OPTION_STOP_ON_FAILURE},
    {"help", no_argument, nullptr, OPTION_HELP},
    {"version", no_argument, nullptr, OPTION_VERSION},
    {nullptr, 0, nullptr, 0},
};

// A decimal number, or a hexadecimal one after "0x": no sign, no blanks, nothing after it. False when the text is
// anything else or the number does not fit 16 bits.
bool parse_number(std::string_view text, uint16_t& value) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value, base);
    return result.ec == std::errc() && result.ptr == end;
}

int usage_error() {
    std::fputs("Try 'ztpinfo --help' for more information.\n", stderr);
    return -1;
}

int apply_option(int id, const char* value, ZtpInfoCommand& command) {
    uint16_t rule_set = 0;
    switch (id) {
        case OPTION_OPTIONS:
            if (parse_number(value, command.settings.options)) return 0;
            std::fprintf(stderr, "ztpinfo: --options needs a number from 0 to 65535 (0xFFFF), not '%s'\n", value);
            return usage_error();
        case OPTION_RULES:
            if (parse_number(value, rule_set) && rule_set >= 1 && rule_set <= 4) {
                command.settings.rule_set = ZtpRuleSet{rule_set};
                return 0;
            }
            std::fprintf(stderr, "ztpinfo: --rules needs a rule set from 1 to 4, not '%s'\n", value);
            return usage_error();
        case OPTION_STOP_ON_FAILURE:
            command.settings.stop_on_failure = true;
            return 0;
        case OPTION_HELP:
            command.help = true;
            return 0;
        case OPTION_VERSION:
            command.version = true;
            return 0;
        default:
            return usage_error();  // getopt_long has said what is wrong
    }
}

}  // namespace

int parse_ztpinfo_command_line(int argc, char** argv, ZtpInfoCommand& command) {
    command = {};
    for (int id = 0; (id = getopt_long(argc, argv, "", LONG_OPTIONS, nullptr)) != -1;) {
        if (apply_option(id, optarg, command) != 0) return -1;
        if (command.help || command.version) return 0;
    }
    for (int i = optind; i < argc; ++i) command.files.emplace_back(argv[i]);
    if (!command.files.empty()) return 0;
    std::fputs("ztpinfo: no file given\n", stderr);
    return usage_error();
}

void print_ztpinfo_help() {
    std::fputs(
        "Usage: ztpinfo [--options=BITS] [--rules=1..4] [--stop-on-failure] FILE...\n"
        "Analyses raw AC-3 and E-AC-3 streams (.ac3, .ec3): checks their frames, timeslices and programs\n"
        "against a set of compliance rules and prints what they hold. With FILE -, reads standard input.\n"
        "\n"
        "  --options=BITS     what to print: the sum of the bits below, decimal or hexadecimal with 0x;\n"
        "                     0x51 when not given\n"
        "  --rules=N          the rule set that is applied; 1 when not given\n"
        "  --stop-on-failure  leave the rest of a file unread once a rule has failed\n"
        "  --help             print this help and exit\n"
        "  --version          print the version and exit\n"
        "\n"
        "Bits of --options:\n"
        "  0x001  no effect (set when --options is not given)\n"
        "  0x002  each program: data rate, dependent substreams, words per timeslice, channels, status\n"
        "  0x004  the independent substream of each program in short\n"
        "  0x008  the dependent substreams of each program in short\n"
        "  0x010  the numbered rules that a reported timeslice breaks\n"
        "  0x020  totals: timeslices, frames, playing time, data rate, status\n"
        "  0x040  the numbered rules that the whole file breaks\n"
        "  0x100  the bit stream information of each substream, field by field\n"
        "  0x200  the auxiliary data of each substream\n"
        "  0x400  the encoder information of each substream\n"
        "  0x800  list warnings as well as failures in both lists of rules\n"
        "A timeslice is reported when its programs, its channels or the metadata of its substreams differ\n"
        "from the last reported one; the last timeslice of a file is always reported.\n"
        "\n"
        "Rule sets of --rules:\n"
        "  1  Zentra Plus programs in general\n"
        "  2  Blu-ray primary audio\n"
        "  3  HD-DVD secondary audio\n"
        "  4  Blu-ray secondary audio\n"
        "\n"
        "With several files, each has its name printed first, and each broken rule its timeslice and time.\n"
        "\n"
        "Exit status, the worst of all files:\n"
        "  0    no rule is broken\n"
        "  1    a rule is broken\n"
        "  2    a file cannot be read, is 4 GiB or larger, or holds something that cannot be analysed\n"
        "  64   wrong usage\n"
        "  255  standard output cannot be written, or memory has run out\n",
        stdout);
}

}  // namespace quorlin
