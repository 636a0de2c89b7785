#include "tavolin/persist/paths.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/failing_file_system.h"

namespace tavolin {
namespace {

void NameFolder(const char* folder) {
#ifdef _WIN32
    ::_putenv_s("TAVOLIN_FOLDER", folder);
#else
    ::setenv("TAVOLIN_FOLDER", folder, 1);
#endif
}

TEST(Paths, Join) {
    struct Case {
        const char* dir;
        const char* joined;
    };
    const Case cases[] = {
        {"", "x"}, {"C:\\d", "C:\\d\\x"}, {"C:\\d\\", "C:\\d\\x"}, {"d/", "d/\\x"}, {"\\", "\\x"},
    };
    for (const Case& test : cases) EXPECT_EQ(JoinPath(test.dir, "x"), test.joined);
}

TEST(Paths, Split) {
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

TEST(Paths, LibraryFolderFollowsTheEnvironment) {
    const char* before = std::getenv("TAVOLIN_FOLDER");
    const std::string restore = before != nullptr ? before : "";
    NameFolder("/some/where");
    EXPECT_EQ(LibraryFolder(), "/some/where\\");
    EXPECT_EQ(RegistryPath(), "/some/where\\RDX.dat");
    NameFolder("C:\\else\\");
    EXPECT_EQ(RegistryPath(), "C:\\else\\RDX.dat");
    NameFolder("");
    const std::string own = LibraryFolder();
    NameFolder(restore.c_str());
    ASSERT_FALSE(own.empty());
    EXPECT_EQ(own.back(), '\\');
    EXPECT_TRUE(NativePath(own).is_absolute());
    EXPECT_TRUE(FileSystem::Current().FolderExists(own));
}

}  // namespace
}  // namespace tavolin
