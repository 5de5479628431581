#include "driver/command_line.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "driver/name_template.h"
#include "support/golden.h"

namespace quorlin {

TEST(CommandLine, OptionsAndKindsOfInput) {
    const std::vector<const char*> cases[] = {
        {"-i", "a.m3u8"},
        {"-i", "a.m3u", "-s", "3"},
        {"-i", "a.M3U8"},
        {"-i", "dir.old/stream"},
        {"-i", "a.ts", "-s", "3", "-o", "x"},
        {"-i", "a_%d.ts"},
        {"-i", "a_%03d.trp", "-s", "7"},
        {"-i", "a_%d.ts", "-s", "2x"},
        {"-i", "a_%d.ts", "-s", "2:"},
        {"-i", "a_%d.ts", "-s", "2/"},
        {"-i", "a_%d.ts", "-s", ""},
        {"-i", "a_%d.ts", "-s", "99999999999999999999"},
        {"-i", "a.ts", "-o", "-h"},
        {"-s"},
        {"-i"},
        {"-i", "a.ts", "--help"},
    };
    std::string transcript;
    for (const std::vector<const char*>& args : cases) {
        std::vector<const char*> argv = {"quorlin"};
        argv.insert(argv.end(), args.begin(), args.end());
        CommandLineOptions options;
        std::string name;
        for (const char* arg : args) name += std::string(name.empty() ? "" : " ") + arg;
        transcript += transcript_entry(
            name, [&] { return parse_command_line(static_cast<int>(argv.size()), argv.data(), options); });
        transcript += "kind " + std::to_string(static_cast<int>(options.input_kind)) + ", start " +
                      std::to_string(options.start_index) + ", output " +
                      (options.output_dir == nullptr ? "-" : options.output_dir) + "\n";
    }
    expect_golden("golden/command_line.txt", transcript);
}

TEST(CommandLine, TheTemplateTestIsLoose) {
    for (const char* path : {"a_%d.ts", "a_%04d.ts", "%%d.ts", "d%x.ts", "a%x%d.ts", "a%5%3d.ts"})
        EXPECT_TRUE(is_segment_template(path)) << path;
    for (const char* path : {"a.ts", "a_%x.ts", "a_%xd.ts", "a_%+d.ts", "%", "d", "a_%5x_d.ts"})
        EXPECT_FALSE(is_segment_template(path)) << path;
}

TEST(NameTemplate, AnIndexLooksAsPrintfWouldWriteIt) {
    std::string name;
    char expected[256];
    for (int32_t index : {0, 1, 8, 42, 2147483647}) {
#define EXPECT_LIKE_PRINTF(TEXT)                                                   \
    std::snprintf(expected, sizeof expected, TEXT, index);                         \
    EXPECT_EQ(expand_template(TEXT, index, name), TemplateKind::NUMBERED) << TEXT; \
    EXPECT_EQ(name, expected) << TEXT
        EXPECT_LIKE_PRINTF("seg_%d.ts");
        EXPECT_LIKE_PRINTF("%04d.ts");
        EXPECT_LIKE_PRINTF("%12i|");
        EXPECT_LIKE_PRINTF("%-12d|");
        EXPECT_LIKE_PRINTF("%+d");
        EXPECT_LIKE_PRINTF("%+08d");
        EXPECT_LIKE_PRINTF("% d");
        EXPECT_LIKE_PRINTF("%8.5d|");
        EXPECT_LIKE_PRINTF("%.0d|");
        EXPECT_LIKE_PRINTF("%.d|");
        EXPECT_LIKE_PRINTF("%u");
        EXPECT_LIKE_PRINTF("%o");
        EXPECT_LIKE_PRINTF("%#o");
        EXPECT_LIKE_PRINTF("%#.0o|");
        EXPECT_LIKE_PRINTF("%x");
        EXPECT_LIKE_PRINTF("%#010x");
        EXPECT_LIKE_PRINTF("%#-10X|");
        EXPECT_LIKE_PRINTF("100%%_%d.ts");
#undef EXPECT_LIKE_PRINTF
    }
}

TEST(NameTemplate, EverythingElseIsText) {
    std::string name;
    for (const auto& [text, expected] :
         {std::pair{"d%s%n.ts", "d%s%n.ts"}, {"d%%.ts", "d%.ts"}, {"%5", "%5"}, {"%*d", "%*d"}, {"%1$d", "%1$d"}}) {
        EXPECT_EQ(expand_template(text, 5, name), TemplateKind::FIXED) << text;
        EXPECT_EQ(name, expected);
    }
    for (const char* text : {"%d%d", "%4097d", "%.4097d", "%99999999999999999999d"})
        EXPECT_EQ(expand_template(text, 5, name), TemplateKind::NO_MATCH) << text;
    EXPECT_EQ(expand_template("%ld_%d%", 5, name), TemplateKind::NUMBERED);
    EXPECT_EQ(name, "%ld_5%");
    EXPECT_EQ(expand_template("%08.3d", 5, name), TemplateKind::NUMBERED);
    EXPECT_EQ(name, "     005");
    EXPECT_EQ(expand_template("%4096d", 5, name), TemplateKind::NUMBERED);
    EXPECT_EQ(name.size(), 4096u);
}

}  // namespace quorlin
