// Tables and records through the engine, cascades and events above all.
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
    engine_.AddRecord("A", 1, {"1"});
    const auto expect = [&](std::int32_t number, const char* member, const char* text,
                            const auto& call) {
        ExpectError(number, std::string("CVLDBEngine:") + member + " Method", text, call);
    };
    const auto taken = Num::GetNewTableCreationError(), missing = Num::GetTableNotFoundError(),
               no_record = Num::GetRecordNotFoundError();
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
    const char* const none = "Table none Not Found!";
    expect(no_record, "GetRecordSet", none, [&] { engine_.GetRecordSet("none"); });
    expect(no_record, "GetRecord", "Table 3 Not Found!", [&] { engine_.GetRecord(3, 1); });
    expect(no_record, "GetRecord", "Record 2 Not Found!", [&] { engine_.GetRecord("A", 2); });
    expect(no_record, "RemoveRecord", none, [&] { engine_.DeleteRecord("none", 1); });
    expect(Num::GetValueNotFoundError(), "Find", "Value: 1 Not Found In DataBase!",
           [&] { engine_.Find("1", false, nullptr, 1); });
    EXPECT_EQ(ErrorNumber([&] { engine_.GetRecord("A", "x"); }), Num::GetDBNotSetError());
    EXPECT_EQ(ErrorNumber([&] { engine_.DeleteRecord("A", "x"); }), Num::GetDBNotSetError());
    EXPECT_EQ(engine_.LogReport(), report);
    EXPECT_EQ(Keys(*engine_.CVLTableSet()) + Keys(*engine_.GetRecordSet("A")), "A RefA 1 ");
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

struct RecordsTest : EngineTest {
    RecordsTest() {
        engine_.OnRecordRemove.Connect(
            [this](const auto& record) { removed_ += record->Key() + " "; });
    }
    // The keys of a table's records in their order, as "1 2 3 ".
    std::string Keys(const char* table) { return tavolin::Keys(*engine_.GetRecordSet(table)); }
    std::string removed_;
};

// A ring of tables: the deeper records stand in the tables of the ones further up.
TEST_F(RecordsTest, ACascadeGoesAsDeepAsTheDataGoes) {
    constexpr int kDepth = 20'000;
    constexpr int kRing = 50;
    const auto name = [](int i) { return "T" + std::to_string(i % kRing); };
    for (int i = 0; i < kRing; ++i) engine_.CreateNewPrimaryTable(name(i), {"ID", "Next"});
    for (int i = 0; i < kDepth; ++i) {
        const std::string next = i + 1 < kDepth ? std::to_string(i + 1) : "";
        engine_.AddRecord(name(i), 1, {std::to_string(i), next});
    }
    for (int i = 0; i < kRing; ++i) engine_.LinkTables(name(i), 1, name(i + 1));
    int expected = kDepth;
    engine_.OnRecordRemove.Connect(
        [&](const auto& record) { EXPECT_EQ(record->Key(), std::to_string(--expected)); });
    engine_.DeleteRecord("T0", "0");
    EXPECT_EQ(expected, 0);
    for (int i = 0; i < kRing; ++i) EXPECT_EQ(engine_.GetTable(name(i))->Count(), 0);
}

TEST_F(RecordsTest, EventsComeFromTheSetTheTableAndTheEngineInThisOrder) {
    engine_.CreateNewPrimaryTable("Cities", {"Name"});
    const auto table = engine_.CreateNewPrimaryTable("T", {"ID", "City"});
    engine_.LinkTables("T", 1, "Cities");
    std::string events;
    const auto note = [&](const char* from) {
        return [&events, from](const auto& record) { events += from + record->Key() + " "; };
    };
    engine_.GetRecordSet("Cities")->OnRecordAdd.Connect(note("city:"));
    table->CVLRecordSet()->OnRecordAdd.Connect(note("set+"));
    table->OnRecordAdd.Connect(note("table+"));
    engine_.OnRecordAdd.Connect(note("engine+"));
    table->CVLRecordSet()->OnRecordRemove.Connect(note("set-"));
    table->OnRecordRemove.Connect(note("table-"));
    engine_.OnRecordRemove.Connect(note("engine-"));
    engine_.OnRecordUpDate.Connect(note("engine="));
    const auto record = engine_.AddRecord("T", 1, {"1", "Paris"});
    engine_.UpDateRecord("T", record, 1, {"1", "Rome"});
    EXPECT_EQ(events, "set+1 city:Paris table+1 engine+1 city:Rome engine=1 ");
    events.clear();
    engine_.DeleteRecord("T", "1", false);
    EXPECT_EQ(events, "set-1 table-1 engine-1 ");
}

TEST_F(RecordsTest, HandlersMayCallBack) {
    for (const char* name : {"A", "B", "D"}) engine_.CreateNewPrimaryTable(name, {"ID", "Ref"});
    engine_.LinkTables("A", 1, "B");
    // Adding while adding, and leaving.
    EventConnection connection = 0;
    connection = engine_.OnRecordAdd.Connect([&](const auto& record) {
        engine_.OnRecordAdd.Disconnect(connection);
        engine_.AddRecord("D", 1, {"copy of " + record->Key()});
    });
    engine_.AddRecord("A", 1, {"a", "b"});
    EXPECT_EQ(Keys("D"), "copy of a ");
    // Deleting what is in deletion: the dependent's event takes its referrer away.
    const auto meddler = engine_.OnRecordRemove.Connect([&](const auto& record) {
        if (record->Key() == "b") engine_.DeleteRecord("A", "a");
    });
    removed_.clear();
    engine_.DeleteRecord("A", "a");
    EXPECT_EQ(Keys("A") + Keys("B"), "");
    EXPECT_EQ(removed_, "b a ");  // each is told of once
    engine_.OnRecordRemove.Disconnect(meddler);
    // Another database in the middle of a deletion: the old one's records are out of reach, and
    // those of the new one are not taken for them.
    engine_.LinkTables("A", 2, "D");
    engine_.AddRecord("A", 1, {"a", "b", "d"});
    removed_.clear();
    engine_.OnRecordRemove.Connect([&](const auto&) {
        engine_.CreateNewDB("second", FolderPath());
        engine_.CreateNewPrimaryTable("D", {"ID"});
        engine_.AddRecord("D", 1, {"d"});
    });
    EXPECT_EQ(ErrorNumber([&] { engine_.DeleteRecord("A", "a"); }),
              Num::GetUserPermissionToDelError());
    EXPECT_EQ(engine_.DBName(), "second.cdb");
    EXPECT_EQ(removed_, "b ");
}

TEST_F(RecordsTest, WhatAHandlerThrowsLeavesAfterTheChange) {
    engine_.CreateNewPrimaryTable("T", {"ID"});
    engine_.OnRecordAdd.Connect([](const auto&) { throw std::runtime_error("no"); });
    ExpectError(51, "CVLDBEngine:AddRecord Method", "An internal malfunction has occurred",
                [&] { engine_.AddRecord("T", 1, {"1"}); });
    EXPECT_EQ(Keys("T"), "1 ");
    // Be it a lack of memory: what a deletion has taken along does not come back without it.
    engine_.CreateNewPrimaryTable("U", {"ID", "Ref"});
    engine_.LinkTables("U", 1, "T");
    for (const bool of_the_engine : {true, false}) {
        engine_.GetTable("U")->Add(engine_.CVLTableSet(), 1, {"u", "1"});
        const auto run_out = [](const auto& record) {
            if (record->Key() == "u") throw std::bad_alloc();
        };
        auto& event =
            of_the_engine ? engine_.OnRecordRemove : engine_.GetTable("U")->OnRecordRemove;
        const auto connection = event.Connect(run_out);
        EXPECT_EQ(ErrorNumber([&] { engine_.DeleteRecord("U", "u"); }), kOutOfMemory);
        event.Disconnect(connection);
        EXPECT_EQ(Keys("U") + Keys("T"), "");
        engine_.GetTable("T")->Add(engine_.CVLTableSet(), 1, {"1"});
    }
}

}  // namespace
}  // namespace tavolin
