// What takes long is stopped at every place where it asks, and leaves nothing of itself.
#include "tavolin/errors/stop_scope.h"

#include <filesystem>
#include <functional>

#include "tests/support/engine_state.h"
#include "tests/support/expect_error.h"
#include "tests/support/invariants.h"

namespace tavolin {
namespace {

struct StopScopeTest : EngineTest {
    const StoppedClock clock_;

    // An order that refers to people brings records along in a chain that comes back to the orders.
    void MakeTables() {
        for (const char* name : {"Orders", "People", "Cities", "Old", "Goods"}) {
            engine_.CreateNewPrimaryTable(name, {"ID", "A", "B"});
        }
        engine_.LinkTables("People", 0, "Cities");
        engine_.LinkTables("Cities", 0, "Orders");
        engine_.LinkTables("Orders", 1, "Old");
        engine_.LinkTables("Orders", 2, "Goods");
        for (int i = 0; i < 6; ++i) {
            const std::string number = std::to_string(i);
            engine_.AddRecord("Orders", i, {"o" + number, "a" + number, "b" + number});
        }
        engine_.TransactionBegin();
    }
};

TEST_F(StopScopeTest, WhateverIsStoppedIsAsItWasAndCanBeDoneAfterwards) {
    struct Operation {
        const char* member;
        std::function<void(CVLDBEngine&)> act;
        int least_asked;
    };
    const Operation operations[] = {
        {"LinkTables", [](auto& engine) { engine.LinkTables("Orders", 1, "People"); }, 12},
        {"LinkTables", [](auto& engine) { engine.LinkTables("Orders", 0, "People"); }, 6},
        {"LinkTables", [](auto& engine) { engine.LinkTables("Old", 0, "Orders"); }, 6},
        {"CreateNewLinkedTable",
         [](auto& engine) { engine.CreateNewLinkedTable("Orders", 1, {"x"}); }, 6},
        {"RemoveRecord", [](auto& engine) { engine.DeleteRecord("Orders", "o2"); }, 5},
    };
    MakeTables();
    const auto state = [&] {
        std::filesystem::remove(folder_.path() / "shop.cdb");  // or its end might stay
        engine_.SaveDB();
        return Contents(FolderPath() + "\\shop.cdb");
    };
    const auto before = state();
    for (const Operation& operation : operations) {
        int asked = 0;
        bool stopped = true;
        for (int nth = 1; stopped; ++nth) {
            SCOPED_TRACE(operation.member + (", asked " + std::to_string(nth)));
            asked = 0;
            stopped = false;
            const StopScope scope([&] { return ++asked == nth; });
            try {
                operation.act(engine_);
            } catch (const Error& error) {
                stopped = true;
                EXPECT_EQ(error.number(), kCancelled);
                EXPECT_EQ(error.description(), "Operation Cancelled");
                EXPECT_EQ(error.source(), SourceNamed(operation.member));
                EXPECT_EQ(asked, nth);  // and no more
                EXPECT_TRUE(state() == before);
            }
            EXPECT_EQ(FaultsOf(engine_), "");
        }
        EXPECT_GE(asked, operation.least_asked) << operation.member;
        const auto done = state();
        EXPECT_FALSE(done == before);
        engine_.TansactionAbort();
        engine_.TransactionBegin();
        {
            const StopScope scope([] { return false; });
            const StopScope nobody(nullptr);
            operation.act(engine_);
        }
        EXPECT_TRUE(state() == done) << operation.member << ": stopping left something";
        engine_.TansactionAbort();
        engine_.TransactionBegin();
        ASSERT_TRUE(state() == before);
    }
}

TEST_F(StopScopeTest, WhatIsTakenBackIsToldToHandlersWhoMayCallTheLibrary) {
    MakeTables();
    int added = 0;
    int removed = 0;
    const auto people = engine_.GetTable("People")->CVLRecordSet();
    people->OnRecordAdd.Connect([&](const auto&) { ++added; });
    people->OnRecordRemove.Connect([&](const auto&) {
        if (++removed == 1) engine_.AddRecord("Old", 1, {"from a handler"});
    });
    const auto count = people->Count();
    int asked = 0;
    const StopScope scope([&] { return ++asked > 3; });
    EXPECT_EQ(ErrorNumber([&] { engine_.LinkTables("Orders", 1, "People"); }), kCancelled);
    EXPECT_EQ(added, 3);
    EXPECT_EQ(removed, 3);
    EXPECT_EQ(people->Count(), count);
    EXPECT_EQ(engine_.GetRecord("Old", "from a handler")->prop(0), "from a handler");
}

}  // namespace
}  // namespace tavolin
