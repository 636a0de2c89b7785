// Tables by themselves and in their set.
#include "tavolin/model/table_set.h"

#include "tavolin/model/attachment_set.h"
#include "tavolin/model/table.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

struct TableSetTest : EngineTest {
    std::shared_ptr<CVLTableSet> set_ = engine_.CVLTableSet();
};

TEST_F(TableSetTest, AddsAndUpdates) {
    ExpectNoEnds("CVLTableSet", "Table Not Found Error ", N::GetFirstTableError(),
                 {[&] { set_->FirstTable(); }, [&] { set_->LastTable(); },
                  [&] { set_->PreviousTable(1); }, [&] { set_->NextTable(0); }});
    std::string events;
    set_->OnTableAdd.Connect([&](const auto& table) { events += "+" + table->Key(); });
    set_->OnTableUpDate.Connect([&](const auto& table) { events += "=" + table->Key(); });
    set_->OnTableRemove.Connect(
        [&](const auto& table) { events += "-" + table->Key() + std::to_string(set_->Count()); });
    const auto records = std::make_shared<CVLRecordSet>();
    const auto table = set_->Add("T", isLinkedTable, records, {"ID", "", "City"});
    EXPECT_EQ(table->CVLRecordSet(), records);
    EXPECT_EQ(table->FieldName(2) + table->FieldLabel(2) + table->FieldName(1), "CityCity");
    EXPECT_EQ(table->SpecificType(), isLinkedTable);
    EXPECT_EQ(set_->Update("t", isLinkedTable, nullptr, {"", "", "Town"}), table);
    EXPECT_EQ(table->SpecificType(), isLinkedTable);
    EXPECT_EQ(table->FieldName(2) + table->FieldLabel(2) + table->FieldLabel(0), "CityTownID");
    set_->Update(1);
    EXPECT_EQ(table->SpecificType(), isPrimaryTable);
    EXPECT_EQ(table->FieldLabel(2), "Town");
    EXPECT_EQ(table->CVLRecordSet(), records);
    ExpectError(N::GetTableAddError(), "CVLTableSet:Add Method",
                "The Table That Is Being Added Already Exists In DataBase!",
                [&] { set_->Add("t", isPrimaryTable); });
    EXPECT_EQ(ErrorNumber([&] { set_->Add("", isPrimaryTable); }), kInvalidCall);
    EXPECT_TRUE(set_->CanAdd("") == false && set_->CanAdd("U"));
    for (const int type : {-1, 256, 257}) {
        const auto no_byte = static_cast<TableEnum>(type);
        const auto text = GetErrorMessage(kOverflow);
        ExpectError(kOverflow, "CVLTableSet:Add Method", text, [&] { set_->Add("U", no_byte); });
        ExpectError(kOverflow, "CVLTableSet:Update Method", text,
                    [&] { set_->Update(1, no_byte, nullptr, {"changed"}); });
        EXPECT_EQ(std::to_string(set_->Count()) + table->FieldLabel(0), "1ID");
    }
    for (const IndexKey& which : {IndexKey("1"), IndexKey(0), IndexKey(2)}) {
        ExpectError(N::GetTableUpDateError(), "CVLTableSet:Update Method", "Table Does Not Exist!",
                    [&] { set_->Update(which); });
        ExpectError(N::GetTableNotFoundError(), "CVLTableSet:Item Property Get", "Table Not Found!",
                    [&] { set_->Item(which); });
        ExpectError(N::GetTableNotFoundError(), "CVLTableSet:Remove Method", "Table Not Found!",
                    [&] { set_->Remove(which); });
    }
    EXPECT_EQ(set_->Item("T"), table);
    set_->Remove("T");
    EXPECT_EQ(ErrorNumber([&] { set_->Item("T"); }), N::GetTableNotFoundError());
    EXPECT_EQ(events, "+T=T=T-T0");

    set_->Add("Odd", static_cast<TableEnum>(255));
    engine_.TransactionBegin();
    engine_.TansactionAbort();
    EXPECT_EQ(engine_.GetTable("Odd")->SpecificType(), 255);
}

TEST_F(TableSetTest, RecordsOfTwoTablesServeTheOtherWhenOneGetsItsOwn) {
    const auto one = set_->Add("One", isPrimaryTable), two = set_->Add("Two", isPrimaryTable);
    const auto shared = one->CVLRecordSet();
    const auto add = [&](const char* key) {
        return ErrorNumber([&] { shared->Add(kFirst, 1, {key}); });
    };
    two->CVLRecordSet(shared);
    two->CVLRecordSet(std::make_shared<CVLRecordSet>());
    EXPECT_EQ(add("a"), 0);
    set_->Add("Three", isPrimaryTable, shared);
    set_->Remove("Three");
    one->CVLRecordSet(std::make_shared<CVLRecordSet>());
    EXPECT_EQ(add("b"), N::GetUserPermissionToRWError());
}

struct TableTest : EngineTest {
    std::shared_ptr<CVLRecord> Add(const FieldTexts& fields) {
        return table_->Add(tables_, 1, fields);
    }
    // The keys of what a search finds, in order.
    std::string Found(std::string_view value, bool is_key = false, int field = 99) const {
        return Keys(*table_->Find(value, is_key, field)->CVLRecordSet());
    }

    std::shared_ptr<CVLTableSet> tables_ = engine_.CVLTableSet();
    std::shared_ptr<CVLTable> table_ =
        engine_.CreateNewPrimaryTable("People", {"ID", "Name", "City"}, 0);
};

TEST_F(TableTest, ChecksFieldNumbers) {
    ExpectError(N::GetFieldOutOfRangeError(), "CVLTable:FieldLabel Property Let",
                "Field Is Out Of Range(0-9)", [&] { table_->FieldLabel(10, "x"); });
    EXPECT_EQ(ErrorNumber([&] { table_->LinkedTable(10); }), kSubscriptOutOfRange);
    EXPECT_EQ(ErrorNumber([&] { table_->ReferencedTable(10, "x"); }), kSubscriptOutOfRange);
    EXPECT_EQ(ErrorNumber([&] { table_->FieldIsForeignKey(10); }), kSubscriptOutOfRange);
    for (int field : {-1, 256}) {
        EXPECT_EQ(ErrorNumber([&] { table_->FieldName(field); }), kOverflow);
        EXPECT_EQ(ErrorNumber([&] { table_->LinkedTable(field); }), kOverflow);
        EXPECT_EQ(ErrorNumber([&] { table_->Find("x", false, field); }), kOverflow);
        EXPECT_EQ(ErrorNumber([&] { table_->SetPrimaryKeyFields(0, field); }), kOverflow);
    }
}

TEST_F(TableTest, KeysRecordsByItsPrimaryKey) {
    EXPECT_EQ(table_->SetPrimaryKeyFields(), (PrimaryKeyType{0, 99, 99, 99}));
    EXPECT_EQ(table_->SetPrimaryKeyFields(99, 3), (PrimaryKeyType{99, 3, 99, 99}));
    EXPECT_EQ(table_->SetPrimaryKeyFields(2, 0), (PrimaryKeyType{2, 0, 99, 99}));
    EXPECT_EQ(ErrorNumber([&] { table_->SetPrimaryKeyFields(1, 10); }),
              N::GetFieldOutOfRangeError());
    EXPECT_EQ(Add({"y", "", "x"})->Key(), "xy");
    table_->PrimaryKey({1, 99, 99, 99});  // records that are there keep their keys
    EXPECT_EQ(Add({"a", "b", "c"})->Key(), "b");
    EXPECT_EQ(table_->GetRecord("XY")->prop(0), "y");
    EXPECT_FALSE(table_->CanAdd("B"));
    EXPECT_EQ(table_->AttachToRecord("B", "map.png", aPicture)->Key(), "b");
    EXPECT_EQ(table_->GetRecord("b")->CVLAttachmentSet()->Item("MAP.PNG")->nKey(), 1);
    EXPECT_EQ(table_->Count(), 2);
}

TEST_F(TableTest, Finds) {
    Add({"1", "xABCx", "end a"});
    Add({"2", "beg", "\xC3\x89t\xC3\xA9"});
    Add({"3", "ra", "bc"});
    EXPECT_EQ(Found("aBc"), "1 3 ");  // in the third across two fields
    EXPECT_EQ(Found("abc", false, 1), "1 ");
    EXPECT_EQ(Found("\xC3\xA9T\xC3\x89"), "2 ");
    EXPECT_EQ(Found("", false, 7), "1 2 3 ");
    EXPECT_EQ(Found("3", true) + Found("3", true, 42), "3 3 ");
    EXPECT_EQ(Found("", true), "");
    table_->GetRecord("1")->Key("Own");  // a search goes by the key that a record shows
    EXPECT_EQ(Found("OWN", true), "Own ");
    EXPECT_EQ(Found("1", true), "");
    EXPECT_EQ(ErrorNumber([&] { table_->Find("x", false, 10); }), N::GetFieldOutOfRangeError());
}

TEST_F(TableTest, FindsTheSameRecordsInATableOfItsOwn) {
    for (const char* key : {"a", "b", "c", "d"}) Add({key, "x"});
    table_->FieldLabel(1, "Label");
    const auto result = table_->Find("x");
    EXPECT_EQ(result->FieldLabel(1) + result->FieldName(1), "LabelName");
    EXPECT_EQ(result->PrimaryKey(), table_->PrimaryKey());
    EXPECT_EQ(result->GetRecord("B"), table_->GetRecord("b"));

    // The original changes.
    table_->Remove("a");
    table_->GetRecord("b")->prop(1, std::string(70000, 'y'));
    table_->GetRecord("c")->Key("own");
    for (int i = 0; i < 100; ++i) Add({"new" + std::to_string(i), "z"});
    EXPECT_EQ(Keys(*result->CVLRecordSet()), "a b own d ");
    EXPECT_EQ(result->GetRecord("a")->prop(1), "x");
    EXPECT_EQ(result->GetRecord(2)->prop(1).size(), 70000u);
    EXPECT_EQ(result->GetRecord("C")->Key(), "own");

    // The result changes.
    auto walk = result->CVLRecordSet()->NewEnum();
    EXPECT_EQ(walk.Next()->Key(), "a");
    result->Remove("b");
    EXPECT_EQ(walk.Next()->Key(), "own");
    result->CVLRecordSet()->Add({0, 99, 99, 99}, 5, {"new1", "mine"}, nullptr, {.before = "d"});
    EXPECT_EQ(Keys(*result->CVLRecordSet()), "a own new1 d ");
    EXPECT_EQ(table_->GetRecord("new1")->prop(1), "z");
    EXPECT_EQ(table_->GetRecord("b")->prop(0), "b");
    EXPECT_EQ(table_->Count(), 103);
    EXPECT_EQ(ErrorNumber([&] { result->Add(nullptr, 1, {"D"}); }), N::GetRecordAddError());
}

}  // namespace
}  // namespace tavolin
