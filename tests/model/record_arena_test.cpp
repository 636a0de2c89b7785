#include "tavolin/model/record_arena.h"

#include <random>

#include "tavolin/model/order_list.h"
#include "tavolin/model/record.h"
#include "tavolin/model/session.h"
#include "tavolin/persist/property_bag.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Fields = std::array<std::string, kFieldCount>;

struct RecordArenaTest : testing::Test {
    RecordHandle Make(const FieldTexts& fields, const PrimaryKeyType& key = {0, 99, 99, 99}) {
        const RecordHandle record = arena_->Create(-5, fields, key);
        arena_->AddReference(record);
        return record;
    }
    void Set(RecordHandle record, int field, std::string_view value) {
        std::array<std::string_view, kFieldCount> values;
        std::array<bool, kFieldCount> changed{};
        values[static_cast<std::size_t>(field)] = value;
        changed[static_cast<std::size_t>(field)] = true;
        arena_->SetFields(record, values, changed);
    }
    Fields FieldsOf(RecordHandle record) const {
        Fields fields;
        for (int i = 0; i < kFieldCount; ++i) {
            fields[static_cast<std::size_t>(i)] = arena_->Field(record, i);
        }
        return fields;
    }
    Bytes Images(std::initializer_list<RecordHandle> records) const {
        PropertyBagWriter bag;
        bag.BeginBlocks("r");
        for (const RecordHandle record : records) arena_->WriteImage(record, bag);
        bag.EndBlocks();
        const Bytes state = std::move(bag).Finish();
        const auto images = PropertyBagReader(state).ReadBlocks("r");
        return {images.begin(), images.end()};
    }
    // Goes on with an arena of its own, made of the images alone.
    std::vector<RecordHandle> Adopt(const Bytes& images) {
        auto owner = std::make_shared<ByteBuffer>(images.size());
        std::copy(images.begin(), images.end(), owner->data());
        arena_ = std::make_shared<RecordArena>(Session::Current());
        const auto bytes = owner->bytes();
        return arena_->Adopt(bytes, std::move(owner));
    }

    std::shared_ptr<RecordArena> arena_ = std::make_shared<RecordArena>(Session::Current());
};

// The widths of a record's field ends change at these sizes, and its block's own limit is 524,280.
TEST_F(RecordArenaTest, HoldsRecordsOfEverySize) {
    for (std::size_t total : {0u, 12u, 254u, 255u, 256u, 600u, 65534u, 65535u, 65536u, 524219u,
                              524220u, 524221u, 600000u, 1100000u}) {
        SCOPED_TRACE(total);
        const std::string half(total / 2, 'h');
        const std::string rest(total - total / 2, 'r');
        const Fields whole{half, "", rest};
        const Fields shrunk{half, "", "shrunk"};
        const Fields near{"neighbour", "x"};
        for (const bool grown : {false, true}) {
            arena_ = std::make_shared<RecordArena>(Session::Current());
            RecordHandle record = grown ? Make({"start", "", "end"}) : Make({half, "", rest});
            RecordHandle neighbour = Make({"neighbour", "x"});
            Set(record, 0, half);
            Set(record, 2, rest);
            EXPECT_EQ(FieldsOf(record), whole);
            const auto images = Images({record, neighbour});
            ASSERT_EQ(images.size() % 8, 0u);
            for (const bool adopted : {false, true}) {
                if (adopted) {
                    const auto records = Adopt(images);
                    ASSERT_EQ(records.size(), 2u);
                    record = records[0];
                    neighbour = records[1];
                    EXPECT_EQ(FieldsOf(record), whole);
                    EXPECT_EQ(Images({record, neighbour}), images);
                }
                Set(record, 2, "shrunk");
                EXPECT_EQ(FieldsOf(record), shrunk);
                Set(record, 0, half + "grown" + rest);
                arena_->Release(record);
                Make({half, rest});
                Make({rest});
                EXPECT_EQ(FieldsOf(neighbour), near);
            }
        }
    }
}

TEST_F(RecordArenaTest, UsesFreedMemoryAgain) {
    const auto round = [&] {
        const RecordHandle record = Make({"k", "a"});
        for (std::size_t size : {10u, 300u, 70000u, 600000u, 20u, 300000u}) {
            Set(record, 1, std::string(size, 'x'));
        }
        // Held by a host for longer than by the set.
        const auto object = RecordArena::Object(arena_, record);
        arena_->Release(record);
    };
    for (int i = 0; i < 3; ++i) round();
    const std::size_t memory = arena_->memory();
    for (int i = 0; i < 50; ++i) round();
    EXPECT_EQ(arena_->memory(), memory);
}

// As long as anyone holds them, whatever is let go meanwhile, in any order.
TEST_F(RecordArenaTest, KnowsManyObjectsApart) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<RecordHandle> records;
    for (int i = 0; i < 3000; ++i) records.push_back(Make({std::to_string(i)}));
    std::vector<std::shared_ptr<CVLRecord>> held(records.size());
    const auto at_random = [&] { return random() % records.size(); };
    for (int most : {20, 3000, 5}) {
        for (int i = 0; i < 4 * most; ++i)
            held[at_random()] = RecordArena::Object(arena_, records[at_random()]);
        for (std::size_t i = 0; i < held.size(); ++i) {
            if (!held[i]) continue;
            ASSERT_EQ(RecordArena::Object(arena_, held[i]->handle()), held[i]);
            if (most < 3000 || random() % 2 == 0) held[i].reset();
        }
    }
    for (const RecordHandle record : records) arena_->Release(record);
    arena_.reset();
    for (const auto& object : held) {
        if (!object) continue;
        EXPECT_EQ(records[std::stoul(object->prop(0))], object->handle());
    }
}

// Whatever the image, reading it stays inside and ends in a whole record or in a refusal.
TEST_F(RecordArenaTest, RefusesImagesThatContradictThemselves) {
    std::mt19937 random(7);
    const auto small = Images({Make({"a", "bc", std::string(30, 'd')}, {1, 2, 99, 99})});
    const auto large = Images({Make({"a", std::string(600000, 'x')})});
    const auto read = [&](const Bytes& bytes) {
        try {
            for (const RecordHandle record : Adopt(bytes))
                EXPECT_LE(FieldsOf(record)[9].size(), bytes.size());
            return true;
        } catch (const DamagedState&) {
            return false;
        }
    };
    EXPECT_TRUE(read({}));
    for (std::size_t size = 1; size < small.size(); ++size) {
        EXPECT_FALSE(read({small.begin(), small.begin() + static_cast<std::ptrdiff_t>(size)}));
    }
    EXPECT_FALSE(read({large.begin(), large.end() - 8}));
    for (int i = 0; i < 20000; ++i) {
        auto image = small;
        for (int n = 0; n <= i % 3; ++n) {
            image[random() % (i % 2 ? 30 : image.size())] = static_cast<std::uint8_t>(random());
        }
        read(image);
    }
    auto flags = small;
    flags[18] |= 0x10;  // would make it look moved, to anywhere
    EXPECT_FALSE(read(flags));
}

}  // namespace
}  // namespace tavolin
