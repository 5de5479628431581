#pragma once

#include <cstdint>

namespace quorlin {

// By the last extension of the input path.
enum class InputKind : int32_t {
    UNDECIDED = -1,
    PLAYLIST = 1,     // .m3u8, .m3u
    TS_TEMPLATE = 2,  // .ts, .trp with an index conversion in the path
    TS_FILE = 3,      // .ts, .trp
};

// The texts point into the argument vector.
struct CommandLineOptions {
    const char* input_path = nullptr;  // -i
    const char* output_dir = nullptr;  // -o
    int32_t start_index = -1;          // -s: first index of a template
    InputKind input_kind = InputKind::UNDECIDED;
};

// Reads the options. Returns 0 (also after -h and -v, which end the parsing but leave what was read), or -1 on an error
// that has been printed. An input path that is none of the known kinds leaves `input_kind` undecided.
[[nodiscard]] int parse_command_line(int argc, const char* const* argv, CommandLineOptions& options);

// True when the path counts as a file-name template. The test is loose: it takes some names without an index
// conversion.
bool is_segment_template(const char* path);

}  // namespace quorlin
