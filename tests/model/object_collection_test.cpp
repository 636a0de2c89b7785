#include "tavolin/model/object_collection.h"

#include "tests/support/expect_error.h"

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

TEST(ObjectCollection, AddsWholeOrNotAtAll) {
    auto things = Fill({"a"});
    const auto refused = Make("x");
    EXPECT_EQ(ErrorNumber([&] { things->Add("A", refused); }), kDuplicateKey);
    EXPECT_EQ(ErrorNumber([&] { things->Add("x", refused, {.before = 9}); }), kInvalidCall);
    EXPECT_EQ(ErrorNumber([&] { things->Add("x", nullptr); }), kObjectNotSet);
    EXPECT_EQ(refused.use_count(), 1);
    EXPECT_EQ(things->PositionOf(refused.get()), 0);
    EXPECT_EQ(ErrorNumber([&] { things->KeyOf(refused.get()); }), kInvalidCall);
    // A placement may look at a key inside the collection, whose home moves meanwhile.
    for (int i = 0; i < 100; ++i) {
        const std::string& first = things->KeyOf(things->Item(1).get());
        things->Add(std::to_string(i), Make("n"), {.before = first});
        things->Rename(std::to_string(i), "n" + std::to_string(i));
    }
    EXPECT_EQ(things->KeyOf(things->Item(1).get()), "n99");
    EXPECT_EQ(things->Count(), 101);
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

}  // namespace
}  // namespace tavolin
