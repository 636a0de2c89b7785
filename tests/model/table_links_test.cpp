#include "tavolin/model/table_set.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

struct TableLinksTest : EngineTest {
    std::shared_ptr<CVLTable> Make(const std::string& name) {
        return engine_.CreateNewPrimaryTable(name, {"ID", "One", "Two"}, 0);
    }
    static std::string Records(const CVLTable& table) {
        std::string text;
        for (const auto& record : table.CVLRecordSet()->NewEnum()) {
            text += record->prop(0) + ":" + std::to_string(record->nKey()) + " ";
        }
        return text;
    }
    // Every table with its outgoing links and the slots of its referrers.
    std::string Links() const {
        std::string text;
        for (const auto& table : tables_->NewEnum()) {
            text += table->Key() + "(";
            for (int i = 0; i < kFieldCount; ++i) {
                EXPECT_EQ(table->FieldIsForeignKey(i), !table->LinkedTable(i).empty());
                if (table->FieldIsForeignKey(i)) {
                    text += std::to_string(i) + table->LinkedTable(i);
                }
            }
            text += "|";
            for (int i = 0; i < kFieldCount; ++i) text += table->ReferencedTable(i);
            text += ")";
        }
        return text;
    }
    std::shared_ptr<CVLTableSet> tables_ = engine_.CVLTableSet();
    std::shared_ptr<CVLTable> a_ = Make("A"), b_ = Make("B"), c_ = Make("C");
};

// A link is a name: in another set it would mean nothing, or another table.
TEST_F(TableLinksTest, RefusesWhatIsNotThereAndTablesOfAnotherSet) {
    NewDatabase other("other", FolderPath());
    const auto stranger = other.CreateNewPrimaryTable("B", {"ID"});
    EXPECT_EQ(a_->Link(1, b_), b_);
    const std::string before = Links();
    for (const char* name : {"Link", "Unlink", "DeleteLinks"}) {
        ExpectError(kInvalidCall, "CVLTable:" + std::string(name) + " Method",
                    "Invalid procedure call or argument", [&] {
                        if (*name == 'L') a_->Link(2, stranger);
                        if (*name == 'U') a_->Unlink(stranger);
                        if (*name == 'D') a_->DeleteLinks(other.CVLTableSet());
                    });
        EXPECT_EQ(Links(), before);
    }
    ExpectError(N::GetReferencedFldNotFoundError(), "CVLTable:Link Method",
                "Referenced Field Not Found!", [&] { a_->Link(10, "B"); });
    ExpectError(N::GetTableNotFoundError(), "CVLTable:Unlink Method", "Table: 9 Not Found!",
                [&] { a_->Unlink(9); });
    EXPECT_EQ(Links(), before);
    EXPECT_EQ(stranger->Count(), 0);
    engine_.AddRecord("A", 1, {"1", "x"});
    EXPECT_EQ(Records(*b_), "x:1 ");
}

TEST_F(TableLinksTest, FillsAlongChains) {
    std::string events;
    for (const auto& table : {a_, b_}) {
        table->OnFieldSetAsForeignKey.Connect([&](const auto& field) { events += field + " "; });
    }
    a_->Link(1, b_);
    b_->Link(0, c_);
    for (const auto& table : {a_, b_, c_}) {
        table->OnRecordAdd.Connect([&, name = table->Key()](const auto&) { events += name; });
    }
    const auto record = a_->Add(tables_, 7, {"1", "v"});
    EXPECT_EQ(Records(*b_) + Records(*c_), "v:7 v:7 ");
    ExpectError(N::GetRecordAddError(), "CVLTable:Add Method",
                "The Record That Is Being Added Already Exists In DataBase!", [&] {
                    a_->Add(tables_, 7, {"1", "v"});
                });
    EXPECT_EQ(events, "One ID CBA");
    a_->Update(tables_, record, {"1", "w"});  // with the table's type as the number
    EXPECT_EQ(Records(*b_) + Records(*c_), "v:7 w:1 v:7 w:1 ");
    a_->Update(tables_, record, {"1", ""});
    EXPECT_EQ(b_->Count(), 2);
    b_->SetPrimaryKeyFields(1);  // a one-field record has the empty key there now
    a_->Add(tables_, 1, {"2", "n1"});
    a_->Add(tables_, 1, {"3", "n2"});
    EXPECT_EQ(b_->Count(), 3);
    EXPECT_EQ(a_->Count(), 3);

    b_->SetPrimaryKeyFields(0);  // who was told of a record is told when it is taken back
    c_->OnRecordRemove.Connect([&](const auto& gone) { events += "-" + gone->prop(0); });
    const auto refuse = b_->OnRecordAdd.Connect([](const auto&) { throw Error(kOutOfMemory); });
    events.clear();
    EXPECT_EQ(ErrorNumber([&] { a_->Add(tables_, 1, {"6", "short"}); }), kOutOfMemory);
    EXPECT_EQ(events, "CB-short");
    EXPECT_EQ(a_->Count() + b_->Count(), 6);
    b_->OnRecordAdd.Disconnect(refuse);

    c_->Link(0, a_);  // in a circle
    a_->Add(tables_, 1, {"4", "deep"});
    tables_->Remove("C");
    const auto before = Records(*a_) + Records(*b_);
    ExpectError(N::GetTableNotFoundError(), "CVLTable:Add Method", "Table Not Found!", [&] {
        a_->Add(tables_, 1, {"5", "lost"});
    });
    EXPECT_EQ(Records(*a_) + Records(*b_), before);
}

TEST_F(TableLinksTest, KeepsAllOfMoreThanTenReferrers) {
    for (int i = 0; i < 11; ++i) {
        const auto referrer = Make("R" + std::to_string(i));
        referrer->Add(tables_, 1, {"v" + std::to_string(i)});
        referrer->Link(0, a_);
        if (i < 10) {
            EXPECT_EQ(a_->ReferencedTable(i), referrer->Key());
        }
    }
    const auto last = tables_->Item("R10");
    EXPECT_EQ(last->LinkedTable(0), "A");
    EXPECT_EQ(a_->Count(), 11);
    a_->FreeFromInOutLinks();
    EXPECT_FALSE(last->FieldIsForeignKey(0) || a_->IsReferenced());
    EXPECT_EQ(a_->SpecificType(), isPrimaryTable);
    last->Link(0, "A");
    EXPECT_EQ(a_->ReferencedTable(0), "R10");
}

TEST_F(TableLinksTest, DeletesWhatOnlyItsLinksReferTo) {
    const auto d = Make("D"), e = Make("E"), f = Make("F");
    a_->Link(1, b_);
    b_->Link(1, c_);
    c_->Link(1, d);
    c_->Link(2, a_);  // back to where it begins
    f->Link(1, d);
    a_->Link(2, d);
    b_->Link(2, e);
    tables_->Remove("E");
    a_->DeleteLinks(tables_);
    EXPECT_EQ(Links(), "A(2D|)D(|F)F(1D|)");
    a_->Unlink(d);
    f->DeleteLinks(tables_);
    EXPECT_EQ(Links(), "A(|)F(|)");

    const auto g = Make("G"), h = Make("H"), k = Make("K");
    g->Link(1, h);
    h->Link(1, k);
    tables_->Remove("G");  // its links lead nowhere
    EXPECT_EQ(ErrorNumber([&] { g->DeleteLinks(tables_); }), kInvalidCall);
    a_->Link(1, h);  // beside the slot that G has left
    a_->DeleteLinks(tables_);
    EXPECT_EQ(Links(), "A(1H|)F(|)H(1K|G)K(|H)");
    for (const char* name : {"H", "K"}) engine_.DeleteTable(name, false);

    // Far deeper than calls may nest.
    auto previous = a_;
    for (int i = 0; i < 3000; ++i) {
        auto next = tables_->Add("T" + std::to_string(i), isPrimaryTable);
        previous->Link(0, next);
        previous = next;
    }
    a_->DeleteLinks(tables_);
    EXPECT_EQ(tables_->Count(), 2);
}

}  // namespace
}  // namespace tavolin
