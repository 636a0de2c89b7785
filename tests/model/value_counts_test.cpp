#include "tavolin/model/value_counts.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace tavolin {
namespace {

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
