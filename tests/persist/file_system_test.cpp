#include "tavolin/persist/file_system.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>

#include "tavolin/persist/paths.h"
#include "tests/support/failing_file_system.h"

namespace tavolin {
namespace {

ByteView BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string Text(const std::vector<std::uint8_t>& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

struct FileSystemTest : testing::Test {
    // By another way than the one under test.
    std::string Contents(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }
    std::errc CodeOf(const std::function<void()>& body) {
        try {
            body();
        } catch (const fs::filesystem_error& error) {
            EXPECT_FALSE(error.path1().empty());
            const auto condition = error.code().default_error_condition();
            return static_cast<std::errc>(condition.value());
        }
        return {};
    }

    TemporaryFolder folder_;
    FileSystem& files_ = FileSystem::Current();
};

TEST_F(FileSystemTest, WritesAppendsReadsAndDeletes) {
    const std::string path = folder_ / "caf\xC3\xA9.txt";
    files_.Write(path, BytesOf("a longer text"));
    files_.Write(path, BytesOf("short"));
    files_.Append(path, BytesOf(" and more"));
    EXPECT_EQ(Contents(folder_.path() / fs::path(u8"caf\u00E9.txt")), "short and more");
    EXPECT_EQ(Text(files_.ReadFile(path)), "short and more");
    EXPECT_EQ(Text(files_.ReadFile(path, 5)), "short");
    EXPECT_EQ(files_.FileSize(path), 14u);
    auto file = files_.Open(path, FileMode::kRead);
    EXPECT_EQ(Text(ReadBytes(*file, 6, 3)), "and");
    EXPECT_EQ(Text(ReadBytes(*file, 10, 100)), "more");
    EXPECT_EQ(Text(ReadBytes(*file, 15, 1)), "");
    file.reset();  // some machines keep the name as long as the file is open
    files_.Delete(path);
    EXPECT_FALSE(files_.Exists(path));
    files_.Append(path, BytesOf("new"));
    EXPECT_EQ(Text(files_.ReadFile(path)), "new");
}

TEST_F(FileSystemTest, BothSeparatorsLeadToTheSameFile) {
    files_.CreateFolder(folder_ / "sub");
    files_.CreateFolder(folder_ / "sub\\");
    files_.Write(folder_ / "sub\\x", BytesOf("x"));
    EXPECT_TRUE(fs::exists(folder_.path() / "sub" / "x"));
    EXPECT_TRUE(files_.IsSameFile(folder_ / "sub\\x", folder_ / "sub/..\\sub/x"));
    EXPECT_FALSE(files_.IsSameFile(folder_ / "sub\\x", folder_ / "sub\\y"));
    EXPECT_FALSE(files_.IsSameFile(folder_ / "sub\\y", folder_ / "sub\\y"));
    EXPECT_TRUE(files_.FolderExists(folder_ / "sub\\"));
    EXPECT_FALSE(files_.FolderExists(folder_ / "sub\\x"));
}

TEST_F(FileSystemTest, FailuresCarryTheMachinesCode) {
    const std::string file = folder_ / "file";
    const std::string sub = folder_ / "sub";
    files_.Write(file, {});
    files_.CreateFolder(sub);
    EXPECT_EQ(CodeOf([&] { files_.ReadFile(folder_ / "none"); }),
              std::errc::no_such_file_or_directory);
    EXPECT_EQ(CodeOf([&] { files_.CreateFolder(folder_ / "none\\x"); }),
              std::errc::no_such_file_or_directory);
    EXPECT_EQ(CodeOf([&] { files_.Create(file, {}); }), std::errc::file_exists);
    EXPECT_NE(CodeOf([&] { files_.ReadFile(sub); }), std::errc{});
    EXPECT_NE(CodeOf([&] { files_.Delete(sub); }), std::errc{});
    EXPECT_NE(CodeOf([&] { files_.Replace(sub, {}); }), std::errc{});
    EXPECT_THROW(files_.ReadFile(std::string_view("a\0b", 3)), fs::filesystem_error);
}

TEST_F(FileSystemTest, ReplaceCopiesALongTailAndSurvivesShortWrites) {
    std::string old(2'500'000, '\0');
    for (std::size_t i = 0; i < old.size(); ++i) old[i] = static_cast<char>(i * 7 / 3);
    files_.Write(folder_ / "x", BytesOf(old));
    FailingFileSystem grudging;
    grudging.LimitWrites(300'001);
    const ByteView chunk = BytesOf("head");
    grudging.Replace(folder_ / "x", {&chunk, 1}, 4);
    EXPECT_TRUE(Contents(folder_.path() / "x") == "head" + old.substr(4));
}

#ifndef _WIN32
TEST_F(FileSystemTest, ReplaceKeepsRightsAndLinks) {
    const ByteView chunk = BytesOf("new");
    fs::create_directory(folder_.path() / "sub");
    files_.Write(folder_ / "sub\\target", BytesOf("old"));
    fs::permissions(folder_.path() / "sub" / "target", fs::perms(0640));
    fs::create_symlink("sub/target", folder_.path() / "near");
    fs::create_symlink(folder_.path() / "near", folder_.path() / "far");
    files_.Replace(folder_ / "far", {&chunk, 1});
    EXPECT_TRUE(fs::is_symlink(folder_.path() / "far"));
    EXPECT_TRUE(fs::is_symlink(folder_.path() / "near"));
    EXPECT_EQ(Contents(folder_.path() / "sub" / "target"), "new");
    EXPECT_EQ(fs::status(folder_.path() / "sub" / "target").permissions(), fs::perms(0640));

    fs::create_symlink("sub/later", folder_.path() / "dangling");
    files_.Replace(folder_ / "dangling", {&chunk, 1});
    EXPECT_EQ(Contents(folder_.path() / "sub" / "later"), "new");

    fs::create_symlink("loop", folder_.path() / "loop");
    EXPECT_THROW(files_.Replace(folder_ / "loop", {&chunk, 1}), fs::filesystem_error);
    EXPECT_THROW(files_.Replace("/dev/null", {&chunk, 1}), fs::filesystem_error);
}
#endif

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
