#include "tavolin/model/table_set.h"

#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

using N = CVLErrorNum;

class TableSetTest : public EngineTest {
  protected:
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

}  // namespace
}  // namespace tavolin
