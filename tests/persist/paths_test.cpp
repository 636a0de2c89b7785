#include "tavolin/persist/paths.h"

#include <gtest/gtest.h>

#include "tests/support/failing_file_system.h"

namespace tavolin {
namespace {

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
