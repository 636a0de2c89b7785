// Observers: who is called, in which order, and whose errors pass.
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

class ObserversTest : public EngineTest {
  protected:
    struct Observer : IUpdater {
        explicit Observer(std::function<void()> update) : update_(std::move(update)) {}
        void Update() override { update_(); }
        std::function<void()> update_;
    };
    // Adds an observer who writes his name down, and does something more.
    void Observe(
        const std::string& name, std::function<void()> more = [] {}) {
        const auto update = [=, this] {
            calls_ += name;
            more();
        };
        engine_.AddObserver(std::make_shared<Observer>(update), name);
    }
    std::string Notified() {
        calls_.clear();
        engine_.NotifyObservers();
        return calls_;
    }
    std::string calls_;
};

TEST_F(ObserversTest, AreCalledInOrderAndStayWithTheEngine) {
    EXPECT_EQ(Notified(), "");
    for (const char* name : {"c", "a", "b"}) Observe(name);
    ExpectError(kDuplicateKey, "",
                "This key is already associated with an element of this collection",
                [&] { Observe("A"); });
    ExpectError(kInvalidCall, "", "Invalid procedure call or argument",
                [&] { engine_.RemoveObserver("d"); });
    EXPECT_EQ(ErrorNumber([&] { engine_.AddObserver(nullptr, "d"); }), kObjectNotSet);
    EXPECT_EQ(engine_.ObserversCount(), 3);
    engine_.RemoveObserver("A");
    engine_.SaveDB();
    engine_.TransactionBegin();
    engine_.TansactionAbort();
    EXPECT_EQ(engine_.GetDB(folder_ / "shop.cdb")->ObserversCount(), 0);
    engine_.LoadDB(folder_ / "shop.cdb", {}, 0, std::make_shared<IUpdater>());
    engine_.CreateNewDB("new", FolderPath());
    EXPECT_EQ(calls_, "") << "called without being asked to";
    EXPECT_EQ(Notified(), "cb");
}

TEST_F(ObserversTest, MayComeAndGoAndFailWhileTheyAreCalled) {
    Observe("a", [&] { engine_.RemoveObserver("b"); });
    Observe("b");
    Observe("c", [&] {
        engine_.RemoveObserver("c");
        Observe("c");
    });
    Observe("x", [] { throw Error(kDeviceError); });
    Observe("y");
    ExpectError(kDeviceError, "", GetErrorMessage(kDeviceError), [&] { Notified(); });
    EXPECT_EQ(calls_, "acx");
    EXPECT_EQ(engine_.ObserversCount(), 4);
}

}  // namespace
}  // namespace tavolin
