#include "driver/paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>

#include "support/files.h"

namespace quorlin {

TEST(Paths, FileStem) {
    const char* const cases[][2] = {
        {"a.ts", "a"},   {"dir/a.b.ts", "a.b"}, {"C:\\seg\\a_1.ts", "a_1"}, {"x\\y/a.ts", "a"}, {"x/y\\a.ts", "a"},
        {"/a.ts", "/a"}, {"/x/a.ts", "a"},      {"dir.old/stream", "dir"},  {".m3u8", ""},      {"x/.ts", ""},
    };
    std::string stem;
    for (const auto& [path, expected] : cases) {
        EXPECT_EQ(file_stem(path, stem), 0) << path;
        EXPECT_EQ(stem, expected) << path;
    }
    for (const char* path : {"a", ""}) EXPECT_EQ(file_stem(path, stem), -1) << path;
}

TEST(Paths, OutputDirectoriesAreCreatedAtBackslashesOnly) {
    const std::string base = scratch_path("paths");
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

}  // namespace quorlin
