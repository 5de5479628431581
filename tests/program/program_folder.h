#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "support/box_writer.h"
#include "support/files.h"
#include "support/golden.h"
#include "support/run_program.h"
#include "support/ts_writer.h"

namespace quorlin {

// Files by their names; a name that ends in '/' is a folder.
using Files = std::map<std::string, Bytes>;

// The folder that quorlin runs in, as a user runs it: arguments and files in, standard output, standard error, exit
// code and written files out.
class ProgramFolder {
    std::filesystem::path folder = scratch_path("program");

    // The analyzer's blocks name a line of the sources, which moves.
    static std::string without_source_lines(const std::string& text) {
        return std::regex_replace(text, std::regex(" \\(line [0-9]+\\)"), " (line …)");
    }

    std::string written_files() const {
        std::string list;
        if (!std::filesystem::exists(folder / "out")) return list;
        for (const auto& [name, text] : take_files(folder / "out"))
            list += "-- " + name + ": " + std::to_string(text.size()) + " bytes\n";
        return list;
    }

 public:
    ProgramFolder() { std::filesystem::create_directory(folder); }
    ~ProgramFolder() { std::filesystem::remove_all(folder); }
    ProgramFolder(const ProgramFolder&) = delete;
    ProgramFolder& operator=(const ProgramFolder&) = delete;

    void write(const Files& files) const {
        for (const auto& [name, bytes] : files) {
            std::filesystem::create_directories((folder / name).parent_path());
            if (name.back() == '/') continue;
            std::ofstream(folder / name, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        }
    }

    void link(const std::string& target, const std::string& name) const {
        std::filesystem::create_symlink(target, folder / name);
    }

    // A launcher, such as valgrind, may stand before the program.
    ProgramResult run(const std::string& arguments, const std::string& program = QUORLIN_PROGRAM) const {
        return run_program("cd '" + folder.string() + "' && $QUORLIN_LAUNCHER " + program + " " + arguments);
    }

    // Everything that comes of a run.
    std::string transcript(const std::string& title, const std::string& arguments) const {
        const ProgramResult result = run(arguments);
        std::string text = "==== " + title + "\n" + result.out;
        if (!result.err.empty()) text += "-- standard error:\n" + without_source_lines(result.err);
        return text + written_files() + "-- exit code " + std::to_string(result.exit_code) + "\n";
    }
};

// A media playlist of these lines.
inline Bytes media_playlist(const std::string& lines) {
    return text_bytes("#EXTM3U\n" + lines + "#EXT-X-ENDLIST\n");
}

// Segments one after another.
inline std::string entries(const std::vector<std::string>& names) {
    std::string lines;
    for (const std::string& name : names) lines += "#EXTINF:4,\n" + name + "\n";
    return lines;
}

}  // namespace quorlin
