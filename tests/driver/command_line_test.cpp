#include "driver/command_line.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "driver/name_template.h"
#include "support/golden.h"

TEST(CommandLine, OptionsAndKindsOfInput) {
    struct Case {
        std::vector<const char*> args;
        int status;
        int32_t kind;
        int32_t start_index;
        std::string output_dir;
    };
    const Case cases[] = {
        {{"-i", "a.m3u8"}, 0, INPUT_PLAYLIST, -1, ""},
        {{"-i", "a.m3u", "-s", "3"}, 0, INPUT_PLAYLIST, 3, ""},
        {{"-i", "a.M3U8"}, 0, INPUT_UNDECIDED, -1, ""},
        {{"-i", "dir.old/stream"}, 0, INPUT_UNDECIDED, -1, ""},
        {{"-i", "a.ts", "-s", "3", "-o", "x"}, 0, INPUT_TS_FILE, 3, "x"},
        {{"-i", "a_%d.ts"}, 0, INPUT_TS_TEMPLATE, 0, ""},
        {{"-i", "a_%03d.trp", "-s", "7"}, 0, INPUT_TS_TEMPLATE, 7, ""},
        {{"-i", "a_%d.ts", "-s", "2x"}, 0, INPUT_TS_TEMPLATE, 0, ""},
        {{"-i", "a_%d.ts", "-s", ""}, 0, INPUT_TS_TEMPLATE, 0, ""},
        {{"-i", "a_%d.ts", "-s", "99999999999999999999"}, 0, INPUT_TS_TEMPLATE, 2147483647, ""},
        {{"-i", "a.ts", "-o", "-h"}, 0, INPUT_TS_FILE, -1, "-h"},
        {{"-s"}, -1, INPUT_UNDECIDED, -1, ""},
        {{"-i"}, -1, INPUT_UNDECIDED, -1, ""},
        {{"-i", "a.ts", "--help"}, -1, INPUT_UNDECIDED, -1, ""},
        {{"-i", "a.ts", "-v", "-x"}, 0, INPUT_UNDECIDED, -1, ""},
    };
    for (const Case& c : cases) {
        std::vector<const char*> argv = {"quorlin"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        CommandLineOptions options;
        int status = 1;
        printed_by([&] { status = parse_command_line(static_cast<int>(argv.size()), argv.data(), options); });
        const std::string name = testing::PrintToString(c.args);
        EXPECT_EQ(status, c.status) << name;
        EXPECT_EQ(options.input_kind, c.kind) << name;
        EXPECT_EQ(options.start_index, c.start_index) << name;
        EXPECT_EQ(options.output_dir == nullptr ? "" : std::string(options.output_dir), c.output_dir) << name;
    }
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
    struct Case {
        const char* text;
        TemplateKind kind;
        const char* name;
    };
    const Case cases[] = {
        {"d%s%n.ts", TemplateKind::FIXED, "d%s%n.ts"}, {"d%%.ts", TemplateKind::FIXED, "d%.ts"},
        {"%ld_%d%", TemplateKind::NUMBERED, "%ld_5%"}, {"%5", TemplateKind::FIXED, "%5"},
        {"%*d", TemplateKind::FIXED, "%*d"},           {"%1$d", TemplateKind::FIXED, "%1$d"},
        {"%d%d", TemplateKind::NO_MATCH, nullptr},     {"%4097d", TemplateKind::NO_MATCH, nullptr},
        {"%.4097d", TemplateKind::NO_MATCH, nullptr},  {"%99999999999999999999d", TemplateKind::NO_MATCH, nullptr},
    };
    for (const Case& c : cases) {
        std::string name;
        EXPECT_EQ(expand_template(c.text, 5, name), c.kind) << c.text;
        if (c.name != nullptr) {
            EXPECT_EQ(name, c.name);
        }
    }
    std::string name;
    EXPECT_EQ(expand_template("%4096d", 5, name), TemplateKind::NUMBERED);
    EXPECT_EQ(name.size(), 4096u);
}
