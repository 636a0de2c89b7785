#include "tavolin/model/key_index.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace tavolin {
namespace {

bool Holds(const KeyIndex& index, std::uint32_t hash, std::uint32_t handle) {
    return index.Find(hash, [&](std::uint32_t found) { return found == handle; }) == handle;
}

// Hashes are drawn from a few values, from the low or the high bits only, or from all.
std::uint32_t DrawHash(int kind, std::mt19937& random) {
    switch (kind) {
        case 0:
            return random() % 5;
        case 1:
            return random() % 4096;
        case 2:
            return static_cast<std::uint32_t>(random()) << 20;
        default:
            return static_cast<std::uint32_t>(random());
    }
}

TEST(KeyIndex, EqualsAMapUnderRandomChanges) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (int kind = 0; kind < 4; ++kind) {
        KeyIndex index;
        std::map<std::uint32_t, std::uint32_t> model;  // from handle to hash
        const std::uint32_t handles = kind == 0 ? 60 : 2000;
        for (int step = 0; step < 20'000; ++step) {
            const auto handle = static_cast<std::uint32_t>(random() % handles);
            const auto found = model.find(handle);
            if (found == model.end()) {
                const std::uint32_t hash = DrawHash(kind, random);
                ASSERT_FALSE(Holds(index, hash, handle));
                index.Insert(hash, handle);
                model[handle] = hash;
            } else {
                ASSERT_TRUE(index.Remove(found->second, handle)) << step;
                ASSERT_FALSE(index.Remove(found->second, handle)) << step;
                model.erase(found);
            }
            if (step % 1000 != 0) continue;
            ASSERT_EQ(index.size(), model.size());
            for (const auto& [kept, hash] : model) ASSERT_TRUE(Holds(index, hash, kept));
        }
    }
}

TEST(KeyIndex, StaysSmall) {
    KeyIndex index;
    EXPECT_EQ(index.memory(), 0u);
    double sum = 0;
    constexpr std::uint32_t kCount = 300'000;
    for (std::uint32_t i = 0; i < kCount; ++i) {
        index.Insert(i * 0x85EBCA6Bu, i);
        sum += static_cast<double>(index.memory()) / (i + 1);
    }
    EXPECT_LE(sum / kCount, 14.0);

    KeyIndex reserved;
    for (std::size_t count : {1u, 6u, 7u, 100u, 9'999u, 250'000u}) {
        reserved.Clear();
        reserved.Reserve(count);
        const std::size_t memory = reserved.memory();
        EXPECT_LE(memory, count * 10 + 64);
        for (std::uint32_t i = 0; i < count; ++i) reserved.Insert(i, i);
        EXPECT_EQ(reserved.memory(), memory) << "grew in spite of Reserve(" << count << ")";
    }
}

}  // namespace
}  // namespace tavolin
