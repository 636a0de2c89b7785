// Databases created, saved, loaded, deleted and handed over, with files that are damaged.
#include <fstream>

#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

struct LifecycleTest : StoppedClock, EngineTest {
    LifecycleTest() {
        engine_.CreateNewPrimaryTable("T", {"ID", "Text"});
        engine_.AddRecord("T", 1, {"1", "one"});
        engine_.SaveDB();
    }
    // What is in a database file, through an engine of its own: the owner and the records of T.
    static std::string Summary(const std::string& path) {
        CVLDBEngine engine;
        engine.LogOn("somebody", "");
        engine.LoadDB(path);
        std::string text = engine.DBOwner() + ":";
        const auto records = engine.CVLTableSet()->Lookup("T")->CVLRecordSet();
        for (const auto& record : records->NewEnum()) text += " " + record->Key();
        return text;
    }
    // A database of bob's in which ann has these rights.
    std::string MakeBobs(bool can_write, bool can_delete, bool disabled = false) const {
        const int rights = can_write * 4 + can_delete * 2 + disabled;
        NewDatabase engine("bobs" + std::to_string(rights), FolderPath(), "bob", "b");
        engine.CreateNewPrimaryTable("T", {"ID"});
        engine.CreateNewUser("ann", "secret", true, can_write, can_delete, {}, {}, disabled);
        engine.SaveDB();
        return engine.DBPath() + "\\" + engine.DBName();
    }
    const std::string file_ = File("shop.cdb");
};

TEST_F(LifecycleTest, ANewDatabaseIsItsCreatorsAndEmpty) {
    std::string event;
    engine_.OnDBCreation.Connect([&](const auto& path, Date date, const auto& creator) {
        event = path + " " + GeneralDate(date) + " " + creator;
    });
    const auto tables = engine_.CreateNewDB("new", FolderPath(), "", "Ann Example");
    EXPECT_EQ(event, File("new.cdb") + " 11/15/2026 1:05:00 AM ann");
    EXPECT_EQ(tables->Count(), 0);
    EXPECT_EQ(engine_.CVLDBUserSet()->Item(1), owner_);
    EXPECT_TRUE(owner_->CanRead() && owner_->CanReadWrite() && owner_->CanDelete());
    EXPECT_EQ(owner_->UserFullName(), "Ann Example");
    EXPECT_TRUE(engine_.PasswordCorrect("secret"));
    EXPECT_FALSE(There("new.cdb"));
    ExpectError(Num::GetNewDBCreationError(), "CVLDBEngine:CreateNewDB Method",
                "DataBase Cannot Be Created! \r\nCause: This DataBase Exists!",
                [&] { engine_.CreateNewDB("shop", FolderPath()); });
    ExpectError(Num::GetDBAddError(), "CVLDBEngine:CreateNewDB Method", "Bad filename or number",
                [&] { engine_.CreateNewDB("", FolderPath()); });
    EXPECT_EQ(engine_.CVLTableSet(), tables);
    engine_.CreateNewDB("named.dat", FolderPath() + "\\", "own");
    EXPECT_EQ(engine_.DBName() + engine_.DBPath(), "named.dat" + FolderPath() + "\\");
    EXPECT_TRUE(engine_.PasswordCorrect("own"));
}

TEST_F(LifecycleTest, AHandlerMayOpenAnotherDatabase) {
    engine_.LogDBActivities(false, false, true);
    const char* next = "other";
    const auto create = [&](const auto&) { engine_.CreateNewDB(next, FolderPath()); };
    const auto told = engine_.OnOwnerChange.Connect(create);
    const auto connection = engine_.OnDBCreation.Connect(
        [&](const auto&, Date, const auto&) { engine_.LogDBActivities(false, false, true); });
    engine_.ChangeOwner("bob", "b");
    EXPECT_TRUE(engine_.LogReport().ends_with(
        "OwnerShip Of DataBase shop.cdb Has Been Changed From ann To bob\r\n"));
    engine_.SaveDB();
    EXPECT_EQ(Contents(File("other.log")).find("OwnerShip"), std::string::npos);
    engine_.OnOwnerChange.Disconnect(told);
    next = "third";
    engine_.CVLDBOwnerSet()->OnDBOwnerAdd.Connect(create);
    engine_.ChangeOwner("cid", "c");
    engine_.SaveDB();
    EXPECT_EQ(Contents(File("third.log")).find("OwnerShip"), std::string::npos);
    engine_.OnDBCreation.Disconnect(connection);
    engine_.OnDBCreation.Connect([&](const auto&, Date, const auto&) { engine_.LoadDB(file_); });
    EXPECT_EQ(engine_.CreateNewDB("new", FolderPath())->Count(), 0);
    EXPECT_TRUE(engine_.LogReport().ends_with("ann Is The Owner Of new.cdb\r\n"));
}

TEST_F(LifecycleTest, EverythingSavedIsThereAfterLoading) {
    engine_.CreateNewUser("bob", "b\u00F6b", true, false, true, "Bob", "second", true);
    engine_.CreateNewLinkedTable("T", "Text", {"Word"});
    engine_.AddRecord("T", -7, {"2", "\u0141\u00F3d\u017A \U0001F600"})->Attach(3, "p", aMovie);
    engine_.LogDBActivities(true, false, true, false, true, false, true, false, true, false, true,
                            false, true, false);
    engine_.ChangePassword("", "p\u00E4ss");
    const LogType switches = engine_.LoggedActivities();
    engine_.SaveDB();
    std::filesystem::create_directory(folder_.path() / "sub");
    FileSystem::Current().Rename(file_, folder_ / "sub\\moved.dat");  // a file is where it is found
    CVLDBEngine other;
    other.LogOn("ann", "secret");
    SetClock({});
    EXPECT_EQ(other.LoadDB(folder_ / "sub\\moved.dat")->Count(), 2);
    EXPECT_EQ(other.DBName() + "|" + other.DBPath() + "|" + other.DBOwner(),
              "moved.dat|" + FolderPath() + "\\sub\\|ann");
    EXPECT_EQ(other.DBCreationDate(), MakeDate(2026, 11, 15, 1, 5));
    EXPECT_EQ(other.LoggedActivities(), switches);
    EXPECT_TRUE(other.PasswordCorrect("p\u00E4ss"));
    EXPECT_TRUE(other.DBLegalUser(other.LogedOnUser(), Ownership));
    const auto bob = other.GetUser("bob", "b\u00F6b");
    EXPECT_EQ(bob->UserFullName() + bob->UserDescription(), "Bobsecond");
    EXPECT_TRUE(bob->CanRead() && !bob->CanReadWrite() && bob->CanDelete() && bob->UserDisabled());
    EXPECT_EQ(other.GetLinkedTable("T", "Text")->Key(), "TextT");
    EXPECT_EQ(other.GetTable("TextT")->ReferencedTable(0), "T");
    const auto record = other.GetRecord("T", "2");
    EXPECT_EQ(record->nKey(), -7);
    EXPECT_EQ(record->prop(1), "\u0141\u00F3d\u017A \U0001F600");
    EXPECT_EQ(record->CVLAttachmentSet()->Item("p")->SpecificType(), aMovie);
    EXPECT_EQ(other.GetRecordSet("TextT")->Count(), 2);
    other.LoadDB(FolderPath() + "/sub/moved.dat");
    EXPECT_EQ(other.DBPath(), FolderPath() + "/sub");
    other.AddRecord("T", 1, {"3"});
    EXPECT_TRUE(other.SaveDB());
    EXPECT_FALSE(There("shop.cdb"));
    EXPECT_EQ(Summary(File("sub\\moved.dat")), "ann: 1 2 3");
}

TEST_F(LifecycleTest, SavingNeverWritesOverAnotherFile) {
    WriteContents(File("other.cdb"), "precious");
    const auto expect_refused = [&](const char* dir, const char* name) {
        ExpectError(Num::GetDBOverwriteError(), "CVLDBEngine:SaveDB Method",
                    "DataBase Cannot Be Saved!\r\nCause: Another DataBase With Same Name Was "
                    "Detected And Cannot Be Overwritten!",
                    [&] { engine_.SaveDB(dir, name); });
        EXPECT_EQ(Contents(File("other.cdb")), "precious");
    };
    expect_refused("", "other");
    expect_refused(FolderPath().c_str(), "other.cdb");
    EXPECT_EQ(engine_.DBName(), "shop.cdb");
    engine_.DBName("other.cdb");  // whatever the host writes there
    expect_refused("", "");
    engine_.DBName("shop.cdb");
    ActWith(ToRead);
    expect_refused("", "other");  // asked before the right is
    EXPECT_EQ(ErrorNumber([&] { engine_.SaveDB({}, "third"); }), Num::GetUserPermissionToRWError());
    EXPECT_EQ(engine_.DBName(), "shop.cdb");
    ActWith(ToReadWrite);
    EXPECT_TRUE(engine_.SaveDB(FolderPath() + "\\", "third", "ignored"));
    EXPECT_TRUE(engine_.PasswordCorrect("secret"));
    EXPECT_EQ(engine_.DBName(), "third.cdb");
    ActWith(Ownership);
    EXPECT_TRUE(engine_.SaveDB({}, "THIRD", "taken"));  // the same name: its own file
    EXPECT_TRUE(engine_.PasswordCorrect("taken"));
    expect_refused("", "shop");
    // A name that no disk takes: of what cannot be looked at nobody knows that it is not there.
    const std::string endless(300, 'n');
    const auto tables = engine_.CVLTableSet();
    const auto files = std::distance(std::filesystem::directory_iterator(folder_.path()), {});
    ExpectError(kBadFileName, "CVLDBEngine:SaveDB Method", "Bad filename or number",
                [&] { engine_.SaveDB({}, endless, "never"); });
    EXPECT_EQ(ErrorNumber([&] { engine_.CreateNewDB(endless, FolderPath()); }),
              Num::GetNewDBCreationError());
    EXPECT_EQ(engine_.CVLTableSet(), tables);
    EXPECT_EQ(engine_.DBName(), "third.cdb");
    EXPECT_TRUE(engine_.PasswordCorrect("taken") && engine_.SaveDB());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), files);
}

TEST_F(LifecycleTest, WhatCannotBeLoadedLeavesTheOpenDatabaseUsable) {
    const std::string good = Contents(file_);
    const std::string bad = File("bad.cdb");
    engine_.TransactionBegin();
    const auto tables = engine_.CVLTableSet();
    const std::string report = engine_.LogReport();
    WriteContents(bad, good);
    std::string detail;
    const auto expect_unreadable = [&](const std::string& what) {
        ExpectError(Num::GetDBNotSetError(), "CVLDBEngine:loadDB Method",
                    "DataBase Cannot Be Read!\r\nCause: DataBase Might Be Empty!", [&] {
                        SCOPED_TRACE(what);
                        try {
                            engine_.LoadDB(bad);
                            ADD_FAILURE() << "loaded";
                        } catch (const Error& error) {
                            detail = error.detail();
                            throw;
                        }
                    });
        EXPECT_EQ(engine_.CVLTableSet(), tables) << what;
    };
    // In place, which takes the least time. Closed each time: who writes may keep readers out.
    const std::filesystem::path path = folder_.path() / "bad.cdb";
    const auto put = [&](std::size_t at, int byte) {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(at)).put(static_cast<char>(byte));
    };
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (const int bits : {1 << at % 8, 0xFF}) {
            put(at, good[at] ^ bits);
            expect_unreadable("byte " + std::to_string(at) + " changed");
        }
        put(at, good[at]);
    }
    put(12 + 8, 2);  // the format's version
    expect_unreadable("a later version");
    EXPECT_NE(detail.find("version"), std::string::npos) << detail;
    put(12 + 8, good[12 + 8]);
    for (std::size_t size = good.size(); size-- > 0;) {
        std::filesystem::resize_file(path, size);
        expect_unreadable("cut to " + std::to_string(size));
    }
    for (const auto& foreign : {std::string("ID,Name\r\n1,Ann\r\n"), Contents(File("RDX.dat"))}) {
        WriteContents(bad, foreign);
        expect_unreadable("a foreign file");
    }
    ExpectError(Num::GetDBNotFoundError(), "CVLDBEngine:loadDB Method",
                "DataBase Cannot Be Read!\r\nCause: DataBase Does Not Exist!",
                [&] { engine_.LoadDB(File("none.cdb")); });
    ExpectError(Num::GetDBNotSetError(), "CVLDBEngine:GetDB Method",
                "DataBase Cannot Be Read!\r\nCause: DataBase Might Be Empty!",
                [&] { engine_.GetDB(File("none.cdb")); });
    EXPECT_TRUE(engine_.TransactionStarted());
    EXPECT_EQ(engine_.LogReport(), report);
    EXPECT_EQ(engine_.DBName(), "shop.cdb");
    EXPECT_EQ(StateOf(engine_), Ownership);
    engine_.AddRecord("T", 1, {"2"});
    EXPECT_TRUE(engine_.TransactionCommit());
    EXPECT_EQ(Summary(file_), "ann: 1 2");
}

TEST_F(LifecycleTest, NoRightIsCarriedIntoAnotherDatabase) {
    const std::string read = MakeBobs(false, false);
    const std::string write = MakeBobs(true, false);
    const std::string remove = MakeBobs(true, true);
    const std::string off = MakeBobs(true, true, true);
    struct Case {
        std::string path;
        PermitStateEnum before;
        PermitStateEnum after;
    };
    const Case cases[] = {
        {read, Ownership, ToRead},     {write, Ownership, ToReadWrite},
        {remove, Ownership, ToDelete}, {read, Undefined, Undefined},
        {off, Ownership, Undefined},   {file_, Undefined, Undefined},
        {file_, Ownership, Ownership},
    };
    for (const Case& test : cases) {
        engine_.LoadDB(file_);
        engine_.LogedOnUser(owner_);
        if (test.before == Ownership) engine_.DBLegalUser(owner_, Ownership);
        engine_.LoadDB(test.path);
        EXPECT_EQ(StateOf(engine_), test.after) << test.path;
    }
    engine_.LoadDB(file_);
    ActWith(ToDelete);
    engine_.LoadDB(read);  // which does not know the deleter
    EXPECT_EQ(StateOf(engine_), Undefined);
    engine_.LogOn("bob", "b");
    engine_.DBLegalUser(engine_.LogedOnUser(), Ownership);
    engine_.CVLDBOwnerSet()->Remove("bob");
    engine_.CVLDBOwnerSet()->OnDBOwnerAdd.Connect(
        [&](const auto&) { engine_.LogedOnUser(engine_.LogedOnUser()); });
    engine_.LoadDB(read);  // in whose middle he loses what he had
    EXPECT_EQ(StateOf(engine_), Undefined);
    EXPECT_EQ(StateOf(*engine_.GetDB(file_)), Undefined);
}

TEST_F(LifecycleTest, OnlyTheOwnerDeletes) {
    const std::string bobs = MakeBobs(true, true);
    const std::string registry = Contents(File("RDX.dat"));
    EXPECT_EQ(ErrorNumber([&] { engine_.DeleteDB(bobs); }), Num::GetUserIsNotDBOwnerError());
    EXPECT_TRUE(There("bobs6.cdb") && There("bobs6.log"));
    EXPECT_EQ(Contents(File("RDX.dat")), registry);
    std::string event;
    engine_.OnDBDeletion.Connect([&](const auto& path, Date date, const auto& user) {
        event = path + " " + GeneralDate(date) + " " + user;
    });
    EXPECT_TRUE(engine_.DeleteDB(file_));
    EXPECT_EQ(event, file_ + " 11/15/2026 ann");
    EXPECT_FALSE(There("shop.cdb") || There("shop.log"));
    EXPECT_TRUE(engine_.LogReport().ends_with("DataBase " + file_ + " Deleted By ann\r\n"));
    // It stays open, as never saved.
    EXPECT_EQ(engine_.GetTable("T")->Count(), 1);
    WriteContents(file_, "another's");
    EXPECT_EQ(ErrorNumber([&] { engine_.SaveDB(); }), Num::GetDBOverwriteError());
    FileSystem::Current().Delete(file_);
    EXPECT_TRUE(engine_.SaveDB());
    FileSystem::Current().Delete(File("shop.log"));
    EXPECT_TRUE(engine_.DeleteDB(file_));  // without a log
}

TEST_F(LifecycleTest, TheOwnerHandsTheDatabaseOver) {
    std::string event;
    engine_.OnOwnerChange.Connect([&](const auto& name) { event += name + " "; });
    engine_.CreateNewUser("bob", "b", true, false, false, "Bob");
    EXPECT_TRUE(engine_.ChangeOwner("bob"));
    EXPECT_EQ(engine_.DBOwner(), "bob");
    const auto bob = engine_.GetUser("bob", "b");  // his password, name and texts stayed
    EXPECT_EQ(bob->UserFullName(), "Bob");
    EXPECT_TRUE(bob->CanRead() && bob->CanReadWrite() && bob->CanDelete());
    EXPECT_EQ(StateOf(engine_), ToDelete);  // what ann still has
    engine_.LogedOnUser(bob);
    EXPECT_TRUE(engine_.ChangeOwner("bob", "new"));  // to himself
    EXPECT_TRUE(engine_.GetUser("bob", "new")->CanDelete());
    EXPECT_TRUE(engine_.ChangeOwner());
    const auto nobody = engine_.GetUser("Public", "");
    EXPECT_EQ(nobody->UserFullName() + "/" + nobody->UserDescription(),
              "Public Owner/Public Owns This DataBase");
    EXPECT_EQ(event, "bob bob Public ");
    EXPECT_TRUE(engine_.LogReport().ends_with(
        "OwnerShip Of DataBase shop.cdb Has Been Changed From bob To Public\r\n"));
    EXPECT_EQ(Summary(file_), "ann: 1");  // on disk with the next save only
}

}  // namespace
}  // namespace tavolin
