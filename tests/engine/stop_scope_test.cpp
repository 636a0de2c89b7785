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
    std::string State() {
        std::filesystem::remove(folder_.path() / "shop.cdb");  // or its end might stay
        engine_.SaveDB();
        return Contents(FolderPath() + "\\shop.cdb");
    }
    // A handler for the nth call of it.
    template <class Body>
    static auto Nth(int nth, Body body) {
        return [body, nth, calls = 0](const auto&) mutable {
            if (++calls == nth) body();
        };
    }
    // What linking orders to people raises when it is stopped at the fifth question.
    std::int32_t LinkAndStop() {
        int asked = 0;
        const StopScope scope([&] { return ++asked == 5; });
        return ErrorNumber([&] { engine_.LinkTables("Orders", 1, "People"); });
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
    const auto before = State();
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
                EXPECT_TRUE(State() == before);
            }
            EXPECT_EQ(FaultsOf(engine_), "");
        }
        EXPECT_GE(asked, operation.least_asked) << operation.member;
        const auto done = State();
        EXPECT_FALSE(done == before);
        engine_.TansactionAbort();
        engine_.TransactionBegin();
        {
            const StopScope scope([] { return false; });
            const StopScope nobody(nullptr);
            operation.act(engine_);
        }
        EXPECT_TRUE(State() == done) << operation.member << ": stopping left something";
        engine_.TansactionAbort();
        engine_.TransactionBegin();
        ASSERT_TRUE(State() == before);
    }
}

// Whoever throws when he is told comes too late, and who is stopped himself stops the whole.
TEST_F(StopScopeTest, WhatHandlersThrowLeavesAllAsItWas) {
    MakeTables();
    const std::string before = State();
    const auto people = engine_.GetTable("People");
    const auto fail = [] { RaiseRunTime(kInvalidCall); };
    people->CVLRecordSet()->OnRecordRemove.Connect(Nth(1, fail));
    EXPECT_EQ(LinkAndStop(), kInvalidCall);
    EXPECT_TRUE(State() == before);
    int told = 0;
    people->OnRecordRemove.Connect([&](const auto&) { ++told; });
    for (const auto event : {&people->CVLRecordSet()->OnRecordAdd, &people->OnRecordAdd}) {
        event->Connect(Nth(2, [] { RaiseRunTime(kCancelled); }));
        const StopScope scope([] { return false; });
        EXPECT_EQ(ErrorNumber([&] { engine_.LinkTables("Orders", 1, "People"); }), kCancelled);
        EXPECT_TRUE(State() == before);
    }
    EXPECT_EQ(told, 3);  // of what the table has told of, which is all but what its set was told
    for (const char* name : {"Old", "Goods"}) {  // of which orders take some along
        engine_.GetTable(name)->CVLRecordSet()->OnRecordAdd.Connect(Nth(1, fail));
    }
    int asked = 0;
    const StopScope scope([&] { return ++asked == 30; });
    EXPECT_EQ(ErrorNumber([&] { engine_.DeleteRecord("Orders", "o2"); }), kInvalidCall);
    EXPECT_TRUE(State() == before);
}

// What is taken back is told to handlers, who may call the library.
TEST_F(StopScopeTest, WhatHandlersDidThemselvesStays) {
    MakeTables();
    const auto people = engine_.GetTable("People")->CVLRecordSet();
    int removed = 0;
    people->OnRecordRemove.Connect([&](const auto&) {
        if (++removed == 2) engine_.AddRecord("Old", 1, {"from a handler"});
    });
    people->OnRecordAdd.Connect(Nth(3, [&] {
        people->Remove("a0");
        engine_.AddRecord("People", 1, {"m0"});  // where the other one was
    }));
    EXPECT_EQ(LinkAndStop(), kCancelled);
    EXPECT_EQ(people->Count(), 1);
    EXPECT_FALSE(people->CanAdd("m0"));
    EXPECT_EQ(removed, 4);
    EXPECT_EQ(engine_.GetRecord("Old", "from a handler")->nKey(), 1);
    people->OnRecordAdd.Connect(Nth(4, [&] {
        people->Sort(kNoField);  // and all is gone
        engine_.AddRecord("People", 1, {"m1"});
    }));
    EXPECT_EQ(LinkAndStop(), kCancelled);
    EXPECT_EQ(people->Count(), 1);
    EXPECT_FALSE(people->CanAdd("m1"));
    const auto old = engine_.GetTable("Old")->CVLRecordSet();
    old->OnRecordRemove.Connect([&](const auto&) { old->Sort(kNoField); });
    int asked = 0;
    const StopScope scope([&] { return ++asked == 30; });
    EXPECT_EQ(ErrorNumber([&] { engine_.DeleteRecord("Orders", "o2"); }), kCancelled);
    EXPECT_EQ(old->Count(), 0);
    EXPECT_FALSE(engine_.GetTable("Goods")->CanAdd("b2"));
    // A table that is gone is not taken out again.
    const auto tables = engine_.CVLTableSet();
    tables->OnTableAdd.Connect([&](const std::shared_ptr<CVLTable>& table) {
        table->OnRecordAdd.Connect([&](const auto&) { tables->Remove(tables->Count()); });
    });
    const StopScope again([&] { return ++asked == 32; });
    EXPECT_EQ(ErrorNumber([&] { engine_.CreateNewLinkedTable("Orders", 1, {"x"}); }), kCancelled);
}

}  // namespace
}  // namespace tavolin
