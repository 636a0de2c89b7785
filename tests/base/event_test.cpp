#include "tavolin/base/event.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace tavolin {
namespace {

// Handlers come and go, also from inside a handler, beside a plain list of those that are there.
TEST(EventTest, AgreesWithAPlainList) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    Event<std::string*> event;
    std::vector<EventConnection> present;
    EventConnection victim = 0;
    EventConnection known = 0;  // the newest of all there have been
    for (int i = 0; i < 5000 && !testing::Test::HasFailure(); ++i) {
        const auto any = static_cast<EventConnection>(random() % (known + 2));
        const auto phase = static_cast<unsigned>(i) / 500 % 2;  // growing, shrinking
        if (random() % 3 == phase) {
            auto self = std::make_shared<EventConnection>();
            *self = known = event.Connect([&event, &victim, self](std::string* text) {
                *text += std::to_string(*self) + " ";
                event.Disconnect(std::exchange(victim, 0));
            });
            present.push_back(known);
        } else if (random() % 2 == 0) {
            event.Disconnect(any);
            std::erase(present, any);
        } else {
            victim = any;
            std::string expected;
            // The first handler to run disconnects the victim, which may be itself.
            for (const auto id : present) {
                if (id != any || expected.empty()) expected += std::to_string(id) + " ";
            }
            if (!present.empty()) std::erase(present, any);
            std::string fired;
            event.Fire(&fired);
            ASSERT_EQ(fired, expected) << "in step " << i;
        }
        ASSERT_EQ(event.HasHandlers(), !present.empty()) << "in step " << i;
    }
}

}  // namespace
}  // namespace tavolin
