// Who is let in, and what he may do then.
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

struct UsersTest : EngineTest {
    UsersTest() {
        engine_.CreateNewPrimaryTable("T", {"ID"});
        engine_.CreateNewUser("reader", "word", true, false, false);
        engine_.CreateNewUser("writer", "word", false, true, false);
        engine_.CreateNewUser("deleter", "word", false, false, true);
        engine_.CreateNewUser("none", "word", false, false, false);
        engine_.CreateNewUser("off", "word", true, true, true, {}, {}, true);
        engine_.ChangePassword("", "open");
    }
};

TEST_F(UsersTest, DBLegalUserLetsInByNamePasswordAndNeed) {
    struct Refusal {
        std::int32_t number;
        const char* text;
    };
    const Refusal none = {};
    const Refusal read = {Num::GetUserPermissionToRdError(),
                          "User Does Not Have Permission To Read!"};
    const Refusal write = {Num::GetUserPermissionToRWError(),
                           "User Does Not Have Permission To Read/Write!"};
    const Refusal remove = {Num::GetUserPermissionToDelError(),
                            "User Does Not Have Permission To Delete!"};
    const Refusal owner = {Num::GetUserIsNotDBOwnerError(),
                           "User: reader Is Not The DataBase Owner"};
    const Refusal off = {Num::GetUserDisabledError(),
                         "Log In To DataBase Denied!\r\nCause: User Is Disabled!"};
    const Refusal password = {Num::GetDBPasswordError(),
                              "Log In To DataBase Denied!\r\nCause: Incorrect DataBase Password!"};
    const Refusal unknown = {kInvalidCall, "Invalid procedure call or argument"};
    struct Case {
        const char* name;
        const char* word;
        PermitStateEnum needed;
        const Refusal& refusal;
        PermitStateEnum state;
    };
    const Case cases[] = {
        {"ANN", "Secret", ToDelete, none, Ownership},
        {"ann", "open", ToRead, none, ToRead},
        {"ann", "wrong", Undefined, password, Undefined},
        {"reader", "WORD", ToRead, none, ToRead},
        {"reader", "word", ToLoad, none, ToRead},
        {"reader", "word", ToReadWrite, write, ToRead},
        {"reader", "word", ToDelete, remove, ToRead},
        {"reader", "word", Ownership, owner, ToRead},
        {"reader", "word", Undefined, none, ToRead},
        {"reader", "word", static_cast<PermitStateEnum>(0), unknown, ToRead},
        {"reader", "word", static_cast<PermitStateEnum>(7), unknown, ToRead},
        {"stranger", "open", static_cast<PermitStateEnum>(-5), unknown, ToRead},
        {"ann", "secret", static_cast<PermitStateEnum>(7), none, Ownership},
        {"reader", "open", ToRead, none, ToRead},
        {"reader", "wrong", ToRead, password, Undefined},
        {"writer", "word", ToSave, none, ToReadWrite},
        {"writer", "word", ToRead, read, ToReadWrite},
        {"writer", "open", ToSave, write, ToRead},
        {"deleter", "word", ToDelete, none, ToDelete},
        {"deleter", "word", ToLoad, read, ToDelete},
        {"none", "word", ToRead, read, Undefined},
        {"none", "word", Undefined, none, Undefined},
        {"off", "word", ToRead, off, Undefined},
        {"off", "open", ToRead, off, Undefined},
        {"off", "wrong", Undefined, off, Undefined},
        {"stranger", "Open", ToRead, none, ToRead},
        {"stranger", "open", ToReadWrite, write, ToRead},
        {"stranger", "", Undefined, password, Undefined},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(std::string(test.name) + "/" + test.word + std::to_string(test.needed));
        EXPECT_TRUE(engine_.LogOn(test.name, test.word));
        EXPECT_EQ(StateOf(engine_), Undefined);
        const auto user = engine_.LogedOnUser();
        engine_.DBLegalUser(owner_, Undefined);  // a state that must not be inherited
        ASSERT_EQ(StateOf(engine_), Ownership);
        const auto ask = [&] { EXPECT_TRUE(engine_.DBLegalUser(user, test.needed)); };
        if (test.refusal.number == 0) {
            ask();
        } else {
            ExpectError(test.refusal.number, "CVLDBEngine:DBLegalUser Method", test.refusal.text,
                        ask);
        }
        EXPECT_EQ(StateOf(engine_), test.state);
    }
}

TEST(UsersAndRightsTest, NothingOpenHasItsOwnText) {
    const ScopedLibraryFolder library;
    const std::pair<const char*, std::function<void(CVLDBEngine&)>> members[] = {
        {"LogedOnIsOwner", [](auto& e) { e.LogedOnIsOwner(e.LogedOnUser()); }},
        {"PasswordCorrect", [](auto& e) { e.PasswordCorrect(""); }},
        {"ChangePassword", [](auto& e) { e.ChangePassword("", ""); }},
        {"UserExists", [](auto& e) { e.UserExists("ann"); }},
        {"CreateNewUser", [](auto& e) { e.CreateNewUser("bob", "", true, true, true); }},
        {"GetUser", [](auto& e) { e.GetUser("ann"); }},
        {"DBLegalUser", [](auto& e) { e.DBLegalUser(e.LogedOnUser(), Undefined); }},
        {"SaveDB", [](auto& e) { e.SaveDB(); }},
        {"TransactionBegin", [](auto& e) { e.TransactionBegin(); }},
        {"MakeItMDB", [](auto& e) { e.MakeItMDB(""); }},
    };
    CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    for (const auto& member : members) {
        ExpectError(Num::GetDBNotSetError(), SourceNamed(member.first), "DataBase Is Not Set!",
                    [&] { member.second(engine); });
    }
}

TEST_F(UsersTest, GetUserAsksForTheUsersOwnPassword) {
    const char* const source = "CVLDBEngine:GetUser Method";
    const auto reader = engine_.CVLDBUserSet()->Item("reader");
    EXPECT_EQ(engine_.GetUser("Reader", "Word"), reader);
    EXPECT_EQ(engine_.GetUser(reader, "ignored"), reader);
    ExpectError(Num::GetUserPasswordError(), source, "Incorrect Password!",
                [&] { engine_.GetUser("reader", "open"); });
    ExpectError(Num::GetUserNotFoundError(), source, "User: eve Does Not Exist!",
                [&] { engine_.GetUser("eve", "open"); });
    ExpectError(Num::GetNewUserCreationError(), "CVLDBEngine:CreateNewUser Method",
                "User: Reader Cannot Be Created!\r\nCause: User Already Exists In DataBase",
                [&] { engine_.CreateNewUser("Reader", "", true, true, true); });
    engine_.LogOn("reader", "wrong");
    EXPECT_EQ(ErrorNumber([&] { engine_.GetUser(engine_.LogedOnUser(), "word"); }),
              Num::GetUserPasswordError());
}

TEST_F(UsersTest, TheDatabasePasswordIsChangedByTheOwnerOrWhoKnowsIt) {
    engine_.LogOn("reader", "word");
    EXPECT_EQ(ErrorNumber([&] { engine_.ChangePassword("word", "new"); }),
              Num::GetDBPasswordChangeError());
    EXPECT_TRUE(engine_.PasswordCorrect("OPEN"));
    EXPECT_TRUE(engine_.ChangePassword("oPEn", "new"));
    EXPECT_TRUE(engine_.PasswordCorrect("new"));
    EXPECT_TRUE(engine_.LogReport().ends_with("DataBase shop.cdb Password Has Been Changed\r\n"));
    engine_.LogOn("ann", "secret");
    EXPECT_TRUE(engine_.ChangePassword("wrong", "newer"));
    EXPECT_TRUE(engine_.PasswordCorrect("newer"));
}

}  // namespace
}  // namespace tavolin
