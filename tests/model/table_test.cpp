#include "tavolin/model/table.h"

#include "tavolin/model/attachment_set.h"
#include "tavolin/model/table_set.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

using N = CVLErrorNum;

class TableTest : public EngineTest {
  protected:
    std::shared_ptr<CVLRecord> Add(const FieldTexts& fields) {
        return table_->Add(tables_, 1, fields);
    }
    // The keys of what a search finds, in order.
    std::string Found(std::string_view value, bool is_key = false, int field = 99) const {
        return Keys(*table_->Find(value, is_key, field));
    }
    static std::string Keys(const CVLTable& table) {
        std::string keys;
        for (const auto& record : table.CVLRecordSet()->NewEnum()) keys += record->Key();
        return keys;
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
    EXPECT_EQ(Found("B"), "123");
    EXPECT_EQ(Found("b", false, 1), "12");
    EXPECT_EQ(Found("aBc"), "13");  // in the third across two fields
    EXPECT_EQ(Found("abc", false, 1), "1");
    EXPECT_EQ(Found("\xC3\xA9T\xC3\x89"), "2");
    EXPECT_EQ(Found("2"), "2");
    EXPECT_EQ(Found("", false, 7), "123");
    EXPECT_EQ(Found(""), "123");
    EXPECT_EQ(Found("none"), "");
    EXPECT_EQ(Found("3", true) + Found("3", true, 42), "33");
    EXPECT_EQ(Found("", true), "");
    table_->GetRecord("1")->Key("Own");  // a search goes by the key that a record shows
    EXPECT_EQ(Found("OWN", true), "Own");
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
    EXPECT_EQ(Keys(*result), "abownd");
    EXPECT_EQ(result->GetRecord("a")->prop(1), "x");
    EXPECT_EQ(result->GetRecord(2)->prop(1).size(), 70000u);
    EXPECT_EQ(result->GetRecord("C")->Key(), "own");

    // The result changes.
    auto walk = result->CVLRecordSet()->NewEnum();
    EXPECT_EQ(walk.Next()->Key(), "a");
    result->Remove("b");
    EXPECT_EQ(walk.Next()->Key(), "own");
    result->CVLRecordSet()->Add({0, 99, 99, 99}, 5, {"new1", "mine"}, nullptr, {.before = "d"});
    EXPECT_EQ(Keys(*result), "aownnew1d");
    EXPECT_EQ(table_->GetRecord("new1")->prop(1), "z");
    EXPECT_EQ(table_->GetRecord("b")->prop(0), "b");
    EXPECT_EQ(table_->Count(), 103);
    EXPECT_EQ(ErrorNumber([&] { result->Add(nullptr, 1, {"D"}); }), N::GetRecordAddError());
}

}  // namespace
}  // namespace tavolin
