#include "tavolin/persist/paths.h"

#include <gtest/gtest.h>

#include "tests/support/failing_file_system.h"

namespace tavolin {
namespace {

TEST(Paths, SplitAndJoin) {
    struct Case {
        const char* path;
        const char* dir;
        const char* name;
    };
    const Case cases[] = {
        {"C:\\d\\x.cdb", "C:\\d\\", "x.cdb"},
        {"a\\b/c", "a\\b/", "c"},
        {"a/b\\c", "a/b\\", "c"},
        {"x", "", "x"},
        {"d\\", "d\\", ""},
        {"", "", ""},
    };
    for (const Case& test : cases) {
        const PathParts parts = SplitPath(test.path);
        EXPECT_EQ(parts.dir, test.dir);
        EXPECT_EQ(parts.name, test.name);
    }
    const std::pair<const char*, const char*> joined[] = {
        {"", "x"}, {"C:\\d", "C:\\d\\x"}, {"C:\\d\\", "C:\\d\\x"}, {"d/", "d/\\x"}, {"\\", "\\x"}};
    for (const auto& [dir, path] : joined) EXPECT_EQ(JoinPath(dir, "x"), path);
}

TEST(Paths, FileExistsIsFalseOnlyForANameMissingFromAnExistingFolder) {
    const TemporaryFolder folder;
    FileSystem::Current().Write(folder / "file", {});
    EXPECT_FALSE(FileExists(""));
    EXPECT_FALSE(FileExists(folder / "missing"));
    EXPECT_FALSE(FileExists("no such name in the current folder"));
    EXPECT_TRUE(FileExists(folder / "file"));
    EXPECT_TRUE(FileExists(folder / "none\\missing"));
    EXPECT_TRUE(FileExists(folder / "none\\none\\missing"));
    EXPECT_TRUE(FileExists(folder / "file\\missing"));
    EXPECT_TRUE(FileExists(folder / ""));
    EXPECT_TRUE(FileExists(folder / std::string(5000, 'x')));
    EXPECT_TRUE(FileExists(std::string_view("a\0b", 3)));
}

}  // namespace
}  // namespace tavolin
