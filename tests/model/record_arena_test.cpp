#include "tavolin/model/record_arena.h"

#include <random>

#include "tavolin/model/order_list.h"
#include "tavolin/model/record.h"
#include "tavolin/model/session.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

using Fields = std::array<std::string, kFieldCount>;

class RecordArenaTest : public testing::Test {
  protected:
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
    std::vector<std::uint8_t> Image(RecordHandle record) const {
        std::vector<std::uint8_t> image(arena_->ImageSize(record), 0xEE);
        arena_->WriteImage(record, image.data());
        return image;
    }

    std::shared_ptr<RecordArena> arena_ = std::make_shared<RecordArena>(Session::Current());
};

// The widths of a record's field ends change at these sizes, and its block's own limit is 524,280.
TEST_F(RecordArenaTest, HoldsRecordsOfEverySize) {
    const RecordHandle neighbour = Make({"neighbour", "x"});
    for (std::size_t total : {0u, 12u, 254u, 255u, 256u, 65534u, 65535u, 65536u, 524219u, 524220u,
                              524221u, 600000u, 1100000u}) {
        const std::string half(total / 2, 'h');
        const std::string rest(total - total / 2, 'r');
        for (const RecordHandle record : {Make({half, "", rest}), Make({"start", "", "end"})}) {
            Set(record, 0, half);
            Set(record, 2, rest);
            EXPECT_EQ(FieldsOf(record), (Fields{half, "", rest})) << total;
            const auto image = Image(record);
            ASSERT_EQ(image.size() % 8, 0u);
            std::size_t taken = 0;
            const RecordHandle copy = arena_->ReadImage(image, taken);
            arena_->AddReference(copy);
            EXPECT_EQ(taken, image.size());
            EXPECT_EQ(FieldsOf(copy), FieldsOf(record)) << total;
            EXPECT_EQ(Image(copy), image) << total;
            arena_->Release(copy);
            Set(record, 2, "shrunk");
            EXPECT_EQ(FieldsOf(record), (Fields{half, "", "shrunk"})) << total;
            arena_->Release(record);
        }
    }
    EXPECT_EQ(FieldsOf(neighbour), (Fields{"neighbour", "x"}));
}

TEST_F(RecordArenaTest, UsesFreedMemoryAgain) {
    const auto round = [&] {
        const RecordHandle record = Make({"k", "a"});
        for (std::size_t size : {10u, 300u, 70000u, 600000u, 20u, 300000u}) {
            Set(record, 1, std::string(size, 'x'));
        }
        arena_->Release(record);
    };
    for (int i = 0; i < 3; ++i) round();
    const std::size_t memory = arena_->memory();
    for (int i = 0; i < 50; ++i) round();
    EXPECT_EQ(arena_->memory(), memory);
}

// The new value may lie in the very record that is changed.
TEST_F(RecordArenaTest, SetsFieldsFromFields) {
    const RecordHandle record = Make({"key", "0123456789", "caf\xC3\xA9"});
    Set(record, 1, arena_->AllFields(record));
    Set(record, 3, arena_->Field(record, 1).substr(3));
    Set(record, 2, arena_->Field(record, 2).substr(0, 3));
    EXPECT_EQ(FieldsOf(record),
              (Fields{"key", "key0123456789caf\xC3\xA9", "caf", "0123456789caf\xC3\xA9"}));
    EXPECT_FALSE(arena_->IsAscii(record));
}

TEST_F(RecordArenaTest, HandsOutOneObjectForARecord) {
    const RecordHandle record = Make({"a"});
    auto object = arena_->Object(record);
    EXPECT_EQ(arena_->Object(record), object);
    int changes = 0;
    object->OnPropertyChange.Connect([&](auto...) { ++changes; });
    arena_->Release(record);  // the object alone keeps it now
    object->prop(0, "b");
    EXPECT_EQ(object->prop(0), "b");
    object.reset();
    const RecordHandle reused = Make({"d"});
    EXPECT_EQ(reused, record);
    object = arena_->Object(reused);
    object->prop(0, "e");
    EXPECT_EQ(changes, 1);
    arena_.reset();  // an object outlives the arena's owner
    EXPECT_EQ(object->prop(0), "e");
}

// Whatever the image, reading it stays inside and ends in a whole record or in a refusal.
TEST_F(RecordArenaTest, RefusesImagesThatContradictThemselves) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto small = Image(Make({"a", "bc", std::string(30, 'd')}, {1, 2, 99, 99}));
    const auto large = Image(Make({"a", std::string(600000, 'x')}));
    const auto read = [&](const std::vector<std::uint8_t>& bytes) {
        // A buffer of exactly this size, so that a sanitizer sees a read behind it.
        const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
        std::size_t taken = 0;
        try {
            const RecordHandle record = arena_->ReadImage(exact, taken);
            arena_->AddReference(record);
            EXPECT_LE(taken, exact.size());
            EXPECT_LE(FieldsOf(record)[9].size(), exact.size());
            arena_->Release(record);
            return true;
        } catch (const DamagedState&) {
            return false;
        }
    };
    for (std::size_t size = 0; size < small.size(); ++size) {
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
