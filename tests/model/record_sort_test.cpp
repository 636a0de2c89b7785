// Sorting a record set, compared with the procedure that defines it.
#include <algorithm>
#include <array>
#include <random>

#include "tavolin/base/text.h"
#include "tavolin/base/utf16.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

using namespace std::string_literals;

struct RecordSortTest : EngineTest {
    std::shared_ptr<CVLRecord> Add(CVLRecordSet& set, const FieldTexts& props) {
        return set.Add(kFirst, 1, props);
    }
    CVLRecordSet set_;
};

std::u16string SortText(const CVLRecord& record, int field, bool placed) {
    std::u16string text = ToUtf16(Fold(record.prop(field)));
    for (int i = 0; i < kFieldCount; ++i) {
        if (i != field || (placed && field == 1)) text += ToUtf16(Fold(record.prop(i)));
    }
    return text;
}

// Straight insertion from the end, as slow as it is.
std::string InsertedKeys(const CVLRecordSet& set, int field) {
    struct Placed {
        std::u16string text;
        std::string key;
    };
    std::vector<Placed> result;
    for (const auto& record : set.NewEnum()) {
        std::size_t at = result.size();
        const std::u16string text = SortText(*record, field, false);
        while (at > 0 && text < result[at - 1].text) --at;
        result.insert(result.begin() + static_cast<std::ptrdiff_t>(at),
                      {SortText(*record, field, true), record->Key()});
    }
    std::string keys;
    for (const auto& placed : result) keys += placed.key + " ";
    return keys;
}

std::string RandomField(std::mt19937& random, unsigned kind) {
    static const std::string pieces[] = {
        "a",      "A",          "b",      "\0"s,  "ab",           "same long beginning ", "É", "é",
        "\uFFFD", "\U0001F600", "\uE000", "\xFF", "\xED\xA0\xBD", "\xED\xB8\x80",         "İ", "z"};
    const std::size_t choices = kind == 0 ? 3 : kind == 1 ? 6 : std::size(pieces);
    std::string text;
    for (auto n = random() % 4; n > 0; --n) text += pieces[random() % choices];
    return text;
}

TEST_F(RecordSortTest, EqualsStraightInsertion) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        CVLRecordSet set;
        const unsigned kind = round % 3;
        const unsigned fields = 2 + random() % 4;
        // Sets of thousands are sorted in another way than small ones.
        const std::string start(random() % 9, 'x');
        for (unsigned n = round < 8 ? 1200 : random() % 25; n > 0; --n) {
            std::array<std::string, kFieldCount> props;
            // The key tells the records apart, where it is sorted by as the last to decide; half of
            // them, whose first field changes, by their keys alone.
            props[0] = start + RandomField(random, kind) + "#" + std::to_string(n);
            for (unsigned i = 1; i < fields; ++i) props[i] = start + RandomField(random, kind);
            const auto record = Add(set, FieldTexts(props));
            if (round % 4 < 2) record->prop(0, start + RandomField(random, kind));
        }
        const int field = round % 2 ? 1 : static_cast<int>(random() % fields);
        const std::string wanted = InsertedKeys(set, field);
        EXPECT_TRUE(set.Sort(field));
        EXPECT_EQ(Keys(set), wanted) << "by field " << field;
        for (const auto& record : set.NewEnum()) EXPECT_EQ(set.Item(record->Key()), record);
    }
}

TEST_F(RecordSortTest, SortsTextsAndEmptiesAboveNine) {
    for (const char* value : {"10", "9", "1"}) Add(set_, {value});
    const auto walk_begun = set_.NewEnum();
    EXPECT_TRUE(set_.Sort(0));
    EXPECT_EQ(Keys(set_), "1 10 9 ");
    EXPECT_EQ(set_.FirstRecord()->Key(), "1");
    std::string old_order;
    for (auto walk = walk_begun; const auto record = walk.Next();) old_order += record->Key() + " ";
    EXPECT_EQ(old_order, "10 9 1 ");

    for (const int number : {-1, 256}) {
        EXPECT_EQ(ErrorNumber([&] { set_.Sort(number); }), kOverflow);
    }
    EXPECT_EQ(Keys(set_), "1 10 9 ");
    const auto held = set_.Item("9");
    EXPECT_TRUE(set_.Sort(10));
    EXPECT_EQ(set_.Count(), 0);
    EXPECT_TRUE(set_.CanAdd("9"));
    EXPECT_EQ(held->prop(0), "9");
    EXPECT_TRUE(set_.Sort(255));
    Add(set_, {"9"});
    EXPECT_EQ(Keys(set_), "9 ");
}

TEST_F(RecordSortTest, FilesUnderTheKeysOfTheMoment) {
    for (const char* value : {"c", "b", "a"}) Add(set_, {value});
    const auto a = set_.Item("a");
    const auto b = set_.Item("b");
    a->Key("b");
    EXPECT_EQ(ErrorNumber([&] { set_.Sort(0); }), kDuplicateKey);
    EXPECT_EQ(set_.Item(3), a);
    EXPECT_EQ(set_.Item("a"), a);
    b->Key("a");
    EXPECT_TRUE(set_.Sort(0));
    EXPECT_EQ(Keys(set_), "b a c ");
    EXPECT_EQ(set_.Item("b"), a);
    EXPECT_EQ(set_.Item("a"), b);
    set_.Remove("b");
    EXPECT_TRUE(set_.CanAdd("b"));
    EXPECT_EQ(Keys(set_), "a c ");
}

// A search's result and the table that was searched have orders of their own.
TEST_F(RecordSortTest, SortsAResultAlone) {
    const auto table = engine_.CreateNewPrimaryTable("T", {"ID", "Name"});
    for (const char* id : {"3", "1", "2"}) engine_.AddRecord(table, 1, {id, "x"});
    const auto found = table->Find("x");
    EXPECT_TRUE(found->Sort(0));
    EXPECT_EQ(Keys(*found->CVLRecordSet()), "1 2 3 ");
    EXPECT_EQ(Keys(*table->CVLRecordSet()), "3 1 2 ");
    EXPECT_TRUE(table->Sort(0));
    engine_.DeleteRecord("T", "2");
    found->Remove("3");
    EXPECT_EQ(Keys(*found->CVLRecordSet()), "1 2 ");
    EXPECT_EQ(Keys(*table->CVLRecordSet()), "1 3 ");
}

}  // namespace
}  // namespace tavolin
