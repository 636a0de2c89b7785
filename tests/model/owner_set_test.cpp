#include "tavolin/model/owner_set.h"

#include "tavolin/model/owner_db_set.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/persist/paths.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

using N = CVLErrorNum;
namespace fs = std::filesystem;

class OwnerSetTest : public testing::Test {
  protected:
    std::string Folder() const { return PortablePath(library_.folder().path()); }
    void Touch(const char* name) {
        const std::uint8_t byte = 1;
        FileSystem::Current().Write(library_.folder() / name, {&byte, 1});
    }
    std::string Listed(const CVLDBOwnerSet& set) {
        std::string text;
        for (const auto& owner : set.NewEnum()) {
            text += owner->Key() + ":";
            for (const auto& database : owner->CVLOwnerDBSet()->NewEnum()) {
                text += database->DBName() + " ";
            }
        }
        return text;
    }
    ScopedLibraryFolder library_;
    CVLDBOwnerSet owners_;
};

TEST_F(OwnerSetTest, KeepsOwnersAndTheirDatabases) {
    std::string events;
    owners_.OnDBOwnerAdd.Connect([&](const auto& owner) { events += "+" + owner->Key(); });
    owners_.OnDBOwnerRemove.Connect([&](const auto& owner) { events += "-" + owner->Key(); });
    const auto ann = owners_.Add("Ann");
    EXPECT_EQ(owners_.Item("aNN"), ann);
    ExpectError(N::GetOwnerAddError(), "CVLDBOwnerSet:Add Method",
                "The Owner That Is Being Added Already Exists In DataBase!",
                [&] { owners_.Add("ANN"); });
    const auto databases = ann->CVLOwnerDBSet();
    databases->OnDBAdd.Connect([&](const auto& database) { events += " +" + database->DBName(); });
    databases->OnDBRemove.Connect(
        [&](const auto& database) { events += " -" + database->DBName(); });
    const auto shop = databases->Add("shop.cdb", "C:\\Data");
    for (const char* folder : {"C:\\Data", "c:\\data\\"}) {
        ExpectError(N::GetDBAddError(), "CVLOwnerDBSet:Add Method",
                    "The DataBase That Is Being Created Already Exists!",
                    [&] { databases->Add("SHOP.cdb", folder); });
    }
    EXPECT_EQ(databases->Add("here.cdb", "")->Key(), "here.cdb");
    shop->OnDBDirChange.Connect([&](const std::string& dir) { events += " dir=" + dir; });
    shop->DBDir("D:");
    shop->DBName("new");
    EXPECT_EQ(databases->Item(1)->Key(), "C:\\Data\\shop.cdb");
    ExpectError(N::GetDBOwnerNotFoundError(), "CVLDBOwnerSet:Item Get Property", "Owner Not Found!",
                [&] { owners_.Item("bob"); });
    ExpectError(N::GetDBNotFoundError(), "CVLOwnerDBSet:Item Get Property", "DataBase Not Found!",
                [&] { databases->Item("bob"); });
    databases->Remove("c:\\data\\SHOP.CDB");
    owners_.Remove(1);
    EXPECT_EQ(events, "+Ann +shop.cdb +here.cdb dir=D: -new-Ann");
}

TEST_F(OwnerSetTest, RefreshDropsWhatIsGone) {
    for (const char* name : {"a.cdb", "b.cdb"}) Touch(name);
    for (const char* owner : {"Ann", "Bob", "Cid"}) owners_.Add(owner);
    owners_.Item("Ann")->CVLOwnerDBSet()->Add("gone.cdb", Folder());
    for (const char* name : {"gone.cdb", "a.cdb", "gone2.cdb"}) {
        owners_.Item("Bob")->CVLOwnerDBSet()->Add(name, Folder());
    }
    owners_.Item("Cid")->CVLOwnerDBSet()->Add("b.cdb", Folder() + "\\");
    owners_.Item("Cid")->CVLOwnerDBSet()->Add("far.cdb", Folder() + "\\none");
    // There is no file to replace: memory is pruned, nothing is written.
    ExpectError(53, "CVLDBOwnerSet:Refresh Method", "Cannot find the specified file",
                [&] { owners_.Refresh(); });
    EXPECT_EQ(Listed(owners_), "Bob:a.cdb Cid:b.cdb far.cdb ");
    EXPECT_FALSE(FileSystem::Current().Exists(RegistryPath()));

    Touch("RDX.dat");
    owners_.Refresh();  // nothing is gone, and nothing is touched
    EXPECT_EQ(FileSystem::Current().FileSize(RegistryPath()), 1u);
    FileSystem::Current().Delete(library_.folder() / "a.cdb");
    owners_.Refresh();
    EXPECT_EQ(Listed(owners_), "Cid:b.cdb far.cdb ");
    CVLDBOwnerSet read;
    read.RegistryState(ReadDatabaseFile(RegistryPath()));
    EXPECT_EQ(Listed(read), Listed(owners_));
    EXPECT_EQ(read.Item("cid")->CVLOwnerDBSet()->Item(1)->DBDir(), Folder() + "\\");

    ExpectDamageRefused(read.RegistryState(), [&](const auto& damaged) {
        Trap("load", [&] { read.RegistryState(damaged); });
    });
    EXPECT_EQ(Listed(read), Listed(owners_));
}

}  // namespace
}  // namespace tavolin
