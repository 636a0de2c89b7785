// Random work on an engine, compared after every step with a model of it: tables that are rows of
// texts, searched from end to end, with transactions, saving and loading in the middle.
#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "fuzz/walk.h"
#include "tests/support/invariants.h"

namespace tavolin::fuzz {
namespace {

constexpr const char* kFile = "/m\\x.cdb";
constexpr const char* kNames[] = {"T0", "T1", "T2", "T3"};
constexpr int kTables = 4;
const std::vector<int> kKeys[kTables] = {{0}, {0, 1}, {0}, {2}};
constexpr int kFields = 4;  // those that are used
const std::string kValues[] = {"",
                               "a",
                               "A",
                               "b",
                               "B",
                               "ab",
                               "c",
                               "\xC3\x89",
                               "\xC3\xA9",
                               "ba",
                               "\xE2\x84\xAA",
                               "k",
                               "aA",
                               "a\xC3\xA9",
                               "d",
                               std::string(300, 'y')};

// The model's own idea of letter case, for the characters above.
std::string Lower(const std::string& text) {
    std::string lower;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "\xC3\x89") == 0) {
            lower += "\xC3\xA9";
            i += 1;
        } else if (text.compare(i, 3, "\xE2\x84\xAA") == 0) {
            lower += 'k';
            i += 2;
        } else {
            lower += text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] + 32) : text[i];
        }
    }
    return lower;
}
bool Same(const std::string& a, const std::string& b) { return Lower(a) == Lower(b); }

using Fields = std::array<std::string, kFields>;

struct Row {
    int id;
    std::int32_t number;
    Fields fields;
    std::vector<std::string> attachments;
};

struct Place {
    enum { kEnd, kBefore, kAfter } side = kEnd;
    int row = 0;  // from 0; may be none
};

class Model {
  public:
    struct Table {
        std::vector<int> key;
        std::array<int, kFields> links{-1, -1, -1, -1};
        std::set<int> referrers;
        std::vector<Row> rows;

        std::string KeyOf(const Fields& fields) const {
            std::string text;
            for (const int field : key) text += fields[static_cast<std::size_t>(field)];
            return text;
        }
        Row* Find(const std::string& wanted) {
            const auto found = std::find_if(rows.begin(), rows.end(), [&](const Row& row) {
                return Same(KeyOf(row.fields), wanted);
            });
            return found == rows.end() ? nullptr : &*found;
        }
        bool RefersTo(int target) const {
            return std::find(links.begin(), links.end(), target) != links.end();
        }
    };

    std::array<Table, kTables> tables;

    Model() {
        for (std::size_t i = 0; i < kTables; ++i) tables[i].key = kKeys[i];
    }

    bool Add(int t, std::int32_t number, const Fields& fields, const Place& place) {
        Table& table = At(t);
        if (table.Find(table.KeyOf(fields)) != nullptr) return false;
        const int count = static_cast<int>(table.rows.size());
        if (place.side != Place::kEnd && place.row >= count) return false;
        const int at =
            place.side == Place::kEnd ? count : place.row + (place.side == Place::kAfter);
        table.rows.insert(table.rows.begin() + at, {next_id_++, number, fields, {}});
        Fill(t, fields, number);
        return true;
    }

    bool Update(int t, int row, const Fields& fields, bool fills) {
        Table& table = At(t);
        Fields& old = table.rows[static_cast<std::size_t>(row)].fields;
        for (std::size_t i = 0; i < kFields; ++i) {
            if (Same(old[i], fields[i])) continue;
            if (std::find(table.key.begin(), table.key.end(), i) != table.key.end()) return false;
            old[i] = fields[i];
        }
        const auto number = table.referrers.empty() ? isPrimaryTable : isLinkedTable;
        if (fills) Fill(t, Fields(old), number);
        return true;
    }

    // Appends the keys of what goes.
    void Delete(int t, int id, bool cascade, std::string& removed) {
        in_deletion_.insert(id);
        for (std::size_t i = 0; cascade && i < kFields; ++i) {
            const int target = At(t).links[i];
            const std::string value = RowOf(t, id).fields[i];
            if (target < 0 || value.empty()) continue;
            const Row* const found = At(target).Find(value);
            if (found == nullptr || in_deletion_.contains(found->id)) continue;
            if (!OthersHold(value, target, id)) Delete(target, found->id, true, removed);
        }
        removed += At(t).KeyOf(RowOf(t, id).fields) + ";";
        std::erase_if(At(t).rows, [&](const Row& row) { return row.id == id; });
        in_deletion_.erase(id);
    }

    // Straight insertion, as slow as it is.
    void Sort(int t, int field) {
        if (field >= 10) {
            At(t).rows.clear();
            return;
        }
        const auto text = [&](const Row& row, bool placed) {
            std::string all = row.fields[static_cast<std::size_t>(field)];
            for (int i = 0; i < kFields; ++i) {
                if (i != field || (placed && field == 1)) {
                    all += row.fields[static_cast<std::size_t>(i)];
                }
            }
            return Lower(all);
        };
        std::vector<Row> sorted;
        for (const Row& row : At(t).rows) {
            std::size_t at = sorted.size();
            while (at > 0 && text(row, false) < text(sorted[at - 1], true)) --at;
            sorted.insert(sorted.begin() + static_cast<std::ptrdiff_t>(at), row);
        }
        At(t).rows = std::move(sorted);
    }

    std::vector<Fields> Find(int t, const std::string& value, bool is_key, int field) {
        std::vector<Fields> found;
        for (const Row& row : At(t).rows) {
            std::string text;
            if (field != kNoField) {
                text = row.fields[static_cast<std::size_t>(field)];
            } else {
                for (const std::string& each : row.fields) text += each;
            }
            const bool matches = is_key ? Same(At(t).KeyOf(row.fields), value)
                                        : Lower(text).find(Lower(value)) != std::string::npos;
            if (matches) found.push_back(row.fields);
        }
        return found;
    }

    void Link(int t, int field, int target) {
        int& link = At(t).links[static_cast<std::size_t>(field)];
        const int old = std::exchange(link, target);
        if (old >= 0 && old != target && !At(t).RefersTo(old)) At(old).referrers.erase(t);
        if (!At(target).referrers.insert(t).second) return;
        // By position: a table that is linked to itself grows meanwhile.
        for (std::size_t i = 0; i < At(t).rows.size(); ++i) {
            FillChain(target, At(t).rows[i].fields[static_cast<std::size_t>(field)], 1);
        }
    }

    void Unlink(int t, int target) {
        At(target).referrers.erase(t);
        std::replace(At(t).links.begin(), At(t).links.end(), target, -1);
    }

    Table& At(int t) { return tables[static_cast<std::size_t>(t)]; }

  private:
    Row& RowOf(int t, int id) {
        return *std::find_if(At(t).rows.begin(), At(t).rows.end(),
                             [&](const Row& row) { return row.id == id; });
    }

    void Fill(int t, const Fields& fields, std::int32_t number) {
        const auto links = At(t).links;
        for (std::size_t i = 0; i < kFields; ++i) {
            if (links[i] >= 0) FillChain(links[i], fields[i], number);
        }
    }

    void FillChain(int t, const std::string value, std::int32_t number) {
        for (; t >= 0 && !value.empty(); t = At(t).links[0]) {
            const Fields fields{value, "", "", ""};
            Table& table = At(t);
            if (table.Find(value) != nullptr || table.Find(table.KeyOf(fields)) != nullptr) return;
            table.rows.push_back({next_id_++, number, fields, {}});
        }
    }

    bool OthersHold(const std::string& value, int target, int id) {
        for (const Table& table : tables) {
            for (std::size_t i = 0; i < kFields; ++i) {
                if (table.links[i] != target) continue;
                for (const Row& row : table.rows) {
                    if (row.id != id && Same(row.fields[i], value)) return true;
                }
            }
        }
        return false;
    }

    int next_id_ = 0;
    std::set<int> in_deletion_;
};

class Work {
  public:
    explicit Work(Input& input) : input_(input) {
        engine_.LogOn("ann", "secret");
        engine_.CreateNewDB("x", MemoryFiles::kFolder);
        engine_.CreateNewPrimaryTable("T0", {"A", "B", "C", "D"}, 0);
        engine_.CreateNewPrimaryTable("T1", {"A", "B", "C", "D"}, 0, 1);
        engine_.CreateNewPrimaryTable("T2", {"A", "B", "C", "D"}, 0);
        engine_.CreateNewPrimaryTable("T3", {"A", "B", "C", "D"}, 2);
        engine_.OnRecordRemove.Connect(
            [&](const auto& record) { removed_ += record->Key() + ";"; });
    }

    void Run() {
        while (input_.More()) {
            Step();
            Compare(engine_, model_);
        }
        engine_.SaveDB();
        CVLDBEngine other;
        other.LogOn("ann", "secret");
        other.LoadDB(kFile);
        other.DBLegalUser(other.LogedOnUser(), Ownership);
        Compare(other, model_);
        WalkDatabase(other);
        for (const auto& record : held_) Require(record->prop(0).size() < 1000, "held records");
    }

  private:
    void Step() {
        const int byte = input_.Byte();
        const int step = byte % 20;
        table_ = input_.Below(kTables);
        if (byte >= 240) {
            Rebuild(byte % 4);
        } else if (step < 7) {
            Add();
        } else if (step < 9) {
            OnRow([&](int row) { Update(row); });
        } else if (step < 11) {
            OnRow([&](int row) { Delete(row); });
        } else if (step == 11) {
            const int field = input_.Below(kFields + 1);
            Sort(field == kFields && input_.Below(8) == 7 ? 10 : field % kFields);
        } else if (step == 12) {
            Find();
        } else if (step < 15) {
            Link();
        } else if (step == 15) {
            const int target = input_.Below(kTables);
            engine_.UnlinkTables(kNames[table_], kNames[target]);
            model_.Unlink(table_, target);
        } else if (step == 16) {
            OnRow([&](int row) { SetField(row); });
        } else if (step == 17) {
            OnRow([&](int row) { Attach(row); });
        } else {
            Transaction(input_.Below(6));
        }
    }

    const std::string& Value() { return kValues[input_.Below(std::size(kValues))]; }
    Fields SomeFields() { return {Value(), Value(), Value(), Value()}; }
    Model::Table& ModelTable() { return model_.At(table_); }

    template <class Body>
    void OnRow(Body&& body) {
        const int row = input_.Byte();
        const int count = static_cast<int>(ModelTable().rows.size());
        if (count > 0) body(row % count);
    }

    void Add() {
        const Fields fields = SomeFields();
        const auto number = static_cast<std::int32_t>(input_.Byte());
        const int how = input_.Below(8);
        const int row = how < 5 ? 0 : input_.Below(12);
        Place place;
        Placement placement;
        std::string key;
        if (how >= 5) {
            place = {how % 2 == 1 ? Place::kBefore : Place::kAfter, row};
            IndexKey which(row + 1);
            auto& rows = ModelTable().rows;
            if (how == 7 && row < static_cast<int>(rows.size())) {
                key = ModelTable().KeyOf(rows[static_cast<std::size_t>(row)].fields);
                which = IndexKey(key);
            }
            (how % 2 == 1 ? placement.before : placement.after) = which;
        }
        const bool refused = Refusal([&] {
            held_.push_back(
                engine_.AddRecord(kNames[table_], number, FieldTexts(fields), nullptr, placement));
        });
        Require(model_.Add(table_, number, fields, place) == !refused, "a record is added");
        if (held_.size() > 5) held_.erase(held_.begin());
    }

    void Update(int row) {
        const Fields fields = SomeFields();
        const auto record = engine_.GetRecord(kNames[table_], row + 1);
        const int way = row % 4;  // by the engine, by the table, or by the set, which fills nothing
        const std::int32_t refusal = Refusal([&] {
            const auto table = engine_.GetTable(kNames[table_]);
            if (way < 2) engine_.UpDateRecord(table, record, 0, FieldTexts(fields));
            if (way == 2) table->Update(engine_.CVLTableSet(), record, FieldTexts(fields));
            if (way == 3)
                table->CVLRecordSet()->Update(table->PrimaryKey(), record, FieldTexts(fields));
        });
        Require(model_.Update(table_, row, fields, way < 3) == (refusal == 0),
                "a record is updated");
        Require(refusal == 0 || refusal == CVLErrorNum::GetRecordUpDateError(),
                "a key that would change has its number");
    }

    void Delete(int row) {
        const int how = input_.Below(4);
        const Row& gone = ModelTable().rows[static_cast<std::size_t>(row)];
        const std::string key = ModelTable().KeyOf(gone.fields);
        const auto record = engine_.GetRecord(kNames[table_], row + 1);
        engine_.DeleteRecord(kNames[table_], how % 2 == 0 ? IndexKey(row + 1) : IndexKey(key),
                             how < 3);
        std::string removed;
        model_.Delete(table_, gone.id, how < 3, removed);
        Require(std::exchange(removed_, {}) == removed, "each deletion is told of, in order");
        // What is not in its table any more does not count, whatever it says.
        record->prop(1, Value());
    }

    // What changes a whole table, or nothing that can be seen.
    void Rebuild(int how) {
        const auto table = engine_.GetTable(kNames[table_]);
        if (how == 0) {
            for (const char* name : {"renamed", kNames[table_]}) {
                table->Key(name);
                for (int t = 0; t < kTables; ++t) {
                    for (int field = 0; field < kFields; ++field) {
                        const bool links =
                            model_.At(t).links[static_cast<std::size_t>(field)] == table_;
                        const auto other = engine_.GetTable(t + 1);
                        Require((other->LinkedTable(field) == name) == links,
                                "links follow a table's name");
                    }
                }
            }
        } else if (how == 1) {
            const auto copy = std::make_shared<CVLRecordSet>();
            copy->ObjectState(table->CVLRecordSet()->ObjectState());
            table->CVLRecordSet(copy);
        } else {
            OnRow([&](int row) {  // without its dependents, and without the engine's hearing of it
                if (how == 2) table->Remove(row + 1);
                if (how == 3) table->CVLRecordSet()->Remove(row + 1);
                std::string removed;
                const int id = ModelTable().rows[static_cast<std::size_t>(row)].id;
                model_.Delete(table_, id, false, removed);
            });
        }
    }

    void Sort(int field) {
        engine_.GetTable(kNames[table_])->Sort(field);
        model_.Sort(table_, field);
    }

    void Find() {
        const std::string value = Value() + (input_.Below(3) == 0 ? Value() : "");
        const bool is_key = input_.Below(3) == 0;
        const int choice = input_.Below(kFields + 2);
        const int field = choice < kFields ? choice : kNoField;
        const bool anywhere = input_.Below(4) == 0;
        std::vector<Fields> expected;
        int where = table_;
        for (int t = anywhere ? 0 : table_; t < kTables && expected.empty(); ++t) {
            expected = model_.Find(where = t, value, is_key, field);
            if (!anywhere) break;
        }
        std::shared_ptr<CVLTable> result;
        const std::int32_t refusal = Refusal([&] {
            result = engine_.Find(value, is_key, anywhere ? nullptr : engine_.GetTable(table_ + 1),
                                  field);
        });
        if (refusal != 0) {
            Require(refusal == CVLErrorNum::GetValueNotFoundError() && expected.empty(),
                    "what is not there is not found");
            return;
        }
        std::vector<Fields> found;
        for (const auto& record : result->CVLRecordSet()->NewEnum()) found.push_back(Of(*record));
        Require(found == expected && result->Key() == kNames[where], "what is there is found");
        // What is done to the result is nobody else's.
        Refusal([&] { engine_.AddRecord(result, 1, FieldTexts(SomeFields())); });
        engine_.DeleteRecord(result, 1 + input_.Below(static_cast<int>(expected.size())));
        removed_.clear();
        result->Sort(1);
    }

    void Link() {
        const int field = input_.Below(kFields);
        const int target = input_.Below(kTables);
        engine_.LinkTables(kNames[table_], field, kNames[target]);
        model_.Link(table_, field, target);
    }

    // Without the table's knowing, so not to be done to its key.
    void SetField(int row) {
        auto& rows = ModelTable().rows;
        const std::string& value = Value();
        engine_.GetRecord(kNames[table_], row + 1)->prop(3, value);
        rows[static_cast<std::size_t>(row)].fields[3] = value;
    }

    void Attach(int row) {
        auto& attached = ModelTable().rows[static_cast<std::size_t>(row)].attachments;
        const std::string& path = Value();
        const bool taken = std::any_of(attached.begin(), attached.end(),
                                       [&](const std::string& each) { return Same(each, path); });
        const bool refused =
            Refusal([&] { engine_.GetRecord(kNames[table_], row + 1)->Attach(1, path, aPicture); });
        Require(refused == taken, "an attachment is added");
        if (!refused) attached.push_back(path);
    }

    void Transaction(int step) {
        if (step == 0) {
            const bool refused = Refusal([&] { engine_.TransactionBegin(); });
            Require(refused == before_.has_value(), "one transaction at a time");
            if (!refused) before_ = model_;
        } else if (step == 1 || step == 2) {
            const bool abort = step == 1;
            const bool refused =
                Refusal([&] { abort ? engine_.TansactionAbort() : engine_.TransactionCommit(); });
            Require(refused == !before_.has_value(), "what was begun is ended");
            if (refused) return;
            if (abort) model_ = *before_;
            if (!abort) disk_ = model_;
            before_.reset();
        } else if (step == 3) {
            engine_.SaveDB();
            disk_ = model_;
        } else if (disk_) {
            engine_.LoadDB(kFile);
            model_ = *disk_;
            before_.reset();
        }
    }

    static Fields Of(const CVLRecord& record) {
        return {record.prop(0), record.prop(1), record.prop(2), record.prop(3)};
    }

    static void Compare(CVLDBEngine& engine, Model& model) {
        for (int t = 0; t < kTables; ++t) {
            Model::Table& expected = model.At(t);
            const auto table = engine.GetTable(kNames[t]);
            Require(table->Count() == static_cast<int>(expected.rows.size()), "as many records");
            auto row = expected.rows.begin();
            for (const auto& record : table->CVLRecordSet()->NewEnum()) {
                Require(Of(*record) == row->fields, "the same fields");
                Require(record->nKey() == row->number, "the same number");
                const std::string key = expected.KeyOf(row->fields);
                Require(record->Key() == key, "the same key");
                Require(table->GetRecord(key) == record, "found by its key");
                Require(table->GetRecord(1 + (row - expected.rows.begin())) == record,
                        "found at its position");
                std::vector<std::string> attachments;
                if (record->arena()->HasAttachments(record->handle())) {
                    for (const auto& each : record->CVLAttachmentSet()->NewEnum()) {
                        attachments.push_back(each->attachmentPathName());
                    }
                }
                Require(attachments == row->attachments, "the same attachments");
                ++row;
            }
            for (int i = 0; i < kFields; ++i) {
                const int link = expected.links[static_cast<std::size_t>(i)];
                Require(table->LinkedTable(i) == (link < 0 ? "" : kNames[link]) &&
                            table->FieldIsForeignKey(i) == (link >= 0),
                        "the same links");
            }
            Require(table->ReferenceCount() == static_cast<int>(expected.referrers.size()),
                    "links that are known at both ends");
            Require((table->SpecificType() == isLinkedTable) == !expected.referrers.empty(),
                    "a table that others refer to is a linked one");
        }
        Require(FaultsOf(engine).empty(), "what holds between two calls");
    }

    Input& input_;
    CVLDBEngine engine_;
    Model model_;
    std::optional<Model> before_;
    std::optional<Model> disk_;
    int table_ = 0;
    std::string removed_;
    std::vector<std::shared_ptr<CVLRecord>> held_;
};

}  // namespace
}  // namespace tavolin::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavolin::fuzz;
    setenv("TAVOLIN_FOLDER", MemoryFiles::kFolder, 1);
    MemoryFiles files;
    const tavolin::ScopedFileSystem scope(files);
    Input input(data, size);
    Work(input).Run();
    return 0;
}
