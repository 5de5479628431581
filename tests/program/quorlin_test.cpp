// quorlin as a user runs it: arguments and files in, standard output, standard error, exit code and written files out.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/files.h"
#include "support/golden.h"
#include "support/run_program.h"
#include "support/ts_writer.h"

namespace {

void write_file(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// Audio and pictures from `first` on (90 kHz), `pictures` of them 3000 ticks apart.
std::string segment(uint64_t first, int pictures, uint8_t audio_stream_id = 0xC0) {
    TsWriter writer;
    writer.pat();
    writer.pmt({.streams = {{0x0F, 0x101}, {0x1B, 0x102}}});
    for (int i = 0; i < pictures; ++i) {
        PesSpec pes;
        pes.pts = first + 3000 * static_cast<uint64_t>(i);
        pes.payload = Bytes(300, static_cast<uint8_t>(i));
        pes.stream_id = 0xE0;
        writer.pes(0x102, pes);
        pes.stream_id = audio_stream_id;
        writer.pes(0x101, pes);
    }
    return {writer.bytes.begin(), writer.bytes.end()};
}

std::string without_build_date(std::string text) {
    const std::string lead = "built on ";
    const size_t at = text.find(lead);
    if (at != std::string::npos) text.replace(at + lead.size(), text.find(" ***\n", at) - at - lead.size(), "DATE");
    return text;
}

std::string media_playlist(const std::string& entries) {
    return "#EXTM3U\n#EXT-X-TARGETDURATION:4\n" + entries + "#EXT-X-ENDLIST\n";
}

// The folder that every command runs in.
class Program : public testing::Test {
 protected:
    std::filesystem::path folder;

    void SetUp() override {
        folder = scratch_path("program");
        std::filesystem::create_directory(folder);
        for (const char* file : {"a.ts", "s_5.ts", "s_6.ts"}) write_file(folder / file, segment(90000, 3));
        write_file(folder / "private_id.ts", segment(90000, 2, 0xBD));
        std::filesystem::create_directory(folder / "s_7.ts");
        write_file(folder / "d0.ts", segment(90000, 2));
        write_file(folder / "junk.bin", "no container");
        write_file(folder / "both.m3u8", "#EXT-X-STREAM-INF:BANDWIDTH=1\nv.m3u8\n#EXTINF:4,\na.ts\n");
        write_file(folder / "programs.m3u8",
                   "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",URI=\"clean.m3u8\",ZTP_PROGRAM0=x\n"
                   "#EXT-X-STREAM-INF:AUDIO=\"a\",CODECS=\"mp4a.40.2\"\nclean.m3u8\n");
        write_file(folder / "list.m3u8",
                   media_playlist("#EXTINF:4,\na.ts\n#EXT-X-DISCONTINUITY\n#EXTINF:4,\nmissing.ts\n"
                                  "#EXTINF:4,\nhttp://host/a.ts\n#EXTINF:4,\njunk.bin\n"));
        write_file(folder / "nothing.m3u8", media_playlist("#EXTINF:4,\nmissing.ts\n"));
        write_file(folder / "clean.m3u8", media_playlist("#EXTINF:4,\na.ts\n#EXTINF:4,\ns_5.ts\n"));
        // Two segments in one file, then a range that is none.
        write_file(folder / "joined.ts", segment(90000, 3) + segment(99000, 3));
        const std::string size = std::to_string(segment(90000, 3).size());
        write_file(folder / "ranges.m3u8",
                   media_playlist("#EXTINF:4,\n#EXT-X-BYTERANGE:" + size +
                                  "@0\njoined.ts\n#EXTINF:4,\n#EXT-X-BYTERANGE:" + size +
                                  "\njoined.ts\n#EXTINF:4,\n#EXT-X-BYTERANGE:x@0\njoined.ts\n"));
        // A stream that goes to a full disk.
        std::filesystem::create_directory(folder / "full");
        std::filesystem::create_symlink("/dev/full", folder / "full/a_pid_258.h264");
        // A stream whose file cannot be created.
        std::filesystem::create_directories(folder / "blocked/a_pid_257.adts");
    }

    void TearDown() override { std::filesystem::remove_all(folder); }

    // A launcher, such as valgrind, may stand in front of the program.
    ProgramResult run(const std::string& arguments) {
        return run_program("cd '" + folder.string() + "' && rm -rf out && $QUORLIN_LAUNCHER " QUORLIN_PROGRAM " " +
                           arguments);
    }

    std::string written_files() {
        std::string list;
        if (!std::filesystem::exists(folder / "out")) return list;
        std::map<std::string, uintmax_t> sizes;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder / "out"))
            if (entry.is_regular_file()) sizes[entry.path().filename().string()] = entry.file_size();
        for (const auto& [name, size] : sizes) list += "-- " + name + ": " + std::to_string(size) + " bytes\n";
        return list;
    }
};

}  // namespace

TEST_F(Program, Transcripts) {
    const char* const commands[] = {
        "",  // the help, which the others name
        "-v",
        "-i a.ts -h",
        "-x",
        "-i a.ts -o",
        "-o out",
        "-i a.ts -s",
        "-i a.mp4",
        "-i list.M3U8",
        "-i missing.ts",
        "-i s_7.ts",
        "-i http://host/a.ts",
        "-i a.ts -o out",
        "-i a.ts -o out/deep",
        "-i private_id.ts -o out",
        "-i a.ts -o full",
        "-i a.ts -o blocked",
        "-i s_%d.ts -o out",
        "-i s_%d.ts -s 5 -o out",
        "-i s_%d.ts -s 4x -o out",
        "-i d%x.ts -o out",
        "-i s_%d%d.ts -s 5",
        "-i missing.m3u8",
        "-i both.m3u8",
        "-i list.m3u8 -s 3 -o out",
        "-i nothing.m3u8 -o out",
        "-i clean.m3u8 -o out",
        "-i clean.m3u8",
        "-i ranges.m3u8 -o out",
        "-i programs.m3u8",
        "-i a.ts >/dev/full",
        "-i a.ts >&-",
    };
    std::string transcript;
    std::string help;
    for (const char* command : commands) {
        const ProgramResult result = run(command);
        std::string out = without_build_date(result.out);
        const size_t help_at = help.empty() ? std::string::npos : out.find(help);
        if (help_at != std::string::npos) out.replace(help_at, help.size(), "<the help>\n");
        if (help.empty()) help = out;
        transcript += std::string("==== quorlin ") + command + "\n" + out;
        if (!result.err.empty()) transcript += "-- standard error:\n" + result.err;
        transcript += written_files() + "-- exit code " + std::to_string(result.exit_code) + "\n";
    }
    expect_golden("golden/quorlin.txt", transcript);
}

TEST_F(Program, FindingsAndReasonsStayInOrderInAPipe) {
    const ProgramResult result = run("-i list.m3u8 2>&1 | cat");
    const size_t verdict = result.out.find("validation result");
    const size_t reason = result.out.find("quorlin: junk.bin: ");
    ASSERT_NE(reason, std::string::npos);
    EXPECT_LT(result.out.find("#EXT-X-DISCONTINUITY"), reason);
    EXPECT_LT(reason, verdict);
}
