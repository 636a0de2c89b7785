// One transaction at a time: begun, committed, aborted.
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

struct TransactionsTest : EngineTest {
    TransactionsTest() {
        engine_.CreateNewPrimaryTable("T", {"ID", "Text"});
        engine_.AddRecord("T", 1, {"1", "old"});
        engine_.SaveDB();
    }
    const std::string file_ = folder_ / "shop.cdb";
};

TEST_F(TransactionsTest, OneAtATime) {
    const std::function<void()> ends[] = {
        [&] { engine_.TansactionAbort(); }, [&] { engine_.TransactionCommit(); },
        [&] { engine_.LoadDB(file_); }, [&] { engine_.CreateNewDB("second", FolderPath()); }};
    for (const auto& end : ends) {
        EXPECT_FALSE(engine_.TransactionStarted());
        ExpectError(Num::GetNoTransStartedError(), "CVLDBEngine:TransactionCommit Method",
                    "Cannot Commit Because No Transaction Have Been Started!",
                    [&] { engine_.TransactionCommit(); });
        ExpectError(Num::GetNoTransStartedError(), "CVLDBEngine:TransactionAbort Method",
                    "Cannot Abort Because No Transaction Have Been Started!",
                    [&] { engine_.TansactionAbort(); });
        EXPECT_TRUE(engine_.TransactionBegin());
        ExpectError(Num::GetTransAlreadyStartedError(), "CVLDBEngine:TransactionBegin Method",
                    "A Transaction Is In Process, Commit To Start A New One!",
                    [&] { engine_.TransactionBegin(); });
        EXPECT_THROW(engine_.LoadDB(folder_ / "none.cdb"), Error);
        EXPECT_THROW(engine_.CreateNewDB("shop", FolderPath()), Error);
        EXPECT_TRUE(engine_.TransactionStarted());
        end();
    }
    EXPECT_FALSE(engine_.TransactionStarted());
}

TEST_F(TransactionsTest, AbortPutsEverythingBack) {
    const auto user = engine_.LogedOnUser();
    engine_.LogDBActivities(false, false, false, true);
    engine_.TransactionBegin();
    const auto table = engine_.GetTable("T");
    const auto record = engine_.GetRecord("T", "1");
    record->prop(1, "new");
    engine_.AddRecord(table, 2, {"2"});
    engine_.CreateNewPrimaryTable("U", {"ID"});
    engine_.CreateNewUser("bob", "b", true, true, true);
    engine_.ChangePassword("", "changed");
    engine_.LogDBActivities();
    engine_.DeleteTable("T");
    engine_.SaveDB({}, "inside");
    const auto report = engine_.LogReport();
    EXPECT_TRUE(engine_.TansactionAbort());
    EXPECT_EQ(engine_.CVLTableSet()->Count(), 1);
    EXPECT_EQ(engine_.GetTable("T")->Count(), 1);
    EXPECT_EQ(engine_.GetRecord("T", "1")->prop(1), "old");
    EXPECT_FALSE(engine_.UserExists("bob"));
    EXPECT_TRUE(engine_.PasswordCorrect("secret"));
    EXPECT_TRUE(engine_.LoggedActivities().logUserCreation);
    EXPECT_EQ(engine_.LogedOnUser(), user);
    EXPECT_TRUE(engine_.LogReport().starts_with(report));
    EXPECT_EQ(engine_.GetDB(folder_ / "inside.cdb")->CVLTableSet()->Lookup("U")->Key(), "U");
    EXPECT_EQ(record->prop(1), "new");  // what was held from before can be read
}

// Records of every size, some that cannot be taken over as they lie.
TEST_F(TransactionsTest, AbortBringsBackRecordsThatCanBeWorkedWith) {
    for (const std::size_t largest : {3000, 700000}) {
        std::vector<std::string> texts = {"old"};
        for (int i = 2; i <= 2500; ++i) texts.push_back(std::string(i % 300, 'x') + "é");
        texts.back() = std::string(largest, 'y');
        for (int i = engine_.GetTable("T")->Count(); i > 1; --i) engine_.DeleteRecord("T", i);
        for (std::size_t i = 1; i < texts.size(); ++i)
            engine_.AddRecord("T", 0, {std::to_string(i + 1), texts[i]});
        engine_.TransactionBegin();
        engine_.DeleteRecord("T", 7);
        engine_.TansactionAbort();
        engine_.DeleteRecord("T", "2000");
        texts.erase(texts.begin() + 1999);
        engine_.AddRecord("T", 0, {"new", "new"}, nullptr, {.before = "1500"});
        texts.insert(texts.begin() + 1499, "new");
        const auto table = engine_.GetTable("T");
        ASSERT_EQ(table->Count(), static_cast<int>(texts.size()));
        for (std::size_t i = 0; i < texts.size(); ++i)
            ASSERT_EQ(table->GetRecord(i + 1)->prop(1), texts[i]) << i;
    }
}

TEST_F(TransactionsTest, AbortCarriesNoRightToDataItWasNotGivenFor) {
    for (const PermitStateEnum state : {Undefined, ToRead, ToReadWrite, ToDelete, Ownership}) {
        ActWith(state);
        engine_.TransactionBegin();
        engine_.TansactionAbort();
        EXPECT_EQ(StateOf(engine_), state);
    }
    engine_.TransactionBegin();
    const auto eve = engine_.CreateNewUser("eve", "e", true, true, true);
    engine_.LogedOnUser(eve);
    engine_.DBLegalUser(eve, ToDelete);
    engine_.TansactionAbort();  // in the data put back nobody knows her
    EXPECT_EQ(StateOf(engine_), Undefined);
}

TEST_F(TransactionsTest, CommitSavesAndEndsEvenWhenSavingFails) {
    engine_.TransactionBegin();
    engine_.AddRecord("T", 2, {"2"});
    EXPECT_TRUE(engine_.TransactionCommit());
    EXPECT_EQ(engine_.GetDB(file_)->CVLTableSet()->Lookup("T")->Count(), 2);
    engine_.TransactionBegin();
    ActWith(ToRead);
    EXPECT_EQ(ErrorNumber([&] { engine_.TransactionCommit(); }), Num::GetUserPermissionToRWError());
    EXPECT_FALSE(engine_.TransactionStarted());
    EXPECT_FALSE(engine_.LogReport().ends_with("<Transaction Committed>\r\n"));
}

}  // namespace
}  // namespace tavolin
