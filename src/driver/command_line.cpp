#include "driver/command_line.h"

#include <cstring>
#include <limits>

#include "bits/finding.h"
#include "driver/help.h"

namespace quorlin {

namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Decimal value of a text of digits; saturates at the largest index.
int32_t parse_index(const char* digits) {
    int64_t value = 0;
    for (const char* c = digits; *c != '\0' && value <= std::numeric_limits<int32_t>::max(); ++c)
        value = value * 10 + (*c - '0');
    if (value > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(value);
}

// The message comes once per bad character, deliberately.
int32_t parse_start_index(const char* value) {
    bool valid = true;
    for (const char* c = value; *c != '\0'; ++c) {
        if (is_digit(*c)) continue;
        valid = false;
        note(
            "run-start-index",
            "ERROR: Command line parsing error.\n %s is not a integer value,Please input an integer value for -s option, "
            "either it will start on index number 0.\n",
            value);
    }
    return valid ? parse_index(value) : 0;
}

void decide_input_kind(bool start_index_given, CommandLineOptions& options) {
    const char* extension = std::strrchr(options.input_path, '.');
    if (extension == nullptr) return;
    if (std::strcmp(extension, ".m3u8") == 0 || std::strcmp(extension, ".m3u") == 0) {
        options.input_kind = InputKind::PLAYLIST;
        if (start_index_given)
            note("run-start-index-unused", "WARNING: Input file is HLS, -s option will be skipped.\n");
    } else if (std::strcmp(extension, ".ts") == 0 || std::strcmp(extension, ".trp") == 0) {
        const bool numbered = is_segment_template(options.input_path);
        options.input_kind = numbered ? InputKind::TS_TEMPLATE : InputKind::TS_FILE;
        if (numbered && !start_index_given) options.start_index = 0;
    }
}

}  // namespace

int parse_command_line(int argc, const char* const* argv, CommandLineOptions& options) {
    bool start_index_given = false;
    // Arguments come in pairs: one in value position is never looked at as an option.
    for (int i = 1; i < argc; i += 2) {
        const char* option = argv[i];
        const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (std::strcmp(option, "-i") == 0) {
            options.input_path = value;
        } else if (std::strcmp(option, "-o") == 0) {
            options.output_dir = value;
        } else if (std::strcmp(option, "-s") == 0) {
            if (value == nullptr) return fail(-1, "run-start-index-missing", "Error: -s needs an argument\n");
            options.start_index = parse_start_index(value);
            start_index_given = true;
        } else if (std::strcmp(option, "-v") == 0) {
            return print_version();
        } else if (std::strcmp(option, "-h") == 0) {
            return print_help();
        } else {
            return fail(-1, "run-unknown-option", "ERROR: unsupport parameters(%s). Need -i and -o options.\n", option);
        }
    }
    if (options.input_path == nullptr)
        return fail(-1, "run-no-input", "ERROR: Command line parsing error.\nERROR: You must specify -i at least.\n");
    decide_input_kind(start_index_given, options);
    return 0;
}

bool is_segment_template(const char* path) {
    if (std::strstr(path, "%d") != nullptr) return true;
    const char* cursor = path;
    while (true) {
        const char* percent = std::strchr(cursor, '%');
        // Searched from the cursor, not from the '%': a 'd' before it makes the path a template. Deliberate.
        const char* d = std::strchr(cursor, 'd');
        if (percent == nullptr || d == nullptr) return false;
        cursor = percent + 1;
        const char* walk = cursor;
        while (walk < d && is_digit(*walk)) ++walk;
        if (walk >= d) return true;
        if (std::strstr(cursor, "%d") != nullptr) return true;
    }
}

}  // namespace quorlin
