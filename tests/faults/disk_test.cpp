// Real disks and folders that refuse. What this machine does not let a test set up is skipped.
#include <grp.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

struct DiskTest : EngineTest {
    DiskTest() {
        engine_.CreateNewPrimaryTable("T", {"ID", "Text"});
        engine_.AddRecord("T", 1, {"1", "old"});
    }
    static std::string TextOf(const std::string& file) {
        CVLDBEngine reader;
        reader.LogOn("ann", "secret");
        const auto records = reader.LoadDB(file)->Lookup(1)->CVLRecordSet()->Collection();
        return std::string(records->arena().Field(records->Find(1), 1));
    }
};

class SmallDisk {
  public:
    SmallDisk() {
        mounted_ = ::mount("tavolin-test", folder_.path().c_str(), "tmpfs", 0, "size=256k") == 0;
    }
    ~SmallDisk() {
        if (mounted_) ::umount(folder_.path().c_str());
    }
    bool mounted() const { return mounted_; }
    std::string path() const { return PortablePath(folder_.path()); }
    std::size_t files() const { return FilesOf(folder_).size(); }

  private:
    TemporaryFolder folder_;
    bool mounted_ = false;
};

TEST_F(DiskTest, AFullDiskKeepsTheOldFile) {
    const SmallDisk disk;
    if (!disk.mounted()) GTEST_SKIP() << "no right to make a small disk";
    const std::string file = disk.path() + "\\shop.cdb";
    engine_.SaveDB(disk.path());
    engine_.GetRecord("T", 1)->prop(1, std::string(150'000, 'n'));  // twice is too much
    engine_.SaveDB();
    const std::size_t files = disk.files();
    engine_.GetRecord("T", 1)->prop(1, std::string(170'000, 'm'));
    ExpectError(kDiskFull, "CVLDBEngine:SaveDB Method", GetErrorMessage(kDiskFull),
                [&] { engine_.SaveDB(); });
    EXPECT_EQ(TextOf(file), std::string(150'000, 'n'));
    EXPECT_EQ(disk.files(), files);
    ExpectError(kDiskFull, "CVLDBEngine:MakeItText Method", GetErrorMessage(kDiskFull),
                [&] { engine_.MakeItText(disk.path(), "much"); });
    MachineFileSystem().Delete(disk.path() + "\\muchtxt");
    EXPECT_EQ(ErrorNumber([&] {
                  engine_.GetTable("T")->FieldLabel(1, "");
                  for (int i = 0; i < 500; ++i)
                      engine_.AddRecord("T", i, {std::string(200, 'k') + std::to_string(i)});
                  engine_.MakeItMDB(disk.path(), "out.");
              }),
              3026);
    EXPECT_EQ(disk.files(), files);
    engine_.LoadDB(file);
    engine_.CVLTableSet()->Lookup(1)->GetRecord(1)->prop(1, std::string(200, 'm'));
    EXPECT_TRUE(engine_.SaveDB({}, {}, {}, true));
    EXPECT_EQ(TextOf(file), std::string(200, 'm'));
}

// As somebody who may not write there.
TEST_F(DiskTest, AFolderWithoutTheRightToWrite) {
    if (::geteuid() != 0) GTEST_SKIP() << "no right to become another user";
    engine_.SaveDB();
    const std::string file = folder_ / "shop.cdb";
    const std::string saved = Contents(file);
    std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0)
            ::_exit(9);
        int wrong = 0;
        const auto expect = [&](auto&& body) { wrong += ErrorNumber(body) != kPathAccessError; };
        engine_.GetRecord("T", 1)->prop(1, "new");
        expect([&] { engine_.SaveDB(); });
        expect([&] { engine_.SaveDB({}, "second"); });
        expect([&] { engine_.MakeItText(FolderPath()); });
        expect([&] { engine_.MakeItHTML(FolderPath()); });
        expect([&] { engine_.MakeItMDB(FolderPath()); });
        expect([&] { engine_.DeleteDB(folder_ / "shop.cdb"); });
        wrong += engine_.GetRecord("T", 1)->prop(1) != "new";
        ::_exit(wrong);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(Contents(file), saved);
    EXPECT_EQ(TextOf(file), "old");
}

}  // namespace
}  // namespace tavolin
