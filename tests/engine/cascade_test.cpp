// What a deletion takes along, in any history of edits: random operations on linked tables, beside
// a model that answers every question by a walk.
#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <utility>

#include "tavolin/base/text.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

constexpr std::size_t kTables = 3;
using Fields = std::array<std::string, kFieldCount>;

struct CascadeRow {
    std::size_t table;
    Fields fields;
};

class Model {
  public:
    std::map<int, CascadeRow> rows;
    std::array<std::array<int, kFieldCount>, kTables> links{};  // the table's number, from 1 on

    int Find(std::size_t table, const std::string& key) const {
        for (const auto& [id, row] : rows) {
            if (row.table == table && EqualFold(row.fields[0], key)) return id;
        }
        return 0;
    }
    void Add(std::size_t table, const Fields& fields) {
        rows[++last_id_] = {table, fields};
        Fill(table, fields);
    }
    void Update(int id, const Fields& fields) {
        Fields& old = rows[id].fields;
        for (std::size_t f = 0; f < fields.size(); ++f) {
            if (!EqualFold(old[f], fields[f])) old[f] = fields[f];
        }
    }
    void Fill(std::size_t table, const Fields& fields) {
        for (std::size_t f = 0; f < fields.size(); ++f) {
            const int target = links[table][f];
            if (target != 0) FillOne(static_cast<std::size_t>(target - 1), fields[f]);
        }
    }
    std::vector<int> RowsOf(std::size_t table) const {
        std::vector<int> ids;
        for (const auto& [id, row] : rows) {
            if (row.table == table) ids.push_back(id);
        }
        return ids;
    }
    void FillOne(std::size_t table, const std::string& value) {
        if (!value.empty() && Find(table, value) == 0) rows[++last_id_] = {table, {value}};
    }
    bool Refers(std::size_t table, std::size_t target) const {
        return std::count(links[table].begin(), links[table].end(), static_cast<int>(target + 1)) >
               0;
    }
    // Appends the keys of what goes.
    void Delete(int id, bool cascade, std::string& removed) {
        const CascadeRow row = rows[id];
        in_deletion_.insert(id);
        for (std::size_t f = 0; cascade && f < row.fields.size(); ++f) {
            const int target = links[row.table][f];
            if (target == 0 || row.fields[f].empty()) continue;
            const int dependent = Find(static_cast<std::size_t>(target - 1), row.fields[f]);
            if (dependent == 0 || in_deletion_.contains(dependent)) continue;
            if (!OthersHold(id, target, row.fields[f])) Delete(dependent, true, removed);
        }
        in_deletion_.erase(id);
        rows.erase(id);
        removed += row.fields[0] + " ";
    }

  private:
    bool OthersHold(int id, int target, const std::string& value) const {
        for (const auto& [other, row] : rows) {
            for (std::size_t f = 0; f < row.fields.size(); ++f) {
                const bool linked = links[row.table][f] == target;
                if (other != id && linked && EqualFold(row.fields[f], value)) return true;
            }
        }
        return false;
    }
    int last_id_ = 0;
    std::set<int> in_deletion_;
};

class CascadeTest : public EngineTest {
  protected:
    CascadeTest() {
        for (const char* name : {"A", "B", "C"}) engine_.CreateNewPrimaryTable(name, {"ID"});
        engine_.OnRecordRemove.Connect(
            [&](const auto& record) { removed_ += record->prop(0) + " "; });
    }

    std::size_t Below(std::size_t limit) { return random_() % limit; }
    std::shared_ptr<CVLTable> Table(std::size_t number) { return engine_.GetTable(number + 1); }
    std::string Value() {
        static constexpr const char* kValues[] = {"",  "a", "A",  "b",        "B",        "c",
                                                  "d", "e", "ab", "\xC3\xA9", "\xC3\x89", "f"};
        const std::string value = kValues[Below(std::size(kValues))];
        return Below(40) == 0 ? value + std::string(700, 'x') : value;
    }

    void Step() {
        const std::size_t table = Below(kTables);
        const auto rows = model_.RowsOf(table);
        if (!rows.empty() && Below(3) > 0) return Edit(table, rows[Below(rows.size())]);
        switch (Below(12)) {
            case 0:
                return Link(table, 1 + Below(3), Below(kTables));
            case 1:
                return Unlink(table, Below(kTables));
            case 2:
                return Rebuild(table);
            case 3:
                return Transact();
            default:
                return Add(table);
        }
    }

    void Add(std::size_t table) {
        const Fields fields = {Value(), Value(), Value(), Value()};
        if (fields[0].empty() || model_.Find(table, fields[0]) != 0) return;
        Placement place;
        if (Table(table)->Count() > 0 && Below(2) == 0) place.before = 1;
        engine_.AddRecord(table + 1, 1, fields, nullptr, place);
        model_.Add(table, fields);
    }

    void Edit(std::size_t table, int id) {
        const auto record = engine_.GetRecord(table + 1, model_.rows[id].fields[0]);
        switch (const std::size_t way = Below(10)) {
            case 0:
            case 1:
            case 2:
                return Update(table, id, record, way);
            case 3:
            case 4: {
                const std::size_t field = 1 + Below(3);
                return record->prop(static_cast<int>(field),
                                    model_.rows[id].fields[field] = Value());
            }
            default:
                return Remove(table, id, record, way);
        }
    }

    void Update(std::size_t table, int id, const std::shared_ptr<CVLRecord>& record,
                std::size_t way) {
        const Fields fields = {record->prop(0), Value(), Value(), Value()};
        if (way == 0) engine_.UpDateRecord(table + 1, record, 1, fields);
        if (way == 1) Table(table)->Update(engine_.CVLTableSet(), record, fields);
        if (way == 2) Table(table)->CVLRecordSet()->Update({0, 99, 99, 99}, record, fields);
        model_.Update(id, fields);
        if (way != 2) model_.Fill(table, model_.rows[id].fields);
    }

    void Remove(std::size_t table, int id, const std::shared_ptr<CVLRecord>& record,
                std::size_t way) {
        const std::string key = record->prop(0);
        const bool by_engine = way < 8;
        const bool cascade = way < 7;
        if (by_engine) engine_.DeleteRecord(table + 1, key, cascade);
        if (way == 8) Table(table)->Remove(key);
        if (way == 9) Table(table)->CVLRecordSet()->Remove(key);
        std::string removed;
        model_.Delete(id, cascade, removed);
        EXPECT_EQ(removed_, by_engine ? removed : "");
        removed_.clear();
        // What is not in its table any more does not count, whatever it says.
        held_.push_back(record);
        held_[Below(held_.size())]->prop(static_cast<int>(1 + Below(3)), Value());
    }

    void Link(std::size_t table, std::size_t field, std::size_t target) {
        std::vector<int> rows;  // in the order of their records, which tells whose case stays
        for (const auto& record : Table(table)->CVLRecordSet()->NewEnum()) {
            rows.push_back(model_.Find(table, record->prop(0)));
        }
        engine_.LinkTables(table + 1, static_cast<int>(field), target + 1);
        const bool is_new = !model_.Refers(table, target);
        model_.links[table][field] = static_cast<int>(target + 1);
        if (!is_new) return;
        for (const int id : rows) model_.FillOne(target, model_.rows[id].fields[field]);
    }

    void Unlink(std::size_t table, std::size_t target) {
        engine_.UnlinkTables(table + 1, target + 1);
        for (int& link : model_.links[table]) {
            if (link == static_cast<int>(target + 1)) link = 0;
        }
    }

    // What changes a whole table.
    void Rebuild(std::size_t number) {
        const auto table = Table(number);
        const auto walk = table->CVLRecordSet()->NewEnum();
        switch (const std::size_t way = Below(11)) {
            case 0:
                table->Sort(10);  // which empties it
                for (const int id : model_.RowsOf(number)) model_.rows.erase(id);
                return;
            case 1:
            case 2:
                return table->Key(table->Key() == "A" ? "renamed" : table->Key() + "x");
            case 3:
            case 4: {
                const auto copy = std::make_shared<CVLRecordSet>();
                copy->ObjectState(table->CVLRecordSet()->ObjectState());
                return table->CVLRecordSet(copy);
            }
            case 5:
            case 6: {
                const auto result = table->Find("a");
                if (result->Count() > 0) result->CVLRecordSet()->Remove(1);
                engine_.AddRecord(result, 1, {"of the result alone", "a", "b", "c"});
                return;
            }
            default:
                table->Sort(static_cast<int>(way % 4));
        }
    }

    void Transact() {
        if (before_) {
            engine_.TansactionAbort();
            model_ = *std::exchange(before_, std::nullopt);
        } else {
            engine_.TransactionBegin();
            before_ = model_;
        }
    }

    void Check() {
        for (std::size_t table = 0; table < kTables; ++table) {
            const auto rows = model_.RowsOf(table);
            ASSERT_EQ(static_cast<std::size_t>(Table(table)->Count()), rows.size());
            for (const int id : rows) {
                const Fields& fields = model_.rows[id].fields;
                const auto record = Table(table)->GetRecord(fields[0]);
                for (std::size_t f = 0; f < fields.size(); ++f) {
                    ASSERT_EQ(record->prop(static_cast<int>(f)), fields[f]);
                }
            }
        }
    }

    Model model_;
    std::optional<Model> before_;
    std::mt19937 random_;
    std::vector<std::shared_ptr<CVLRecord>> held_;
    std::string removed_;
};

TEST_F(CascadeTest, AgreesWithAModelThatWalks) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_.seed(seed);
    for (int i = 0; i < 6000; ++i) {
        Step();
        if (i % 20 == 0) Check();
        if (HasFailure()) FAIL() << "in step " << i;
    }
}

}  // namespace
}  // namespace tavolin
