#include "tavolin/model/attachment_set.h"

#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

using N = CVLErrorNum;

class AttachmentSetTest : public EngineTest {
  protected:
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

TEST_F(AttachmentSetTest, ComesBackFromItsState) {
    set_.Add("a", -1, "caf\xC3\xA9", aMovie);
    set_.Add("b", 2, "", Miscellenius)->Key("A");  // collides when it is filed under it
    const auto state = set_.ObjectState();
    CVLAttachmentSet loaded;
    loaded.Add("gone", 1, "", aSound);
    loaded.ObjectState(state);
    ASSERT_EQ(loaded.Count(), 2);
    const auto first = loaded.Item("a");
    EXPECT_EQ(first->attachmentPathName(), "caf\xC3\xA9");
    EXPECT_EQ(first->nKey(), -1);
    EXPECT_EQ(first->SpecificType(), aMovie);
    EXPECT_EQ(loaded.Item(2)->Key(), "A");
    EXPECT_TRUE(loaded.CanAdd("b"));
    ExpectDamageRefused(state, [&](const auto& damaged) { loaded.ObjectState(damaged); });
    EXPECT_EQ(loaded.Item("a"), first);
}

}  // namespace
}  // namespace tavolin
