// The whole program over a small asset in a directory in memory. The first byte chooses the command line; then comes
// each file behind "@@@" and the letter that stands for its name, so that a file may grow without breaking the others.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "bits/file.h"
#include "bits/recorder.h"
#include "driver/run.h"
#include "json/events.h"

namespace quorlin {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view MARK = "@@@";
constexpr std::array NAMES = {"master.m3u8", "audio.m3u8", "video.m3u8", "init.mp4",
                              "s0.ts",       "s1.ts",      "s2.ts",      "s3.ts"};
constexpr char FIRST_NAME = 'a';

enum CommandLineBits : uint8_t {
    ONE_SEGMENT = 1,       // s0.ts in place of the master playlist
    SERIES = 2,            // s%d.ts
    WITH_OUTPUT = 4,       // -o with a directory that has to be made
    OUTPUT_TO_INPUTS = 8,  // -o with the directory of the inputs
    WITH_START = 16,       // -s with the number in the next two bits
    INPUT_LAST = 128,      // -i behind the other options
};

// Of this process only, gone when it ends.
struct Ground {
    fs::path path;

    Ground() {
        std::error_code error;
        for (const fs::path& place : {fs::path("/dev/shm"), fs::temp_directory_path(error)}) {
            std::string name = (place / "quorlin-asset-XXXXXX").string();
            if (path.empty() && mkdtemp(name.data()) != nullptr) path = name;
        }
        if (path.empty() || std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
    }
    ~Ground() {
        std::error_code error;
        fs::remove_all(path, error);
    }
};

const Ground GROUND;

std::string path_of(std::string_view name) {
    return GROUND.path.string() + "/" + std::string(name);
}

void remove_files() {
    for (const fs::path& path : std::vector<fs::path>(fs::directory_iterator(GROUND.path), {})) fs::remove_all(path);
}

void write_file(std::string_view name, std::string_view bytes) {
    const File file(std::fopen(path_of(name).c_str(), "wb"));
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) std::abort();
}

// A later file of the same name takes the place of an earlier one.
void write_files(std::string_view asset) {
    for (size_t mark = asset.find(MARK); mark != asset.npos;) {
        asset.remove_prefix(mark + MARK.size());
        if (asset.empty()) return;
        const size_t name = static_cast<uint8_t>(asset[0] - FIRST_NAME) % NAMES.size();
        asset.remove_prefix(1);
        mark = asset.find(MARK);
        write_file(NAMES[name], asset.substr(0, mark));
    }
}

std::vector<std::string> command_line(uint8_t choice) {
    std::vector<std::string> options = {"-i", path_of(NAMES[0])};
    if ((choice & ONE_SEGMENT) != 0) options[1] = path_of("s0.ts");
    if ((choice & SERIES) != 0) options[1] = path_of("s%d.ts");
    if ((choice & WITH_OUTPUT) != 0) options.insert(options.end(), {"-o", path_of("out")});
    if ((choice & OUTPUT_TO_INPUTS) != 0) options.insert(options.end(), {"-o", path_of("")});
    if ((choice & WITH_START) != 0) options.insert(options.end(), {"-s", std::to_string(choice >> 5 & 3)});
    if ((choice & INPUT_LAST) != 0) std::rotate(options.begin(), options.begin() + 2, options.end());
    options.insert(options.begin(), "quorlin");
    return options;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    remove_files();
    write_files({reinterpret_cast<const char*>(data) + 1, size - 1});
    const std::vector<std::string> options = command_line(data[0]);
    std::vector<const char*> arguments;
    arguments.reserve(options.size());
    for (const std::string& option : options) arguments.push_back(option.c_str());
    // Half of the inputs run as quorlin-json does.
    set_recorder(size % 2 == 1 ? &event_recorder() : nullptr);
    const int status = run(static_cast<int>(arguments.size()), arguments.data());
    set_recorder(nullptr);
    if (status != 0 && status != -1) std::abort();
    return 0;
}

}  // namespace quorlin
