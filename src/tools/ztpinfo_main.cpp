// ztpinfo: the command of the E-AC-3 / AC-3 analyzer. Each file is one analyzer call, since the rules at the end of a
// call would otherwise see ends of the stream that are none.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include "ac4/ac4_sync_frame.h"
#include "bits/byte_order.h"
#include "bits/place.h"
#include "bits/process.h"
#include "tools/whole_file.h"
#include "tools/ztpinfo_command_line.h"
#include "ztpinfo/ztpinfo.h"

using namespace quorlin;

namespace {

constexpr int EXIT_UNREADABLE = 2;  // the status of an analysis that could not be made
constexpr int EXIT_USAGE = 64;

constexpr uint16_t ID3_START = 'I' << 8 | 'D';

// What is often taken for a stream that this program can analyse.
void name_container(const std::string& path, std::span<const uint8_t> bytes) {
    const uint16_t start = load_be16(bytes, 0);
    std::fflush(stdout);
    if (start == ID3_START && load_u8(bytes, 2) == '3')
        std::fprintf(
            stderr,
            "ztpinfo: %s: begins with an ID3 tag, as segments of packed audio do: quorlin takes them, ztpinfo the stream after it\n",
            path.c_str());
    if (start == AC4_SYNC_WORD || start == AC4_SYNC_WORD_WITH_CRC)
        std::fprintf(stderr, "ztpinfo: %s: begins with an AC-4 sync word: only AC-3 and E-AC-3 are analysed\n",
                     path.c_str());
}

// Returns the analyzer's 0, 1 or 2; 2 as well for a file that cannot be read.
int analyse_file(const std::string& path, const ZtpInfoCommand& command, std::vector<uint8_t>& bytes) {
    if (read_whole_file(path, bytes) != 0) return EXIT_UNREADABLE;
    name_container(path, bytes);
    const ZtpInfoPtr handle(ztpinfo_open());
    if (!handle) return EXIT_UNREADABLE;
    ztpinfo_configure(handle.get(), command.settings);
    const PlaceScope start({.offset = 0, .time = 0});
    return ztpinfo_analyse(bytes, handle.get());
}

int run(int argc, char** argv) {
    ZtpInfoCommand command;
    if (parse_ztpinfo_command_line(argc, argv, command) != 0) return EXIT_USAGE;
    if (command.help) {
        print_ztpinfo_help();
        return 0;
    }
    if (command.version) {
        std::printf("ztpinfo (quorlin) %s\n", QUORLIN_VERSION);
        return 0;
    }
    int worst = 0;
    const bool several = command.files.size() > 1;
    command.settings.timeslices_listed = several;
    std::vector<uint8_t> bytes;  // keeps its room from file to file
    for (const std::string& path : command.files) {
        if (several) std::printf("%s:\n", path.c_str());
        worst = std::max(worst, analyse_file(path, command, bytes));
        if (std::ferror(stdout) != 0) break;
    }
    return worst;
}

}  // namespace

int main(int argc, char** argv) {
    return run_process("ztpinfo", run, argc, argv);
}
