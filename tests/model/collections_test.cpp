// The collections that everything is kept in.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tavolin/model/object_collection.h"
#include "tavolin/model/order_list.h"
#include "tavolin/model/value_counts.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

// A list with the leaves of its elements, beside the plain vector that it has to equal.
struct Pair {
    OrderList list;
    std::vector<std::uint32_t> model;
    std::vector<std::uint32_t> leaves;
    std::uint64_t told = 0;

    auto Setter() {
        return [this](std::uint32_t handle, std::uint32_t leaf) {
            if (handle >= leaves.size()) leaves.resize(handle + 1);
            leaves[handle] = leaf;
            ++told;
        };
    }
    void Insert(std::size_t index, std::uint32_t handle) {
        list.InsertAt(static_cast<std::uint32_t>(index + 1), handle, Setter());
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(index), handle);
    }
    void Remove(std::size_t index, bool by_handle) {
        const std::uint32_t handle = model[index];
        if (by_handle) {
            EXPECT_TRUE(list.Remove(handle, leaves[handle], Setter()));
        } else {
            EXPECT_EQ(list.RemoveAt(static_cast<std::uint32_t>(index + 1), Setter()), handle);
        }
        model.erase(model.begin() + static_cast<std::ptrdiff_t>(index));
        // Seldom, because who asks has the holes closed that others have left.
        if (model.empty() || handle % 32 > 1) return;
        const std::size_t other = std::min(index, model.size() - 1);
        if (handle % 32 == 0) {
            EXPECT_EQ(list.PositionOf(model[other], leaves[model[other]]), other + 1);
            EXPECT_EQ(list.PositionOf(handle, leaves[handle]), 0u);
        } else {
            EXPECT_EQ(list.At(static_cast<std::uint32_t>(other + 1)), model[other]);
        }
    }
    void Check() const {
        ASSERT_EQ(list.size(), model.size());
        std::vector<std::uint32_t> walked;
        list.ForEach([&](std::uint32_t handle) { walked.push_back(handle); });
        ASSERT_EQ(walked, model);
        for (std::uint32_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(list.At(i + 1), model[i]) << i;
            ASSERT_EQ(list.PositionOf(model[i], leaves[model[i]]), i + 1) << i;
        }
        EXPECT_EQ(list.At(0), kNoHandle);
        EXPECT_EQ(list.At(list.size() + 1), kNoHandle);
    }
};

// Where the next insertion or removal falls: at random, at the front, at the end, or in one spot.
std::size_t Aim(int habit, std::size_t places, std::mt19937& random) {
    const std::size_t aims[] = {0, places - 1, places / 2, random() % places};
    return aims[habit];
}

TEST(OrderList, EqualsAVectorUnderRandomEdits) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    Pair pair;
    std::uint32_t next = 0;
    for (int phase = 0; phase < 60; ++phase) {
        const int habit = static_cast<int>(random() % 4);
        const unsigned inserts = random() % 100;
        for (unsigned steps = random() % 2500; steps > 0; --steps) {
            if (pair.model.empty() || random() % 100 < inserts) {
                pair.Insert(Aim(habit, pair.model.size() + 1, random), next++);
            } else {
                pair.Remove(Aim(habit, pair.model.size(), random), random() % 2 == 0);
            }
        }
        ASSERT_NO_FATAL_FAILURE(pair.Check()) << "phase " << phase;
        if (phase % 20 == 19) {
            std::shuffle(pair.model.begin(), pair.model.end(), random);
            pair.list.Assign(pair.model, pair.Setter());
            ASSERT_NO_FATAL_FAILURE(pair.Check());
        }
    }
    while (!pair.model.empty()) pair.Remove(random() % pair.model.size(), true);
    pair.Insert(0, next);
    pair.Check();
}

// Neither may moving between chunks grow quadratically, nor half-empty chunks stay behind.
TEST(OrderList, MovesFewElementsAndStaysSmall) {
    constexpr std::uint32_t kCount = 100'000;
    for (int habit = 0; habit < 4; ++habit) {
        SCOPED_TRACE(habit);
        std::mt19937 random(1);
        OrderList list;
        std::uint64_t told = 0;
        const auto count = [&](std::uint32_t, std::uint32_t) { ++told; };
        for (std::uint32_t i = 0; i < kCount; ++i) {
            list.InsertAt(static_cast<std::uint32_t>(Aim(habit, i + 1, random) + 1), i, count);
            EXPECT_TRUE(i > 0 || list.memory() <= 64);
        }
        EXPECT_LE(list.memory(), kCount * (habit < 2 ? 5u : 9u));
        for (std::uint32_t i = kCount; i > 0; --i) {
            list.RemoveAt(static_cast<std::uint32_t>(Aim(habit, i, random) + 1), count);
            EXPECT_TRUE(i != kCount / 100 || list.memory() <= 100'000u) << list.memory();
        }
        EXPECT_LE(told, 4 * kCount);
        EXPECT_TRUE(list.empty());
        list.Clear();
        EXPECT_EQ(list.memory(), 0u);
    }
}

// The model holds a marker where the cursor stands; what comes next behind it is what Next gives.
TEST(OrderCursor, WalksThroughChanges) {
    constexpr std::uint32_t kMarker = 0xFFFFFFFEu;
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (std::uint32_t size : {1u, 5u, OrderList::kChunkSize, 4000u}) {
        Pair pair;
        std::uint32_t next = 0;
        while (next < size + 3) pair.Insert(random() % (pair.model.size() + 1), next++);
        while (pair.model.size() > size) pair.Remove(random() % pair.model.size(), true);
        OrderCursor cursor(pair.list);
        std::vector<std::uint32_t> marked = pair.model;
        marked.insert(marked.begin(), kMarker);
        for (int step = 0; step < 6000; ++step) {
            auto marker = std::find(marked.begin(), marked.end(), kMarker);
            if (random() % 2 == 0) {
                const bool at_end = marker + 1 == marked.end();
                ASSERT_EQ(cursor.Next(), at_end ? kNoHandle : marker[1]) << step;
                if (!at_end) std::swap(marker[0], marker[1]);
                continue;
            }
            // Often near the cursor, where mistakes would show.
            const auto place = static_cast<std::size_t>(marker - marked.begin());
            const std::size_t near = random() % 3 > 0 ? std::max<std::size_t>(place, 1) - 1
                                                      : random() % (pair.model.size() + 1);
            if (random() % 3 == 0 || near >= pair.model.size()) {
                pair.Insert(near, next);
                const std::size_t behind = near >= place ? 1 : 0;
                marked.insert(marked.begin() + static_cast<std::ptrdiff_t>(near + behind), next++);
            } else {
                std::erase(marked, pair.model[near]);
                pair.Remove(near, true);
            }
        }
    }
}

TEST(OrderCursor, OutlivesClearingAndTheList) {
    auto pair = std::make_unique<Pair>();
    for (std::uint32_t i = 0; i < 10; ++i) pair->Insert(i, i);
    OrderCursor first(pair->list);
    first.Next();
    OrderCursor copy = first;
    EXPECT_EQ(copy.Next(), 1u);
    EXPECT_EQ(first.Next(), 1u);
    {
        OrderCursor brief(pair->list);
        first = brief;
        EXPECT_EQ(first.Next(), 0u);
    }
    pair->list.Clear();
    EXPECT_EQ(first.Next(), kNoHandle);
    pair->list.Append(7, pair->Setter());
    EXPECT_EQ(first.Next(), 7u);
    EXPECT_EQ(first.Next(), kNoHandle);
    first.Reset();
    EXPECT_EQ(first.Next(), 7u);
    pair.reset();
    EXPECT_EQ(copy.Next(), kNoHandle);
    copy.Reset();
    EXPECT_EQ(copy.Next(), kNoHandle);
}

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
}

// Few and many different values, that come and go: slots move up, tables grow, texts are dropped.
TEST(ValueCountsTest, AgreesWithAMapUnderRandomChanges) {
    std::mt19937 random(7);
    ValueCounts counts;
    std::map<std::string, std::uint32_t> model;
    EXPECT_EQ(counts.Of(""), 0u);
    const auto name = [](std::size_t i) {
        return i == 0 ? std::string() : "Größe " + std::to_string(i) + std::string(i % 90, '.');
    };
    for (const std::size_t different : {3u, 3000u, 200u, 9000u, 1u}) {
        for (int i = 0; i < 20'000; ++i) {
            const std::string value = name(random() % different);
            if (random() % 2 == 0) {
                counts.Add(value);
                ++model[value];
            } else if (const auto found = model.find(value); found != model.end()) {
                counts.Remove(i % 3 == 0 && !value.empty() ? "GRÖ" + value.substr(4) : value);
                if (--found->second == 0) model.erase(found);
            }
            ASSERT_EQ(counts.Of(value), model.contains(value) ? model[value] : 0u) << value;
        }
        for (std::size_t i = 0; i < 9000; ++i) {
            const auto found = model.find(name(i));
            ASSERT_EQ(counts.Of(name(i)), found == model.end() ? 0u : found->second) << i;
        }
        while (!model.empty() && different == 9000) {
            counts.Remove(model.begin()->first);
            if (--model.begin()->second == 0) model.erase(model.begin());
        }
    }
}

}  // namespace
}  // namespace tavolin
