// What every public member costs in a collection of a given size. scripts/bench --growth doubles
// the size and tells whose cost for one call, or for one element, grows with it; bench/guard keeps
// some of the counts.
#include <CLI/CLI.hpp>
#include <array>
#include <filesystem>
#include <functional>

#include "bench/meter.h"
#include "tavolin/base/clock.h"
#include "tavolin/tavolin.h"

namespace tavolin::bench {
namespace {

constexpr std::size_t kCalls = 1000;

// A database of one table to begin with, and the measuring of what is done with it.
class Trial {
  public:
    Trial(const Data& data, const std::string& folder, const char* name)
        : n(data.size()), data_(data), folder_(folder), name_(name) {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        engine.LogOn("bench", "secret");
        engine.CreateNewDB("growth", folder_, "secret");
        tables = engine.CVLTableSet();
        table = engine.CreateNewPrimaryTable("Records", {"Code", "Name", "Region", "Street"}, 0, 2);
        records = table->CVLRecordSet();
    }

    // Calls body(0), body(1) ...; what one call costs is not to depend on n.
    template <class Body>
    void Calls(Body&& body, std::size_t count = kCalls) {
        Measure("call", std::min(count, n / 4), std::forward<Body>(body));
    }
    // Calls body(0) to body(n - 1): adding, removing or visiting everything.
    template <class Body>
    void Each(Body&& body) {
        Measure("element", n, std::forward<Body>(body));
    }
    // Calls body() once, which has to go through everything.
    template <class Body>
    void Whole(Body&& body) {
        meter_.Measure(Title("element", n), std::forward<Body>(body));
    }

    void Fill() {
        for (std::size_t i = 0; i < n; ++i) table->Add(tables, 1, data_.record(i));
    }
    // Every value of field 8 is in two records; every value of field 4 in many.
    void FillLinked(int field) {
        Fill();
        engine.CreateNewPrimaryTable("Linked", {"Value"}, 0);
        engine.LinkTables("Records", field, "Linked");
    }
    // What is built when it is first needed is built now: a deletion with a cascade, by key.
    void DeleteOne() {
        engine.AddRecord("Records", 1, data_.spare(kCalls));
        engine.DeleteRecord("Records", Data::Key(data_.spare(kCalls)));
    }
    // Each record refers to the one before it.
    void FillChain() {
        engine.CreateNewPrimaryTable("Chain", {"ID", "Before"}, 0);
        engine.LinkTables("Chain", 1, "Chain");
        for (std::size_t i = 0; i < n; ++i) {
            engine.AddRecord("Chain", 1, {Number(i), i == 0 ? std::string_view() : Number(i - 1)});
        }
    }

    const Fields& Record(std::size_t i) const { return data_.record(i); }
    const Fields& Spare(std::size_t i) const { return data_.spare(i); }
    std::string Key(std::size_t i) const { return Data::Key(data_.record(i)); }
    // Keys of records far apart.
    std::string Scattered(std::size_t i) const { return Key(Place(i)); }
    std::size_t Place(std::size_t i) const { return i * 7919 % n; }
    std::string_view Number(std::size_t i) {
        while (numbers_.size() <= i)
            numbers_.push_back(
                std::make_unique<std::string>("N" + std::to_string(numbers_.size())));
        return *numbers_[i];
    }
    const std::string& folder() const { return folder_; }
    std::string file() const { return folder_ + "/growth.cdb"; }

    const std::size_t n;
    CVLDBEngine engine;
    std::shared_ptr<CVLTableSet> tables;
    std::shared_ptr<CVLTable> table;
    std::shared_ptr<CVLRecordSet> records;

  private:
    std::string Title(const char* unit, std::size_t count) const {
        return std::string(name_) + "\t" + unit + "\t" + std::to_string(n) + "\t" +
               std::to_string(count);
    }
    template <class Body>
    void Measure(const char* unit, std::size_t count, Body&& body) {
        meter_.Measure(Title(unit, count), [&] {
            for (std::size_t i = 0; i < count; ++i) body(i);
        });
    }

    const Data& data_;
    std::string folder_;
    const char* name_;
    Meter meter_;
    std::vector<std::unique_ptr<std::string>> numbers_;
};

struct Case {
    const char* name;
    std::function<void(Trial&)> run;
};

Date Second(std::size_t i) { return {MakeDate(2000, 1, 1).seconds + static_cast<std::int64_t>(i)}; }
std::int32_t Position(std::size_t i) { return static_cast<std::int32_t>(i) + 1; }

// Runs body(), which raises.
template <class Body>
void Refused(Body&& body) {
    try {
        body();
    } catch (const Error&) {
        return;
    }
    std::fprintf(stderr, "nothing was refused\n");
    std::exit(1);
}

const std::vector<Case>& RecordCases() {
    static const std::vector<Case> cases = {
        {"AddRecord",
         [](Trial& t) {
             t.Each([&](std::size_t i) { t.engine.AddRecord("Records", 1, t.Record(i)); });
         }},
        {"AddRecord, Before 1",
         [](Trial& t) {
             t.engine.AddRecord("Records", 1, t.Spare(0));
             t.Each([&](std::size_t i) {
                 t.engine.AddRecord("Records", 1, t.Record(i), nullptr, {.before = 1});
             });
         }},
        {"AddRecord, After the middle",
         [](Trial& t) {
             t.engine.AddRecord("Records", 1, t.Spare(0));
             t.Each([&](std::size_t i) {
                 t.engine.AddRecord("Records", 1, t.Record(i), nullptr, {.after = i / 2 + 1});
             });
         }},
        {"AddRecord, Before a key",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) {
                 const std::string key = t.Scattered(i);
                 t.engine.AddRecord("Records", 1, t.Spare(i), nullptr,
                                    {.before = std::string_view(key)});
             });
         }},
        {"AddRecord, linked field",
         [](Trial& t) {
             t.FillLinked(8);
             t.Calls([&](std::size_t i) { t.engine.AddRecord("Records", 1, t.Spare(i)); });
         }},
        {"AddRecord, key taken",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) {
                 Refused([&] { t.engine.AddRecord("Records", 1, t.Record(i)); });
             });
         }},
        {"UpDateRecord",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) {
                 Fields fields = t.Record(t.Place(i));
                 fields[7] = fields[1];
                 t.engine.UpDateRecord("Records", t.records->Item(t.Scattered(i)), 1, fields);
             });
         }},
        {"UpDateRecord, linked field",
         [](Trial& t) {
             t.FillLinked(8);
             t.Calls([&](std::size_t i) {
                 Fields fields = t.Record(t.Place(i));
                 fields[8] = t.Spare(i)[8];
                 t.engine.UpDateRecord("Records", t.records->Item(t.Scattered(i)), 1, fields);
             });
         }},
        {"GetRecord by key",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) { t.engine.GetRecord("Records", t.Scattered(i)); });
         }},
        {"GetRecords by key",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) {
                 const std::string one = t.Scattered(i), other = t.Scattered(i + 1);
                 t.engine.GetRecords("Records", std::array<IndexKey, 2>{one, other});
             });
         }},
        {"GetRecord by position",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) { t.engine.GetRecord("Records", t.Place(i) + 1); });
         }},
        {"GetRecord by position, after edits",
         [](Trial& t) {
             t.Fill();
             t.table->Sort(6);
             for (std::size_t i = 0; i < t.n / 4; ++i) {
                 t.table->Add(t.tables, 1, t.Spare(i), nullptr, {.before = t.Place(i) + 1});
                 t.table->Remove(Position(t.Place(i + 5)));
             }
             t.Calls([&](std::size_t i) { t.engine.GetRecord("Records", t.Place(i) + 1); });
         }},
        {"GetRecord, unknown key",
         [](Trial& t) {
             t.Fill();
             t.Calls(
                 [&](std::size_t) { Refused([&] { t.engine.GetRecord("Records", "no such"); }); });
         }},
        {"CanAdd",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) { t.records->CanAdd(t.Scattered(i)); });
         }},
        {"DeleteRecord, always the first",
         [](Trial& t) {
             t.Fill();
             t.Each([&](std::size_t) { t.engine.DeleteRecord("Records", 1); });
         }},
        {"DeleteRecord, always the last",
         [](Trial& t) {
             t.Fill();
             t.Each(
                 [&](std::size_t i) { t.engine.DeleteRecord("Records", Position(t.n - i - 1)); });
         }},
        {"DeleteRecord by key",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) { t.engine.DeleteRecord("Records", t.Scattered(i)); });
         }},
        {"DeleteRecord, cascade, value in two",
         [](Trial& t) {
             t.FillLinked(8);
             t.DeleteOne();
             t.Calls([&](std::size_t i) { t.engine.DeleteRecord("Records", t.Scattered(i)); });
         }},
        {"DeleteRecord, cascade, value in many",
         [](Trial& t) {
             t.FillLinked(4);
             t.DeleteOne();
             t.Calls([&](std::size_t i) { t.engine.DeleteRecord("Records", t.Scattered(i)); });
         }},
        {"DeleteRecord, cascade, unique value",
         [](Trial& t) {
             t.FillLinked(0);
             t.DeleteOne();
             t.Calls([&](std::size_t i) { t.engine.DeleteRecord("Records", t.Scattered(i)); });
         }},
        {"DeleteRecord, cascade, the first one",
         [](Trial& t) {
             t.FillLinked(8);
             t.Whole([&] { t.engine.DeleteRecord("Records", 1); });
         }},
        {"DeleteRecord, what is referred to",
         [](Trial& t) {
             t.FillLinked(8);
             t.Calls([&](std::size_t) { t.engine.DeleteRecord("Linked", 1); });
         }},
        {"DeleteRecord, a chain of all",
         [](Trial& t) {
             t.FillChain();
             t.Whole([&] { t.engine.DeleteRecord("Chain", Position(t.n - 1)); });
         }},
        {"DeleteRecord, a chain from its end",
         [](Trial& t) {
             t.FillChain();
             t.Each([&](std::size_t) { t.engine.DeleteRecord("Chain", 1); });
         }},
        {"CVLRecordSet::Remove, the first",
         [](Trial& t) {
             t.Fill();
             t.Each([&](std::size_t) { t.records->Remove(1); });
         }},
        {"Find by key",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) { t.engine.Find(t.Scattered(i), true, t.table); });
         }},
        {"Find in one field",
         [](Trial& t) {
             t.Fill();
             t.Whole([&] { t.engine.Find(kRareNeedle, false, t.table, 1); });
         }},
        {"Find in all fields",
         [](Trial& t) {
             t.Fill();
             t.Whole([&] { t.engine.Find(kRareNeedle, false, t.table); });
         }},
        {"Find everything",
         [](Trial& t) {
             t.Fill();
             t.Whole([&] { t.engine.Find("", false, t.table); });
         }},
        {"Add to and Remove from what was found",
         [](Trial& t) {
             t.Fill();
             const auto found = t.engine.Find("", false, t.table);
             found->Add(nullptr, 1, t.Spare(kCalls));
             found->Remove(1);  // the first, which files all that was found
             t.Calls([&](std::size_t i) {
                 found->Add(nullptr, 1, t.Spare(i));
                 found->Remove(1);
             });
         }},
        {"Sort", [](Trial& t) { t.Fill(), t.Whole([&] { t.table->Sort(6); }); }},
        {"Sort by field 1", [](Trial& t) { t.Fill(), t.Whole([&] { t.table->Sort(1); }); }},
        {"Sort, all equal in the field",
         [](Trial& t) { t.Fill(), t.Whole([&] { t.table->Sort(9); }); }},
        {"NextRecord",
         [](Trial& t) {
             t.Fill();
             t.Each([&](std::size_t i) {
                 if (t.records->NextRecordIsAvailable(Position(i)))
                     t.records->NextRecord(Position(i));
             });
         }},
        {"PreviousRecord",
         [](Trial& t) {
             t.Fill();
             t.Each([&](std::size_t i) {
                 if (i > 0) t.records->PreviousRecord(Position(i));
             });
         }},
        {"FirstRecord, LastRecord",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t) { t.records->FirstRecord(), t.records->LastRecord(); });
         }},
        {"NewEnum",
         [](Trial& t) {
             t.Fill();
             t.Whole([&] {
                 for (const auto& record : t.records->NewEnum()) Keep(record->nKey());
             });
         }},
        {"NewEnum, removing each",
         [](Trial& t) {
             t.Fill();
             t.Whole([&] {
                 for (const auto& record : t.records->NewEnum()) t.records->Remove(record->Key());
             });
         }},
        {"NewEnum, begun",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t) { t.records->NewEnum().Next(); });
         }},
        {"prop",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) {
                 const auto record = t.records->Item(t.Place(i) + 1);
                 record->prop(3, record->prop(1));
             });
         }},
        {"prop, longer and longer",
         [](Trial& t) {
             t.Fill();
             const auto record = t.records->Item(1);
             t.Calls([&](std::size_t i) { record->prop(3, std::string(i % 100, 'x')); });
         }},
        {"Key and nKey of a record",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) {
                 const auto record = t.records->Item(t.Place(i) + 1);
                 record->Key(record->Key() + "x");
                 record->nKey(record->nKey() + 1);
             });
         }},
        {"AttachToRecord",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) { t.table->AttachToRecord(t.Scattered(i), "a.png"); });
         }},
        {"AttachToRecord, all to one",
         [](Trial& t) {
             t.table->Add(t.tables, 1, t.Record(0));
             t.Each([&](std::size_t i) { t.table->AttachToRecord(1, t.Number(i)); });
         }},
        {"CVLAttachmentSet::Update, Remove",
         [](Trial& t) {
             t.table->Add(t.tables, 1, t.Record(0));
             const auto set = t.records->Item(1)->CVLAttachmentSet();
             for (std::size_t i = 0; i < t.n; ++i) set->Add(t.Number(i), 1, "a.png", aPicture);
             t.Calls([&](std::size_t i) {
                 set->Update(t.Number(t.n - i - 1), "b.png", aSound);
                 set->NextAttachment(Position(i));
                 set->Remove(1);
             });
         }},
    };
    return cases;
}

const std::vector<Case>& TableCases() {
    static const std::vector<Case> cases = {
        {"LinkTables, filled from a full table",
         [](Trial& t) {
             t.Fill();
             t.engine.CreateNewPrimaryTable("Linked", {"Value"}, 0);
             t.Whole([&] { t.engine.LinkTables("Records", 8, "Linked"); });
         }},
        {"LinkTables, to itself",
         [](Trial& t) {
             t.Fill();
             t.Whole([&] { t.engine.LinkTables("Records", 8, "Records"); });
         }},
        {"UnlinkTables",
         [](Trial& t) {
             t.FillLinked(8);
             t.Whole([&] { t.engine.UnlinkTables("Records", "Linked"); });
         }},
        {"CreateNewLinkedTable",
         [](Trial& t) {
             t.Fill();
             t.Whole([&] { t.engine.CreateNewLinkedTable("Records", "Street", {"Value"}); });
         }},
        {"DeleteTable",
         [](Trial& t) {
             t.FillLinked(8);
             t.Whole([&] { t.engine.DeleteTable("Records"); });
         }},
        {"FieldLabel, FieldName",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t i) {
                 t.table->FieldLabel(3, t.Number(i));
                 t.table->FieldName(4, t.Number(i));
                 t.table->FieldIsForeignKey(3);
             });
         }},
        {"Key of a table, SetPrimaryKeyFields",
         [](Trial& t) {
             t.FillLinked(8);
             t.Calls([&](std::size_t i) {
                 t.engine.GetTable("Linked")->Key(t.Number(i));
                 t.engine.GetTable(t.Number(i))->Key("Linked");
                 t.table->SetPrimaryKeyFields(0, 2);
             });
         }},
        {"GetLinkedTable, GetRecordSet, GetTable",
         [](Trial& t) {
             t.FillLinked(8);
             t.Calls([&](std::size_t) {
                 t.engine.GetLinkedTable("Records", 8);
                 t.engine.GetRecordSet("Records");
                 t.engine.GetTable(2);
             });
         }},
        {"CVLRecordSet of a table",
         [](Trial& t) {
             t.Fill();
             const auto other = t.engine.CreateNewPrimaryTable("Other", {"Value"}, 0);
             t.Whole(
                 [&] { other->CVLRecordSet(t.engine.Find("", false, t.table)->CVLRecordSet()); });
         }},
        {"CVLRecordSet::ObjectState, there and back",
         [](Trial& t) {
             t.Fill();
             t.Whole([&] { t.records->ObjectState(t.records->ObjectState()); });
         }},
        {"CreateNewPrimaryTable",
         [](Trial& t) {
             const auto make = [&](std::size_t i) {
                 t.engine.CreateNewPrimaryTable(t.Number(i), {"ID"}, 0);
             };
             for (std::size_t i = 0; i < t.n / 40; ++i) make(i + t.n);
             t.Calls(make, 100);
         }},
        {"GetTable among many, by name and position",
         [](Trial& t) {
             for (std::size_t i = 0; i < t.n / 40; ++i)
                 t.engine.CreateNewPrimaryTable(t.Number(i), {"ID"}, 0);
             t.Calls([&](std::size_t i) {
                 t.engine.GetTable(t.Number(i * 31 % (t.n / 40)));
                 t.engine.GetTable(Position(i * 31 % (t.n / 40)));
             });
         }},
        {"AddRecord among many tables",
         [](Trial& t) {
             for (std::size_t i = 0; i < t.n / 40; ++i)
                 t.engine.CreateNewPrimaryTable(t.Number(i), {"ID"}, 0);
             t.Calls([&](std::size_t i) { t.engine.AddRecord("Records", 1, t.Record(i)); });
         }},
        {"DeleteTable among many",
         [](Trial& t) {
             for (std::size_t i = 0; i < t.n / 40 + 100; ++i)
                 t.engine.CreateNewPrimaryTable(t.Number(i), {"ID"}, 0);
             t.Calls([&](std::size_t i) { t.engine.DeleteTable(t.Number(i)); }, 100);
         }},
    };
    return cases;
}

const std::vector<Case>& DatabaseCases() {
    static const std::vector<Case> cases = {
        {"TransactionBegin",
         [](Trial& t) { t.Fill(), t.Whole([&] { t.engine.TransactionBegin(); }); }},
        {"TansactionAbort",
         [](Trial& t) {
             t.FillLinked(8);
             t.engine.TransactionBegin();
             t.Whole([&] { t.engine.TansactionAbort(); });
         }},
        {"TransactionCommit",
         [](Trial& t) {
             t.Fill();
             t.engine.TransactionBegin();
             t.Whole([&] { t.engine.TransactionCommit(); });
         }},
        {"SaveDB", [](Trial& t) { t.Fill(), t.Whole([&] { t.engine.SaveDB(); }); }},
        {"LoadDB",
         [](Trial& t) {
             t.FillLinked(8);
             t.engine.SaveDB();
             t.Whole([&] {
                 t.engine.LoadDB(t.file());
                 t.engine.DBLegalUser(t.engine.LogedOnUser(), Ownership);
                 t.engine.GetRecord("Records", t.Key(0));
             });
         }},
        {"GetDB",
         [](Trial& t) {
             t.Fill();
             t.engine.SaveDB();
             t.Whole([&] { t.engine.GetDB(t.file()); });
         }},
        {"CreateNewDB in the place of a full one",
         [](Trial& t) {
             t.Fill();
             t.table.reset(), t.tables.reset(), t.records.reset();
             t.Whole([&] { t.engine.CreateNewDB("other", t.folder()); });
         }},
        {"ChangeOwner, DBName, ChangePassword",
         [](Trial& t) {
             t.Fill();
             t.Calls(
                 [&](std::size_t i) {
                     t.engine.ChangePassword("", t.Number(i));
                     t.engine.DBName("name.cdb");
                     t.engine.LogDBActivities();
                 },
                 100);
         }},
        {"GetArrayRecords",
         [](Trial& t) { t.Fill(), t.Whole([&] { t.engine.GetArrayRecords("Records"); }); }},
        {"GetArrayFields, GetArrayTables",
         [](Trial& t) {
             t.Fill();
             t.Calls([&](std::size_t) {
                 t.engine.GetArrayFields("Records");
                 t.engine.GetArrayTables();
             });
         }},
        {"GetArrayAttachments",
         [](Trial& t) {
             t.Fill();
             t.Calls(
                 [&](std::size_t i) { t.engine.GetArrayAttachments("Records", t.Scattered(i)); });
         }},
        {"CreateNewUser",
         [](Trial& t) {
             t.Each([&](std::size_t i) {
                 t.engine.CreateNewUser(t.Number(i), "pw", true, true, true);
             });
         }},
        {"GetUser, UserExists, UserName, Update",
         [](Trial& t) {
             const auto users = t.engine.CVLDBUserSet();
             for (std::size_t i = 0; i < t.n; ++i) users->Add(t.Number(i), "pw", true, true, true);
             t.Calls([&](std::size_t i) {
                 const auto user = t.engine.GetUser(t.Number(t.Place(i)), "pw");
                 t.engine.UserExists(t.Number(t.Place(i)));
                 user->UserName(t.Number(t.n + i));
                 users->Update(t.Number(t.n + i), true);
                 users->NextUser(Position(i));
             });
         }},
        {"DBLegalUser, LogOnAsUser",
         [](Trial& t) {
             const auto users = t.engine.CVLDBUserSet();
             for (std::size_t i = 0; i < t.n; ++i) users->Add(t.Number(i), "pw", true, true, true);
             const auto owner = t.engine.LogedOnUser();
             t.Calls([&](std::size_t i) {
                 t.engine.DBLegalUser(users->Item(1), Undefined);
                 t.engine.DBLegalUser(owner, Ownership);
                 Keep(t.engine.LogedOnIsOwner(users->Item(Position(i))));
             });
         }},
        {"CVLDBUserSet::Remove",
         [](Trial& t) {
             const auto users = t.engine.CVLDBUserSet();
             for (std::size_t i = 0; i < t.n; ++i) users->Add(t.Number(i), "pw", true, true, true);
             t.Calls([&](std::size_t i) { users->Remove(t.Number(i)); });
         }},
        {"GetArrayUsers",
         [](Trial& t) {
             const auto users = t.engine.CVLDBUserSet();
             for (std::size_t i = 0; i < t.n; ++i) users->Add(t.Number(i), "pw", true, true, true);
             t.Whole([&] { t.engine.GetArrayUsers(); });
         }},
        {"CVLUserNoteSet::Add",
         [](Trial& t) {
             const auto notes = t.engine.CVLDBUserSet()->Item(1)->CVLUserNoteSet();
             t.Each([&](std::size_t i) { notes->Add(Second(i), 1, "text"); });
         }},
        {"CVLUserNoteSet::Item, Update, Remove",
         [](Trial& t) {
             const auto notes = t.engine.CVLDBUserSet()->Item(1)->CVLUserNoteSet();
             for (std::size_t i = 0; i < t.n; ++i) notes->Add(Second(i), 1, "text");
             t.Calls([&](std::size_t i) {
                 const std::string key = notes->Item(Position(t.Place(i) / 2))->dateKey;
                 notes->Update(key, "other text");
                 notes->NextNote(Position(i));
                 notes->Remove(key);
             });
         }},
        {"LogReport behind many lines",
         [](Trial& t) {
             t.table->Add(t.tables, 1, t.Record(0));
             const auto record = t.records->Item(1);
             t.Each([&](std::size_t) {
                 t.engine.UpDateRecord("Records", record, 1, t.Record(0));
                 Keep(t.engine.LogReport().size());
             });
         }},
        {"Pending log lines, then SaveDB",
         [](Trial& t) {
             t.engine.LogDBActivities(true, true, true, true);
             t.Whole([&] {
                 for (std::size_t i = 0; i < t.n; ++i)
                     t.engine.CreateNewUser(t.Number(i), "pw", true, true, true);
                 t.engine.SaveDB();
             });
         }},
        {"CVLDBOwnerSet::Add, Item, CanAdd, Remove",
         [](Trial& t) {
             const auto owners = t.engine.CVLDBOwnerSet();
             for (std::size_t i = 0; i < t.n; ++i) owners->Add(t.Number(i));
             t.Calls([&](std::size_t i) {
                 owners->Add(t.Number(t.n + i));
                 Keep(owners->CanAdd(t.Number(i)));
                 owners->Remove(t.Number(i));
             });
         }},
        {"CVLOwnerDBSet::Add",
         [](Trial& t) {
             const auto owned = t.engine.CVLDBOwnerSet()->Add("many")->CVLOwnerDBSet();
             t.Each([&](std::size_t i) { owned->Add(t.Number(i), "C:\\data"); });
         }},
        {"GetArrayOwners, GetArrayOwnedDBs",
         [](Trial& t) {
             const auto owners = t.engine.CVLDBOwnerSet();
             for (std::size_t i = 0; i < t.n / 2; ++i) owners->Add(t.Number(i));
             const auto owned = owners->Item(1)->CVLOwnerDBSet();
             for (std::size_t i = 0; i < t.n / 2; ++i) owned->Add(t.Number(i), "C:\\data");
             const std::string owner = owners->Item(1)->Key();
             t.Whole([&] {
                 t.engine.GetArrayOwners();
                 t.engine.GetArrayOwnedDBs(owner);
             });
         }},
        {"AddObserver, RemoveObserver",
         [](Trial& t) {
             const auto observer = std::make_shared<IUpdater>();
             for (std::size_t i = 0; i < t.n; ++i) t.engine.AddObserver(observer, t.Number(i));
             t.Calls([&](std::size_t i) {
                 t.engine.AddObserver(observer, t.Number(t.n + i));
                 t.engine.RemoveObserver(t.Number(i));
             });
         }},
        {"NotifyObservers",
         [](Trial& t) {
             const auto observer = std::make_shared<IUpdater>();
             for (std::size_t i = 0; i < t.n; ++i) t.engine.AddObserver(observer, t.Number(i));
             t.Whole([&] { t.engine.NotifyObservers(); });
         }},
        {"MakeItText",
         [](Trial& t) { t.Fill(), t.Whole([&] { t.engine.MakeItText(t.folder()); }); }},
        {"MakeItHTML",
         [](Trial& t) { t.Fill(), t.Whole([&] { t.engine.MakeItHTML(t.folder()); }); }},
        {"MakeItMDB", [](Trial& t) { t.Fill(), t.Whole([&] { t.engine.MakeItMDB(t.folder()); }); }},
    };
    return cases;
}

}  // namespace
}  // namespace tavolin::bench

int main(int argc, char** argv) {
    using namespace tavolin::bench;
    CLI::App app("Costs of Tavolin's members in collections of several sizes");
    std::vector<std::size_t> sizes = {50000, 100000, 200000, 400000};
    std::string folder;
    std::vector<std::string> only;
    int repeats = 3;
    app.add_option("--sizes", sizes, "Elements")->delimiter(',');
    app.add_option("--folder", folder, "A folder for files, which is emptied")->required();
    app.add_option("--only", only, "Members of these names alone");
    app.add_option("--repeats", repeats, "How often each is measured");
    CLI11_PARSE(app, argc, argv);
    for (const std::size_t size : sizes) {
        const Data data(size);
        for (const auto* cases : {&RecordCases(), &TableCases(), &DatabaseCases()}) {
            for (const Case& one : *cases) {
                if (!only.empty() && std::ranges::find(only, one.name) == only.end()) continue;
                for (int i = 0; i < repeats; ++i) {
                    Trial trial(data, folder, one.name);
                    one.run(trial);
                }
            }
        }
    }
    std::filesystem::remove_all(folder);
}
