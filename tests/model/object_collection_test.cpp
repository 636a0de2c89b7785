#include "tavolin/model/object_collection.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tavolin {
namespace {

struct Thing {
    explicit Thing(std::string text) : name(std::move(text)) {}
    std::string name;
};
using Things = ObjectCollection<Thing>;

std::shared_ptr<Thing> Make(std::string name) { return std::make_shared<Thing>(std::move(name)); }

std::shared_ptr<Things> Fill(std::initializer_list<const char*> names) {
    auto things = std::make_shared<Things>();
    for (const char* name : names) things->Add(name, Make(name));
    return things;
}

std::string Text(const Things& things) {
    std::string text;
    for (const auto& thing : things) text += (text.empty() ? "" : " ") + thing->name;
    return text;
}

template <class Body>
std::int32_t NumberOf(Body&& body) {
    try {
        body();
    } catch (const Error& error) {
        return error.number();
    }
    return 0;
}

TEST(ObjectCollection, ReportsMissesByKeyAndByPositionApart) {
    auto things = Fill({"a", "b", "c"});
    EXPECT_EQ(things->Item(2)->name, "b");
    EXPECT_EQ(things->Item("C")->name, "c");
    EXPECT_EQ(things->Find(4), nullptr);
    EXPECT_EQ(things->Find("4"), nullptr);
    EXPECT_EQ(NumberOf([&] { things->Item("4"); }), kInvalidCall);
    EXPECT_EQ(NumberOf([&] { things->Remove("4"); }), kInvalidCall);
    EXPECT_EQ(NumberOf([&] { things->Rename("4", "5"); }), kInvalidCall);
    for (int position : {-1, 0, 4}) {
        EXPECT_EQ(NumberOf([&] { things->Item(position); }), kSubscriptOutOfRange);
        EXPECT_EQ(NumberOf([&] { things->Remove(position); }), kSubscriptOutOfRange);
    }
    EXPECT_EQ(things->Remove("B")->name, "b");
    EXPECT_EQ(things->Remove(2)->name, "c");
    EXPECT_EQ(Text(*things), "a");
}

TEST(ObjectCollection, AddsWholeOrNotAtAll) {
    auto things = Fill({"a"});
    const auto refused = Make("x");
    EXPECT_EQ(NumberOf([&] { things->Add("A", refused); }), kDuplicateKey);
    EXPECT_EQ(NumberOf([&] { things->Add("x", refused, {.before = 9}); }), kInvalidCall);
    EXPECT_EQ(NumberOf([&] { things->Add("x", nullptr); }), kObjectNotSet);
    EXPECT_EQ(refused.use_count(), 1);
    EXPECT_EQ(things->PositionOf(refused.get()), 0);
    EXPECT_EQ(NumberOf([&] { things->KeyOf(refused.get()); }), kInvalidCall);
    // A placement may look at a key inside the collection, whose home moves meanwhile.
    for (int i = 0; i < 100; ++i) {
        const std::string& first = things->KeyOf(things->Item(1).get());
        things->Add(std::to_string(i), Make("n"), {.before = first});
        things->Rename(std::to_string(i), "n" + std::to_string(i));
    }
    EXPECT_EQ(things->KeyOf(things->Item(1).get()), "n99");
    EXPECT_EQ(things->Count(), 101);
}

TEST(ObjectCollection, KnowsItsObjects) {
    auto things = Fill({"a", "b"});
    const auto plain = Make("plain");
    things->AddKeyless(plain, {.before = 2});
    EXPECT_EQ(things->KeyOf(plain.get()), "");
    EXPECT_FALSE(things->Contains(""));
    EXPECT_EQ(things->PositionOf(plain.get()), 2);
    const auto b = things->Item("b");
    things->Add("twice", b);
    things->Remove("b");
    EXPECT_EQ(things->KeyOf(b.get()), "twice");
    EXPECT_EQ(Text(*things), "a plain b");
}

TEST(ObjectCollection, RenamesInPlace) {
    auto things = Fill({"a", "b", "c"});
    const auto b = things->Item("b");
    things->Rename("B", "B");
    EXPECT_EQ(things->KeyOf(b.get()), "B");
    EXPECT_EQ(NumberOf([&] { things->Rename("b", "C"); }), kDuplicateKey);
    EXPECT_EQ(things->KeyOf(b.get()), "B");
    things->Rename("b", "new");
    EXPECT_FALSE(things->Contains("b"));
    EXPECT_EQ(things->Item("NEW"), things->Item(2));
    things->Add("b", Make("other"));
    EXPECT_EQ(Text(*things), "a b c other");
}

// An element's end may reach back into its collection.
TEST(ObjectCollection, IsWholeWhenElementsAreDestroyed) {
    struct Witness {
        ObjectCollection<Witness>* home;
        std::vector<std::int32_t>* counts;
        Witness(ObjectCollection<Witness>* of, std::vector<std::int32_t>* list)
            : home(of), counts(list) {}
        ~Witness() {
            counts->push_back(home->Count());
            if (home->Find(1) != nullptr) counts->push_back(home->PositionOf(home->Item(1).get()));
        }
    };
    std::vector<std::int32_t> counts;
    ObjectCollection<Witness> home;
    for (const char* key : {"a", "b", "c"}) {
        home.Add(key, std::make_shared<Witness>(&home, &counts));
    }
    home.Remove("a");
    home.Clear();
    EXPECT_EQ(counts, (std::vector<std::int32_t>{2, 1, 0, 0}));
}

TEST(Enumerator, SurvivesChanges) {
    auto things = Fill({"a", "b", "c", "d"});
    std::string seen;
    for (const auto& thing : Enumerator<Thing>(things)) {
        seen += thing->name;
        things->Remove(thing->name);
        if (thing->name == "b") things->Add("e", Make("e"), {.before = "d"});
    }
    EXPECT_EQ(seen, "abced");
    EXPECT_EQ(things->Count(), 0);

    things = Fill({"a", "b", "c"});
    seen.clear();
    things->ForEach([&](const std::shared_ptr<Thing>& thing) {
        things->Remove(1);
        seen += thing->name;
    });
    EXPECT_EQ(seen, "abc");
}

TEST(Enumerator, KeepsTheCollectionItWasMadeOn) {
    auto things = Fill({"a", "b"});
    Enumerator<Thing> walk(things);
    EXPECT_EQ(walk.Next()->name, "a");
    things = Fill({"x", "y"});
    Enumerator<Thing> moved = std::move(walk);
    EXPECT_EQ(moved.Next()->name, "b");
    EXPECT_EQ(moved.Next(), nullptr);
    moved.Reset();
    EXPECT_EQ(moved.Next()->name, "a");
    moved = Enumerator<Thing>(things);
    EXPECT_EQ(moved.Next()->name, "x");
    EXPECT_EQ(Enumerator<Thing>(nullptr).Next(), nullptr);
}

}  // namespace
}  // namespace tavolin
