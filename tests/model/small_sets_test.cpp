// Attachments, notes, and the owners in the registry.
#include "tavolin/base/clock.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/model/owner_db_set.h"
#include "tavolin/model/owner_set.h"
#include "tavolin/model/user_note_set.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/persist/paths.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

struct AttachmentSetTest : EngineTest {
    CVLAttachmentSet set_;
};

TEST_F(AttachmentSetTest, AddsUpdatesAndRemoves) {
    ExpectNoEnds("CVLAttachmentSet", "Attachment Not Found Error ", N::GetFirstAttachmentError(),
                 {[&] { set_.FirstAttachment(); }, [&] { set_.LastAttachment(); },
                  [&] { set_.PreviousAttachment(1); }, [&] { set_.NextAttachment(0); }});
    std::string events;
    set_.OnAttachmentAdd.Connect([&](const std::string& path) { events += "+" + path; });
    set_.OnAttachmentRemove.Connect([&](const auto& gone) { events += "-" + gone->Key(); });
    const auto map = set_.Add("Map", 7, "m.png", aPicture);
    map->OnPathChange.Connect([&](const std::string& path) { events += "=" + path; });
    EXPECT_EQ(set_.Item("mAP"), map);
    EXPECT_EQ(map->nKey(), 7);
    ExpectError(N::GetAttachmentAddError(), "CVLAttachmentSet:Add Method",
                "The Attachment That Is Being Added Already Exists In DataBase!",
                [&] { set_.Add("map", 1, "x", aMovie); });
    EXPECT_EQ(set_.Update(1, "n.wav", aSound), map);
    EXPECT_EQ(map->attachmentPathName(), "n.wav");
    EXPECT_EQ(map->SpecificType(), aSound);
    ExpectError(N::GetAttachmentUpDateError(), "CVLAttachmentSet:Update Method",
                "Attachment Does Not Exist!", [&] { set_.Update("1", "x", aSound); });
    ExpectError(N::GetAttachmentNotFoundError(), "CVLAttachmentSet:Item Property Get",
                "Record's Attachment Not Found!", [&] { set_.Item("1"); });
    set_.Remove("MAP");
    EXPECT_EQ(set_.Count(), 0);
    EXPECT_EQ(events, "+m.png=n.wav-Map");
}

struct UserNoteSetTest : EngineTest {
    const std::string first_ = "11/15/2026 1:05:00 AM";
    const Date date_ = MakeDate(2026, 11, 15, 1, 5);
    CVLUserNoteSet set_;
};

TEST_F(UserNoteSetTest, AddsUpdatesRemovesAndWalks) {
    std::string events;
    set_.OnNoteAdd.Connect([&](const auto& note) { events += "+" + note->Note(); });
    set_.OnNoteRemove.Connect(
        [&](const auto& note) { events += "-" + note->Note() + std::to_string(set_.Count()); });
    ExpectNoEnds("CVLUserNoteSet", "Note Not Found Error!", N::GetFirstNoteError(),
                 {[&] { set_.FirstNote(); }, [&] { set_.LastNote(); },
                  [&] { set_.PreviousNote(1); }, [&] { set_.NextNote(0); }});
    const auto note = set_.Add(date_, 7, "one");
    const auto second = set_.Add(MakeDate(2020, 1, 1), 7, "two");
    EXPECT_EQ(set_.Item("11/15/2026 1:05:00 am"), note);
    EXPECT_EQ(note->dateKey + second->dateKey, first_ + "1/1/2020");
    EXPECT_TRUE(set_.PreviousNote(2) == note && set_.NextNote(1) == second);
    EXPECT_TRUE(set_.PreviousNoteIsAvailable(2) && set_.NextNoteIsAvailable(1));
    EXPECT_FALSE(set_.PreviousNoteIsAvailable(1) || set_.NextNoteIsAvailable(2));
    ExpectError(N::GetNoteAddError(), "CVLUserNoteSet:Add Method",
                "The Note That Is Being Added Already Exists In DataBase!",
                [&] { set_.Add(date_, 8, "again"); });
    for (const Date& date : {MakeDate(99, 12, 31), MakeDate(10000, 1, 1)})
        EXPECT_EQ(ErrorNumber([&] { set_.Add(date, 1, "x"); }), kInvalidCall);
    EXPECT_EQ(set_.Update(2, "changed"), second);
    set_.Remove("1/1/2020");
    EXPECT_EQ(events, "+one+two-changed1");
    for (const IndexKey& missing : {IndexKey("1"), IndexKey(0), IndexKey(2)}) {
        ExpectError(N::GetNoteUpDateError(), "CVLUserNoteSet:Update Method", "Note Does Not Exist!",
                    [&] { set_.Update(missing, "x"); });
        ExpectError(N::GetNoteNotFoundError(), "CVLUserNoteSet:Item Property Get",
                    "User Note Not Found!", [&] { set_.Item(missing); });
        ExpectError(N::GetNoteNotFoundError(), "CVLUserNoteSet:Remove Method",
                    "User's Note Not Found!", [&] { set_.Remove(missing); });
    }
}

TEST_F(UserNoteSetTest, FollowsTheRightsOfItsUsersDatabase) {
    CVLDBEngine other;  // the current one, in which nobody has a right
    std::vector<std::shared_ptr<CVLUserNoteSet>> sets = {owner_->CVLUserNoteSet()};
    for (int i = 0; i < 3; ++i) sets.push_back(std::make_shared<CVLUserNoteSet>());
    const auto users = engine_.CVLDBUserSet();
    users->Add("bob", "", true, true, true, sets[1]);
    users->Update("ann", {}, {}, {}, sets[2]);
    users->Add("cid", "", true, true, true)->CVLUserNoteSet(sets[3]);
    for (const auto& set : sets) EXPECT_NO_THROW(set->Add(date_, 1, "x"));
    engine_.SaveDB();
    engine_.LoadDB(folder_ / "shop.cdb");
    for (const auto& set : sets)
        EXPECT_EQ(ErrorNumber([&] { set->Item(1); }), N::GetUserPermissionToRdError());
    for (const auto& user : engine_.CVLDBUserSet()->NewEnum())
        EXPECT_EQ(user->CVLUserNoteSet()->Item(first_)->Note(), "x") << user->UserName();
}

struct OwnerSetTest : testing::Test {
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
