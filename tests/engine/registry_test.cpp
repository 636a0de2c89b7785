// Who is listed as the owner of which databases, and what becomes of a registry that is damaged.
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

struct RegistryTest : EngineTest {
    // Another user's database, saved.
    void MakeBobs(const char* name) const { NewDatabase(name, FolderPath(), "bob", "b").SaveDB(); }
    const std::string shop_ = File("shop.cdb") + ";";
};

TEST_F(RegistryTest, LoadingMakesNobodyTheOwnerOfAnothersDatabase) {
    EXPECT_FALSE(FileSystem::Current().Exists(File("RDX.dat")));
    engine_.SaveDB();
    MakeBobs("bobs");
    engine_.LogOn("ann", "secret");
    engine_.LoadDB(FolderPath() + "\\.\\shop.cdb");  // one file has one entry
    EXPECT_EQ(Listed(engine_, "ann"), shop_);
    engine_.CVLDBOwnerSet()->Remove("bob");
    engine_.LoadDB(File("bobs.cdb"));
    EXPECT_EQ(Listed(engine_, "ann"), shop_);
    EXPECT_EQ(Listed(engine_, "bob"), "");
    engine_.LogOn("bob", "b");
    engine_.CVLDBOwnerSet()->Remove("bob");
    engine_.LoadDB(File("bobs.cdb"));
    EXPECT_EQ(Listed(engine_, "bob"), File("bobs.cdb") + ";");
}

TEST_F(RegistryTest, ALogOnKeepsWhatIsNotWrittenYetAndSeesWhatOthersWrote) {
    MakeBobs("bobs");
    engine_.LogOn("bob", "b");
    EXPECT_EQ(Listed(engine_, "ann"), shop_);
    EXPECT_EQ(Listed(engine_, "bob"), File("bobs.cdb") + ";");
    engine_.LogOn("ann", "secret");
    engine_.DBLegalUser(owner_, Ownership);
    engine_.ChangeOwner("bob", "b");
    engine_.LogOn("bob", "b");
    EXPECT_EQ(Listed(engine_, "ann"), "");
    engine_.DBLegalUser(engine_.LogedOnUser(), Ownership);
    engine_.SaveDB();
    EXPECT_EQ(OnDisk("ann"), "");
    EXPECT_EQ(OnDisk("bob"), File("bobs.cdb") + ";" + shop_);
}

TEST_F(RegistryTest, FollowsAHandOverThatIsTakenBack) {
    engine_.SaveDB();
    engine_.TransactionBegin();
    engine_.ChangeOwner("bob", "b");
    engine_.TansactionAbort();
    engine_.DBLegalUser(owner_, Ownership);
    engine_.SaveDB();
    EXPECT_EQ(OnDisk("ann") + OnDisk("bob"), shop_);
    engine_.ChangeOwner("bob", "b");  // and is never saved
    engine_.LoadDB(File("shop.cdb"));
    engine_.DBLegalUser(owner_, Ownership);
    engine_.SaveDB();
    EXPECT_EQ(OnDisk("ann") + OnDisk("bob"), shop_);
    engine_.ChangeOwner("bob", "b");
    engine_.SaveDB({}, "second");
    EXPECT_EQ(OnDisk("ann") + "bob: " + OnDisk("bob"), shop_ + "bob: " + File("second.cdb") + ";");
}

TEST_F(RegistryTest, WhatIsNotSavedStaysOutOfItWhenOtherDatabasesChange) {
    for (const char* name : {"shop", "second", "third"}) engine_.SaveDB({}, name);
    engine_.ChangeOwner("bob", "b");
    engine_.DeleteDB(File("shop.cdb"));
    const std::string second = File("second.cdb") + ";", third = File("third.cdb") + ";";
    EXPECT_EQ(OnDisk("ann") + "bob: " + OnDisk("bob"), second + third + "bob: ");
    engine_.ChangeOwner("cid", "c", {}, {}, File("second.cdb"));
    EXPECT_EQ(OnDisk("ann") + "bob: " + OnDisk("bob"), third + "bob: ");
    EXPECT_EQ(OnDisk("cid"), second);
    EXPECT_TRUE(engine_.CVLDBOwnerSet()->CanAdd("ann"));
    EXPECT_EQ(Listed(engine_, "bob"), third);
    engine_.SaveDB();
    EXPECT_EQ(OnDisk("ann") + "bob: " + OnDisk("bob"), "bob: " + third);
}

TEST_F(RegistryTest, FollowsAnOwnerWhoIsRenamed) {
    engine_.SaveDB();
    owner_->UserName("eva");
    engine_.SaveDB();
    EXPECT_EQ(OnDisk("ann") + "eva: " + OnDisk("eva"), "eva: " + shop_);
    engine_.LoadDB(File("shop.cdb"));
    engine_.GetUser("eva", "secret")->UserName("zoe");  // who is not the object that is logged on
    engine_.SaveDB();
    EXPECT_EQ(OnDisk("eva") + "zoe: " + OnDisk("zoe"), "zoe: " + shop_);
}

TEST_F(RegistryTest, AUserWhoWasPutInPlaceKeepsWhatOthersWrote) {
    engine_.SaveDB();
    CVLDBEngine engine;
    engine.LogedOnUser(engine_.LogedOnUser());
    engine.CreateNewDB("second", FolderPath());
    engine.SaveDB();
    EXPECT_EQ(OnDisk("ann"), shop_ + File("second.cdb") + ";");
    // Each database has an ann of its own.
    owner_->UserName("eva");
    EXPECT_EQ(engine_.DBOwner() + engine_.CVLDBUserSet()->Item("eva")->UserName(), "evaeva");
    EXPECT_EQ(engine.DBOwner() + engine.CVLDBUserSet()->Item("ann")->UserName(), "annann");
    EXPECT_EQ(engine.CVLDBUserSet()->Item(1), engine.LogedOnUser());
}

TEST_F(RegistryTest, AnUnreadableFileIsKeptAside) {
    engine_.SaveDB();
    const std::string good = Contents(File("RDX.dat"));
    const std::string damaged[] = {"", "not a registry", good.substr(0, good.size() - 1),
                                   Contents(File("shop.cdb"))};
    for (int i = 0; i < 4; ++i) {
        WriteContents(File("RDX.dat"), damaged[i]);
        EXPECT_TRUE(engine_.LogOn("ann", "secret"));
        EXPECT_EQ(engine_.CVLDBOwnerSet()->Count(), 0);
        EXPECT_EQ(Contents(File("RDX.dat")), damaged[i]);
        engine_.DBLegalUser(owner_, Ownership);
        engine_.SaveDB();
        engine_.SaveDB();
        EXPECT_EQ(OnDisk("ann"), shop_);
        const std::string number = i == 0 ? "" : std::to_string(i + 1);
        EXPECT_EQ(Contents(File("RDX.dat.unreadable") + number), damaged[i]);
    }
    std::string newer = good;
    newer[12 + 8] = 2;
    WriteContents(File("RDX.dat"), newer);
    EXPECT_TRUE(engine_.LogOn("ann", "secret"));
    engine_.DBLegalUser(owner_, Ownership);
    for (const char* name : {"shop", "second"}) {
        ExpectError(kIncompatibleFormat, "CVLDBEngine:SaveDB Method",
                    "The format of the data in the file is incompatible with the application",
                    [&] { engine_.SaveDB({}, name); });
    }
    EXPECT_EQ(ErrorNumber([&] { engine_.DeleteDB(File("second.cdb")); }), kIncompatibleFormat);
    EXPECT_EQ(engine_.GetDB(File("second.cdb"))->DBOwner(), "ann");
    EXPECT_EQ(Contents(File("RDX.dat")), newer);
    EXPECT_FALSE(FileSystem::Current().Exists(File("RDX.dat.unreadable5")));
}

TEST_F(RegistryTest, WithoutAPlaceForItTheDatabaseAndTheLogAreStillWritten) {
    ScopedLibraryFolder gone;
    std::filesystem::remove(gone.folder().path());
    ExpectError(76, "CVLDBEngine:SaveDB Method",
                "Unable to find the specified path\r\nRespecify the path",
                [&] { engine_.SaveDB({}, "second"); });
    EXPECT_EQ(engine_.DBName(), "second.cdb");
    EXPECT_NE(Contents(File("second.log")).find("DATABASE SAVED! As "), std::string::npos);
    std::filesystem::create_directory(gone.folder().path());
    EXPECT_EQ(engine_.GetDB(File("second.cdb"))->DBOwner(), "ann");
}

TEST_F(RegistryTest, AHandlerMayReadItAnewWhileItIsChanged) {
    for (const char* name : {"shop", "second"}) engine_.SaveDB({}, name);
    for (const char* owner : {"bob", "cid"}) engine_.CVLDBOwnerSet()->Add(owner);
    int removed = 0;
    engine_.CVLDBOwnerSet()->OnDBOwnerRemove.Connect(
        [&](const auto&) { ++removed, engine_.LogOn("ann", "secret"); });
    EXPECT_TRUE(engine_.DeleteDB(File("shop.cdb")));
    EXPECT_EQ(removed, 2);
    EXPECT_EQ(OnDisk("ann"), File("second.cdb") + ";");
}

TEST_F(RegistryTest, AHandlerMayOpenAnotherDatabaseWhileItIsChanged) {
    for (const char* name : {"shop", "second", "third"}) engine_.SaveDB({}, name);
    const std::string second = File("second.cdb") + ";", third = File("third.cdb") + ";";
    const auto open_second = [&](const auto&) { engine_.LoadDB(File("second.cdb")); };
    // A handed-over database is deleted, which on the disk is ann's still.
    engine_.ChangeOwner("bob", "b");
    const auto listed = engine_.CVLDBOwnerSet()->Item("ann")->CVLOwnerDBSet();
    const auto connection = listed->OnDBRemove.Connect(open_second);
    EXPECT_TRUE(engine_.DeleteDB(File("third.cdb")));
    EXPECT_TRUE(engine_.SaveDB());
    EXPECT_EQ(OnDisk("ann") + "bob: " + OnDisk("bob"), shop_ + second + "bob: ");
    listed->OnDBRemove.Disconnect(connection);
    engine_.LoadDB(File("shop.cdb"));
    engine_.GetUser("ann", "secret")->UserName("eva");
    engine_.CVLDBOwnerSet()->OnDBOwnerAdd.Connect(open_second);
    EXPECT_TRUE(engine_.SaveDB());
    EXPECT_EQ(OnDisk("ann") + "eva: " + OnDisk("eva"), second + "eva: " + shop_);
}

}  // namespace
}  // namespace tavolin
