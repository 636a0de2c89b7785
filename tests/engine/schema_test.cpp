// Tables through the engine: made, found, linked, unlinked, deleted.
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

struct SchemaTest : EngineTest {
    SchemaTest() {
        engine_.OnTableCreation.Connect([this](const auto& name) { events_ += "+" + name; });
        engine_.OnLinkedTableCreation.Connect([this](const auto& name) { events_ += "~" + name; });
        engine_.OnTableDeletion.Connect([this](const auto& name) { events_ += "-" + name; });
        engine_.OnLinkedTableDeletion.Connect([this](const auto& name) { events_ += "/" + name; });
    }
    std::string events_;
};

TEST_F(SchemaTest, ALinkedTableIsNamedByItsFieldAndItsParent) {
    const auto customers = engine_.CreateNewPrimaryTable("Customers", {"ID", "City"});
    engine_.AddRecord("Customers", 1, {"7", "Paris"});
    engine_.AddRecord("Customers", 2, {"8", "paris"});
    const auto cities = engine_.CreateNewLinkedTable("Customers", "City", {"Name"});
    EXPECT_EQ(cities->Key(), "CityCustomers");
    EXPECT_EQ(cities->PrimaryKey(), (PrimaryKeyType{0, 99, 99, 99}));
    EXPECT_EQ(customers->LinkedTable(1), "CityCustomers");
    EXPECT_EQ(cities->SpecificType(), isLinkedTable);
    EXPECT_EQ(cities->Count(), 1);
    EXPECT_EQ(engine_.CreateNewLinkedTable(1, 0, {"x"})->Key(), "ID1");
    EXPECT_EQ(engine_.CreateNewLinkedTable(customers, 0, {"x"})->Key(), "IDCustomers");
    EXPECT_EQ(engine_.GetLinkedTable("customers", "City"), cities);
    EXPECT_EQ(engine_.GetLinkedTable(1, 1), cities);
    EXPECT_EQ(engine_.GetTable("ID1")->SpecificType(), isPrimaryTable);  // its field moved on
    EXPECT_EQ(events_, "+Customers~CityCustomers~ID1~IDCustomers");
}

TEST_F(SchemaTest, FailuresHaveTheirTextsAndChangeNothing) {
    engine_.CreateNewPrimaryTable("A", {"ID", "Ref"});
    engine_.CreateNewPrimaryTable("RefA", {"ID"});
    const auto expect = [&](std::int32_t number, const char* member, const char* text,
                            const auto& call) {
        ExpectError(number, std::string("CVLDBEngine:") + member + " Method", text, call);
    };
    const auto taken = Num::GetNewTableCreationError(), missing = Num::GetTableNotFoundError();
    events_.clear();
    const std::string report = engine_.LogReport();
    expect(taken, "CreateNewPrimaryTable", "The Table a That Is Being Created Already Exists!",
           [&] { engine_.CreateNewPrimaryTable("a", {"ID"}); });
    expect(5, "CreateNewPrimaryTable", "Invalid procedure call or argument",
           [&] { engine_.CreateNewPrimaryTable("", {"ID"}); });
    expect(taken, "CreateNewLinkedTable",
           "The Linked Table RefA That Is Being Created Already Exists!",
           [&] { engine_.CreateNewLinkedTable("A", "Ref", {"ID"}); });
    expect(missing, "CreateNewLinkedTable", "Referenced Table none Not Found!",
           [&] { engine_.CreateNewLinkedTable("none", 0, {"ID"}); });
    expect(missing, "UnlinkTables", "Referenced Table 9 OR A Not Found!",
           [&] { engine_.UnlinkTables(9, "A"); });
    expect(missing, "GetLinkedTable", "Table A Not Found!",
           [&] { engine_.GetLinkedTable("A", 1); });
    expect(missing, "GetTable", "Table 0 Not Found!", [&] { engine_.GetTable(0); });
    expect(missing, "DeleteTable", "Linked Table none Not Found!",
           [&] { engine_.DeleteTable("none"); });
    EXPECT_EQ(ErrorNumber([&] { engine_.CreateNewPrimaryTable("B", {"ID"}, 10); }),
              Num::GetFieldOutOfRangeError());
    EXPECT_EQ(ErrorNumber([&] { engine_.CreateNewPrimaryTable("B", {"ID"}, 0, 256); }), 6);
    EXPECT_EQ(engine_.LogReport(), report);
    EXPECT_EQ(Keys(*engine_.CVLTableSet()), "A RefA ");
    EXPECT_EQ(events_, "");
}

// What exactly a cascade takes is the table's business.
TEST_F(SchemaTest, DeletionTakesAlongWhatItReferredToUnlessTold) {
    for (const bool cascade : {true, false}) {
        engine_.CreateNewDB(cascade ? "all" : "one", FolderPath());
        for (const char* name : {"Orders", "Items", "Parts", "Other"})
            engine_.CreateNewPrimaryTable(name, {"ID", "Ref"});
        engine_.LinkTables("Orders", 1, "Items");
        engine_.LinkTables("Items", 1, "Parts");
        engine_.LinkTables("Other", 1, "Orders");
        events_.clear();
        EXPECT_TRUE(engine_.DeleteTable("Orders", cascade));
        EXPECT_EQ(Keys(*engine_.CVLTableSet()), cascade ? "Other " : "Items Parts Other ");
        EXPECT_TRUE(engine_.DeleteTable("Other"));
        EXPECT_EQ(events_, "/Orders-Other");
    }
}

}  // namespace
}  // namespace tavolin
