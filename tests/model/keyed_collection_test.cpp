#include "tavolin/model/keyed_collection.h"

#include <deque>
#include <optional>
#include <random>

#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

// Elements are texts in a table that the collections share; no key is an element without one.
struct Table {
    std::deque<std::optional<std::string>> keys;
    std::uint32_t Make(std::optional<std::string> key) {
        keys.push_back(std::move(key));
        return static_cast<std::uint32_t>(keys.size() - 1);
    }
};

struct Store {
    explicit Store(Table* of) : table(of) {}
    std::uint32_t Leaf(std::uint32_t handle) const {
        return handle < leaves.size() ? leaves[handle] : kNoHandle;
    }
    void SetLeaf(std::uint32_t handle, std::uint32_t leaf) {
        if (handle >= leaves.size()) leaves.resize(handle + 1, kNoHandle);
        leaves[handle] = leaf;
    }
    bool Keyed(std::uint32_t handle) const { return table->keys[handle].has_value(); }
    std::uint32_t KeyHash(std::uint32_t handle) const { return HashFold(*table->keys[handle]); }
    bool KeyEquals(std::uint32_t handle, std::string_view key) const {
        return EqualFold(*table->keys[handle], key);
    }
    bool SameKey(std::uint32_t a, std::uint32_t b) const { return KeyEquals(a, *table->keys[b]); }
    void DropKey(std::uint32_t handle) { table->keys[handle].reset(); }

    Table* table;
    std::vector<std::uint32_t> leaves;
};

class KeyedCollectionTest : public ::testing::Test {
  protected:
    std::uint32_t Add(std::optional<std::string> key, const Placement& placement = {}) {
        const std::uint32_t handle = table_.Make(std::move(key));
        set_.Add(handle, placement);
        return handle;
    }
    // The keys in order, "-" for an element without one.
    std::string Text() const {
        std::string text;
        set_.ForEach([&](std::uint32_t handle) {
            text += (text.empty() ? "" : " ") + table_.keys[handle].value_or("-");
        });
        return text;
    }
    // Positions, handles and keys must lead to each other.
    void TearDown() override {
        for (std::uint32_t i = 1; i <= set_.size(); ++i) {
            const std::uint32_t handle = set_.At(i);
            EXPECT_EQ(set_.PositionOf(handle), i);
            if (table_.keys[handle]) {
                EXPECT_EQ(set_.Find(*table_.keys[handle]), handle);
            }
        }
    }

    Table table_;
    KeyedCollection<Store> set_{Store(&table_)};
};

TEST_F(KeyedCollectionTest, PlacesElements) {
    struct Case {
        const char* key;
        Placement placement;
        const char* expected;
    };
    const Case cases[] = {
        {"m", {}, "m"},
        {"a", {.before = 1}, "a m"},
        {"z", {.after = "M"}, "a m z"},
        {"b", {.after = 1}, "a b m z"},
        {"y", {.before = "Z"}, "a b m y z"},
        {"end", {.after = 5}, "a b m y z end"},
    };
    for (const Case& c : cases) {
        Add(c.key, c.placement);
        EXPECT_EQ(Text(), c.expected);
    }
    const Placement refused[] = {
        {.before = 1, .after = 2}, {.before = 0},       {.after = 0}, {.before = 7}, {.after = -1},
        {.before = "nobody"},      {.after = "nobody"},
    };
    for (const Placement& placement : refused) {
        // The wrong placement is reported even where the key is a duplicate as well.
        for (const char* key : {"new", "A"}) {
            EXPECT_EQ(ErrorNumber([&] { Add(key, placement); }), kInvalidCall);
        }
    }
    EXPECT_EQ(Text(), "a b m y z end");
    EXPECT_EQ(set_.At(std::int64_t{1} << 32 | 1), kNoHandle);
    EXPECT_EQ(set_.Find(IndexKey(-1)), kNoHandle);
}

TEST_F(KeyedCollectionTest, ChangesKeys) {
    const std::uint32_t ann = Add("Ann");
    const std::uint32_t plain = Add(std::nullopt);
    Add("Bob");
    const auto rename = [&](std::uint32_t handle, std::string key) {
        return ErrorNumber(
            [&] { set_.ChangeKey(handle, key, [&] { table_.keys[handle] = key; }); });
    };
    EXPECT_EQ(rename(ann, "ANN"), 0);
    EXPECT_EQ(rename(ann, "bob"), kDuplicateKey);
    EXPECT_EQ(rename(plain, "BOB"), kDuplicateKey);
    EXPECT_EQ(Text(), "ANN - Bob");
    EXPECT_EQ(rename(plain, "Cid"), 0);
    EXPECT_EQ(rename(ann, "Dora"), 0);
    EXPECT_EQ(set_.Find("ann"), kNoHandle);
    EXPECT_EQ(Text(), "Dora Cid Bob");

    table_.keys[ann].reset();
    set_.Rekey(ann, HashFold("dora"));
    EXPECT_EQ(set_.Find("Dora"), kNoHandle);
    Add("Dora");
}

TEST_F(KeyedCollectionTest, LooksAtAdoptedKeysWhenTheyAreAskedFor) {
    std::vector<std::uint32_t> handles;
    for (const char* key : {"a", "b", "A", "c", "B", "a"}) handles.push_back(table_.Make(key));
    set_.Adopt(handles);
    EXPECT_EQ(set_.At(3), handles[2]);
    EXPECT_EQ(Text(), "a b A c B a");
    EXPECT_TRUE(set_.Remove(handles[0]));  // before the index exists: the next one keeps the key
    for (int search = 0; search < 2; ++search) {  // by a walk, and by the index from then on
        EXPECT_EQ(set_.Find("a"), handles[2]);
        EXPECT_EQ(set_.Find(search == 0 ? "B" : "b"), handles[1]);
    }
    EXPECT_EQ(set_.Find("x"), kNoHandle);
    EXPECT_EQ(Text(), "b A c - -");
    set_.Adopt(std::vector<std::uint32_t>{table_.Make("d"), table_.Make("C")});
    EXPECT_EQ(ErrorNumber([&] { Add("D"); }), kDuplicateKey);
    EXPECT_EQ(Text(), "b A c - - d -");
}

TEST_F(KeyedCollectionTest, EqualsAVectorUnderRandomChanges) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::vector<std::uint32_t> model;
    const auto key_at = [&](std::size_t i) { return table_.keys[model[i]]; };
    for (int step = 0; step < 6000; ++step) {
        const std::string key = "Key" + std::to_string(random() % 4000);
        const std::uint32_t found = set_.Find(key);
        std::size_t at = 0;
        while (at < model.size() && key_at(at) != key) ++at;
        ASSERT_EQ(found, at < model.size() ? model[at] : kNoHandle) << step;
        if (found != kNoHandle && random() % 2 == 0) {
            ASSERT_TRUE(set_.Remove(found));
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
        } else if (found != kNoHandle) {
            ASSERT_EQ(ErrorNumber([&] { Add(key); }), kDuplicateKey);
        } else {
            const std::size_t place = random() % (model.size() + 1);
            Placement placement;
            if (place < model.size() && random() % 2 == 0)
                placement.before = place + 1;
            else if (place > 0)
                placement.after = place;
            const bool at_end = !placement.before && !placement.after;
            const std::uint32_t handle = Add(key, placement);
            model.insert(at_end ? model.end() : model.begin() + static_cast<std::ptrdiff_t>(place),
                         handle);
        }
    }
    ASSERT_EQ(set_.size(), model.size());
    for (std::size_t i = 0; i < model.size(); ++i)
        ASSERT_EQ(set_.At(static_cast<std::int64_t>(i + 1)), model[i]);
}

}  // namespace
}  // namespace tavolin
