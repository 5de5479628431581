#include "driver/help.h"

#include "bits/finding.h"

namespace quorlin {

namespace {

constexpr char HELP_TEXT[] =
    "\n"
    "The HLS stream validator tool validates that playlist files, segment files, and ID3 streams conform to HTTP Live "
    "Streaming and Zentra Plus or Vexro AC-4 specs.\n"
    "This tool supports local playlist file or MPEG-2 TS only. \n"
    "\n"
    "Usage:\n"
    "   quorlin -i <local_input_playlist_filename_or_local_input_ts> -o <output_directory>\n"
    "\n"
    "Option description:\n"
    "   -h   Displays help information\n"
    "   -i   Specifies the input playlist file or MPEG-2 TS files\n"
    "   -o   Sets the output folder path\n"
    "   -s   Specifies the beginning index segment for validation\n"
    "   -v   Prints version information\n"
    "\n"
    "Examples:\n"
    "    1. To parse playlist files, demultiplex and validate segments files, and output the demultiplexed audio/video "
    "files to a specified directory, use this command line:\n"
    "        quorlin -i input.m3u8 -o tmp\n"
    "\n"
    "    2. To demultiplex and validate all .ts segment files from input_0.ts, and output the demultiplexed audio/video "
    "files to a specified directory, use this command line:\n"
    "        quorlin -i input_%d.ts -o tmp\n"
    "\n"
    "    3. To demultiplex and validate all .ts segment files starting from input_2.ts, and output the demultiplexed "
    "audio/video files to a specified directory, use this command line:\n"
    "        quorlin -i input_%d.ts -s 2 -o tmp\n"
    "\n"
    "    4. To demultiplex and validate all .ts segment files whose file names contain an index number of x digits (x "
    "can be any integer) and output the demultiplexed audio/video files to a specified directory, use this command "
    "line:\n"
    "        quorlin -i input_%0[x]d.ts -o tmp\n"
    "        For example, if the file name contains a four-digit index number (for example, input_0000.ts, "
    "input_0001.ts, and so on), use this command line:\n"
    "        quorlin -i input_%04d.ts -o tmp\n";

}  // namespace

int print_version() {
    announce("*** HLS stream validator tool ***\n");
    // The compiler takes its date from SOURCE_DATE_EPOCH when that is set, so builds can be reproduced.
    announce("*** Version %s ***\n*** built on %s ***\n", QUORLIN_VERSION, __DATE__);
    return 0;
}

int print_help() {
    print_version();
    // Not a format: its "%d" and "%04d" are text.
    announce("%s", HELP_TEXT);
    return 0;
}

}  // namespace quorlin
