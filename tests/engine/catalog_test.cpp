// Names in arrays, and under which source what goes wrong is reported; observers.
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

using Names = std::vector<std::string>;

struct CatalogTest : EngineTest {
    CatalogTest() {
        engine_.CreateNewPrimaryTable("Towns", {"Name", "Land"}, 0, 1);
        engine_.CreateNewPrimaryTable("Empty", {"ID"});
        engine_.AddRecord("Towns", 1, {"Rome", "IT"});
        engine_.AddRecord("Towns", 1, {"Bonn", "DE"})->Attach(1, "b.png", aPicture);
        engine_.SaveDB();
    }
};

TEST_F(CatalogTest, NamesWhatIsThereAndAnEmptyTextBehind) {
    const std::string file = folder_ / "shop.cdb";
    engine_.CreateNewUser("bob", "b", true, false, false);
    engine_.CreateNewUser("Cid", "c", true, false, false);
    engine_.CVLTableSet()->Item("Empty")->FieldLabel(9, "last");
    EXPECT_EQ(engine_.GetArrayUsers(), (Names{"ann", "bob", "Cid", ""}));
    EXPECT_EQ(engine_.GetArrayUsers(file), (Names{"ann", ""})) << "as it was saved";
    EXPECT_EQ(engine_.GetArrayFields("empty"),
              (Names{"ID", "", "", "", "", "", "", "", "", "last"}));
    EXPECT_EQ(engine_.GetArrayRecords("TOWNS"), (Names{"RomeIT", "BonnDE", ""}));
    EXPECT_EQ(engine_.GetArrayRecords("Empty"), Names{""});
    EXPECT_EQ(engine_.GetArrayAttachments("Towns", "bonnde"), (Names{"b.png", ""}));
    EXPECT_EQ(engine_.GetArrayAttachments("Towns", "RomeIT"), Names{""});
    const auto rome = engine_.GetRecord("Towns", 1);
    EXPECT_EQ(rome->arena()->Attachments(rome->handle(), false), nullptr) << "made by asking";
    EXPECT_EQ(engine_.GetArrayOwners(), (Names{"ann", ""}));
    EXPECT_EQ(engine_.GetArrayOwnedDBs(), (Names{file, ""}));
    // Whoever may do nothing still gets what takes no look-up.
    engine_.LogOn("bob", "wrong");
    engine_.CVLDBOwnerSet()->Add("Dan");
    EXPECT_EQ(engine_.GetArrayTables(), (Names{"Towns", "Empty", ""}));
    EXPECT_EQ(engine_.GetArrayTables(file), (Names{"Towns", "Empty", ""}));
    EXPECT_EQ(engine_.GetArrayOwnedDBs("dan"), Names{""});
    EXPECT_EQ(engine_.GetArrayOwnedDBs("ANN"), (Names{file, ""}));
}

TEST_F(CatalogTest, WhatGoesWrongIsLoggedUnderTheMembersSource) {
    CVLDBEngine fresh;
    engine_.LogDBActivities(false, false, false, false, false, false, false, false, false, false,
                            false, false, false, true);
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"Fields Method: Table Not Found!", [&] { engine_.GetArrayFields("1"); }},
        {"Records Method: Table Not Found!", [&] { engine_.GetArrayAttachments("None", "1"); }},
        {"Records Method: DataBase Is Not Set!",
         [&] { engine_.GetArrayAttachments("Towns", "1"); }},
        {"OwnedDBs Method: Owner Not Found!", [&] { engine_.GetArrayOwnedDBs("bob"); }},
        {"OwnedDBs Method: User Should Log On To Be Able To Perform Any DataBase Activity!",
         [&] { fresh.GetArrayOwnedDBs(); }},
        {"Tables Method: DataBase Cannot Be Read!\r\nCause: DataBase Might Be Empty!",
         [&] { engine_.GetArrayTables("none.cdb"); }},
        {"Users Method: DataBase Is Not Set!", [&] { fresh.GetArrayUsers(); }},
    };
    for (const auto& [expected, body] : cases) {
        try {
            body();
            ADD_FAILURE() << expected;
        } catch (const Error& error) {
            EXPECT_EQ(error.source() + ": " + error.description(),
                      std::string("CVLDBEngine:GetArray") + expected);
        }
    }
    EXPECT_NE(Contents(folder_ / "shop.log").find("ERROR: Table Not Found!"), std::string::npos);
}

// Observers: who is called, in which order, and whose errors pass.
struct ObserversTest : EngineTest {
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
