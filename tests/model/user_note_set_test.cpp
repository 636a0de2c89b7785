#include "tavolin/model/user_note_set.h"

#include "tavolin/base/clock.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

using N = CVLErrorNum;

class UserNoteSetTest : public EngineTest {
  protected:
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

// The owner of one database has no say over the notes in another, nor over those in one that is
// not open any more.
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

}  // namespace
}  // namespace tavolin
