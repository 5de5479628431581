#include "driver/paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>

TEST(Paths, FileStem) {
    struct Case {
        const char* path;
        const char* stem;  // null: none
    };
    const Case cases[] = {
        {"a.ts", "a"},
        {"dir/a.b.ts", "a.b"},
        {"C:\\seg\\a_1.ts", "a_1"},
        {"x\\y/a.ts", "a"},
        {"x/y\\a.ts", "a"},
        {"/a.ts", "/a"},
        {"/x/a.ts", "a"},
        {"a", nullptr},
        {"", nullptr},
        {"dir.old/stream", "dir"},
        {".m3u8", ""},
        {"x/.ts", ""},
    };
    for (const Case& c : cases) {
        std::string stem;
        EXPECT_EQ(file_stem(c.path, stem), c.stem == nullptr ? -1 : 0) << c.path;
        if (c.stem != nullptr) {
            EXPECT_EQ(stem, c.stem) << c.path;
        }
    }
}

TEST(Paths, OutputDirectoriesAreCreatedAtBackslashesOnly) {
    const std::string base = testing::TempDir() + "quorlin_paths_test";
    EXPECT_EQ(create_output_dir(""), -1);
    EXPECT_EQ(create_output_dir(base), 0);
    EXPECT_EQ(create_output_dir(base), 0);  // it is there
    EXPECT_EQ(create_output_dir(base + "/a/b"), -1);
    EXPECT_EQ(create_output_dir(base + "/a\\b\\c"), 0);
    struct stat status = {};
    for (const char* name : {"/a", "/a\\b", "/a\\b\\c"}) {
        EXPECT_EQ(stat((base + name).c_str(), &status), 0) << name;
        std::remove((base + name).c_str());
    }
    std::remove(base.c_str());
}
