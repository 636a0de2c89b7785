#include "tavolin/model/user_set.h"

#include "tavolin/base/clock.h"
#include "tavolin/model/user_note_set.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

struct UserSetTest : EngineTest {
    std::string Names() const {
        std::string names;
        for (const auto& user : users_->NewEnum()) names += user->UserName() + " ";
        return names;
    }
    std::shared_ptr<CVLDBUserSet> users_ = engine_.CVLDBUserSet();
};

TEST_F(UserSetTest, KeepsNamesApartAndTellsWhatHappens) {
    std::string events;
    users_->OnUserAdd.Connect([&](const auto& user) {
        events += "+" + user->UserName() + std::to_string(users_->Count());
        user->OnUserDisable.Connect([&](const std::string& name) { events += " off " + name; });
        user->OnUserEnable.Connect([&](const std::string& name) { events += " on " + name; });
    });
    users_->OnUserRemove.Connect([&](const auto& user) {
        events += " -" + user->UserName() + std::to_string(users_->Count());
    });
    const auto bob = users_->Add("Bob", "pw", true, false, false);
    EXPECT_EQ(users_->Item("bOB"), bob);
    EXPECT_EQ(bob->Key(), "Bob");
    ExpectError(N::GetUserAddError(), "CVLDBUserSet:Add Method",
                "The User That Is Being Added Already Exists In DataBase!",
                [&] { users_->Add("BOB", "other", true, true, true); });
    ExpectError(N::GetUserNotFoundError(), "CVLDBUserSet:Item Property Get", "User Not Found!",
                [&] { users_->Item("2"); });
    ExpectError(N::GetUserUpDateError(), "CVLDBUserSet:Update Method", "User Does Not Exist!",
                [&] { users_->Update("2", true); });
    for (const bool off : {true, true, false, false}) bob->UserDisabled(off);
    EXPECT_EQ(Names(), "ann Bob ");
    users_->Remove("BOB");
    EXPECT_EQ(events, "+Bob2 off Bob on Bob -Bob1");
    users_->Add("x", "", true, true, true);
    const auto x = users_->Update("x", {}, false);  // what it leaves out stays
    EXPECT_TRUE(x->CanRead() && !x->CanReadWrite() && x->CanDelete());
    const CVLDBUserSet empty;
    ExpectNoEnds("CVLDBUserSet", "User Not Found Error ", N::GetFirstUserError(),
                 {[&] { empty.FirstUser(); }, [&] { empty.LastUser(); },
                  [&] { empty.PreviousUser(2); }, [&] { empty.NextUser(0); }});
}

TEST_F(UserSetTest, RenamesInPlaceAndTheOwnerWithIt) {
    users_->Add("bob", "", true, false, false);
    ExpectError(N::GetUserAddError(), "CVLDBUser:UserName Property Let",
                "The User That Is Being Added Already Exists In DataBase!",
                [&] { owner_->UserName("BOB"); });
    EXPECT_EQ(engine_.DBOwner(), "ann");
    owner_->UserName("Anna");
    EXPECT_EQ(engine_.DBOwner(), "Anna");
    EXPECT_EQ(users_->Item("anna"), owner_);
    EXPECT_TRUE(users_->CanAdd("ann"));
    const auto bob = users_->Item("bob");
    users_->Remove("bob");
    bob->UserName("anna");  // a user of no set has nobody to collide with
    EXPECT_EQ(Names(), "Anna ");
}

TEST_F(UserSetTest, ComparesPasswords) {
    const auto user = users_->Add("ab", "C\xC3\x89", true, false, false);
    const auto joined = users_->Add("a", "BC\xC3\xA9", true, false, false);
    EXPECT_TRUE(user->PasswordCorrect("c\xC3\xA9"));
    EXPECT_FALSE(user->PasswordCorrect("c"));
    EXPECT_TRUE(user->Equals(joined));
    EXPECT_FALSE(user->Equals(owner_));
    // Whoever knows the password is the one who is refused.
    std::string events;
    user->OnPasswordChange.Connect([&](const std::string& name) { events += name; });
    ExpectError(N::GetUserPasswordChangeError(), "CVLDBUser:ChangePassword Method",
                "You Are Not Authorized To Change User Password!",
                [&] { user->ChangePassword("c\xC3\xA9", "new"); });
    EXPECT_TRUE(user->ChangePassword("wrong", "new"));
    EXPECT_TRUE(user->PasswordCorrect("NEW"));
    EXPECT_EQ(events, "ab");
}

TEST_F(UserSetTest, ComesBackFromItsState) {
    const auto notes = std::make_shared<CVLUserNoteSet>();
    notes->Add(MakeDate(2024, 12, 31, 23, 59, 59), -7, "caf\xC3\xA9");
    notes->Add(MakeDate(2020, 1, 1), 2, "")->dateKey = "12/31/2024 11:59:59 pm";  // collides
    notes->ObjectState(notes->ObjectState());
    const auto bob =
        users_->Add("bob", "Pass\xE2\x82\xAC\xF0\x9F\x98\x80", true, false, true, notes);
    bob->UserFullName("Bob \xC3\x89");
    bob->UserDisabled(true);
    users_->Add("cid", "", false, true, false)->Key("free text");
    const auto state = users_->ObjectState();
    EXPECT_EQ(std::string(state.begin(), state.end()).find("Pass"), std::string::npos);

    CVLDBUserSet loaded;
    loaded.Add("gone", "", true, true, true);
    loaded.ObjectState(state);
    ASSERT_EQ(loaded.Count(), 3);
    EXPECT_EQ(loaded.Item(3)->UserName() + loaded.Item(3)->Key(), "cidfree text");
    EXPECT_TRUE(!loaded.Item(3)->CanRead() && loaded.Item(3)->CanReadWrite());
    const auto again = loaded.Item("BOB");
    EXPECT_TRUE(again->Equals(bob));
    EXPECT_EQ(again->UserFullName(), "Bob \xC3\x89");
    EXPECT_TRUE(again->UserDisabled() && again->CanRead() && again->CanDelete());
    const auto note = again->CVLUserNoteSet()->NewEnum().Next();
    ASSERT_NE(note, nullptr);
    EXPECT_EQ(note->dateKey + note->Note(), "12/31/2024 11:59:59 PMcaf\xC3\xA9");
    EXPECT_EQ(note->nKey, -7);
    EXPECT_EQ(again->CVLUserNoteSet()->Count(), 2);
    EXPECT_EQ(loaded.ObjectState(), state);
    ExpectDamageRefused(state, [&](const auto& damaged) { loaded.ObjectState(damaged); });
    EXPECT_EQ(loaded.Item("bob"), again);
    again->UserName("dora");  // still a user of this set
    EXPECT_EQ(loaded.Item(2), loaded.Item("dora"));
}

}  // namespace
}  // namespace tavolin
