#include "cli/sql_schema.h"

#include <algorithm>
#include <functional>

#include "cli/dump_text.h"
#include "cli/dump_writer.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

// A key longer than this does not fit into an index of PostgreSQL.
constexpr std::size_t kLongestKey = 2000;

std::string Shown(std::string_view value) {
    std::string shown;
    AppendQuoted(value, shown);
    return shown;
}

// The values of some fields of a record, with a mark between them, as SQL holds them.
std::string Values(const CVLRecord& record, const std::vector<int>& fields) {
    std::string values;
    for (const int field : fields) {
        if (!values.empty() || field != fields.front()) values += '\0';
        values += SqlText(record.prop(field)).view();
    }
    return values;
}

// The values of some fields of all records of a table, to look for one of them.
class ValueIndex {
  public:
    ValueIndex(CVLRecordSet& records, std::vector<int> fields, const std::function<void()>& look)
        : records_(records), fields_(std::move(fields)) {
        entries_.reserve(static_cast<std::size_t>(records.Count()));
        std::int32_t position = 0;
        for (const auto& record : records.NewEnum()) {
            entries_.push_back({Hash(Values(*record, fields_)), ++position});
            look();
        }
        std::sort(entries_.begin(), entries_.end());
    }

    bool Holds(const std::string& values) const {
        const std::size_t hash = Hash(values);
        for (auto at = std::lower_bound(entries_.begin(), entries_.end(), Entry{hash, 0});
             at != entries_.end() && at->hash == hash; ++at) {
            if (At(*at) == values) return true;
        }
        return false;
    }

    // Values that two records have.
    std::optional<std::string> Twice() const {
        for (std::size_t i = 1; i < entries_.size(); ++i) {
            // Few have the same hash, and fewer another value then.
            for (std::size_t j = i; j-- > 0 && entries_[j].hash == entries_[i].hash;) {
                if (auto values = At(entries_[i]); values == At(entries_[j])) return values;
            }
        }
        return std::nullopt;
    }

  private:
    struct Entry {
        std::size_t hash;
        std::int32_t position;
        friend auto operator<=>(const Entry&, const Entry&) = default;
    };

    static std::size_t Hash(const std::string& values) { return std::hash<std::string>()(values); }
    std::string At(const Entry& entry) const {
        return Values(*records_.Item(entry.position), fields_);
    }

    CVLRecordSet& records_;
    std::vector<int> fields_;
    std::vector<Entry> entries_;
};

class SchemaMaker {
  public:
    SchemaMaker(CVLDBEngine& engine, const std::function<void()>& look)
        : engine_(engine), look_(look) {}

    SqlSchema Make() {
        SqlNames names(SqlNames::Of::kTables);
        for (const auto& source : engine_.CVLTableSet()->NewEnum()) {
            SqlTable& table = schema_.tables.emplace_back();
            table.source = source;
            table.name = names.Take(source->Key(), "table");
            FindColumns(table);
            FindKey(table);
        }
        for (SqlTable& table : schema_.tables) FindLinks(table);
        FindOrder();
        return std::move(schema_);
    }

  private:
    // Fields with a name, a label or a value, under the label that the user sees.
    void FindColumns(SqlTable& table) {
        const CVLTable& source = *table.source;
        std::array<bool, kFieldCount> used{};
        std::vector<std::string> fields(kFieldCount);
        for (const auto& record : source.CVLRecordSet()->NewEnum()) {
            for (std::size_t i = 0; i < fields.size(); ++i) {
                fields[i] = record->prop(static_cast<int>(i));
                used[i] = used[i] || !fields[i].empty();
            }
            table.has_own_keys =
                table.has_own_keys || record->Key() != ComposedKey(source.PrimaryKey(), fields);
            look_();
        }
        SqlNames names(SqlNames::Of::kColumns);
        for (int field = 0; field < kFieldCount; ++field) {
            const std::string& label = source.FieldLabel(field);
            const std::string& name = source.FieldName(field);
            const bool wanted = !label.empty() || !name.empty() || source.PrimaryKey().Holds(field);
            if (!wanted && !used[static_cast<std::size_t>(field)]) continue;
            const std::string otherwise = "field " + std::to_string(field);
            table.columns.push_back(
                {field, names.Take(label.empty() ? name : label, otherwise), {}, false});
        }
    }

    void FindKey(SqlTable& table) {
        std::vector<int> fields;
        std::vector<std::size_t> key;
        for (const std::uint8_t part : table.source->PrimaryKey().Parts()) {
            if (part >= kFieldCount || std::count(fields.begin(), fields.end(), part) > 0) continue;
            fields.push_back(part);
            key.push_back(static_cast<std::size_t>(table.ColumnOf(part) - table.columns.data()));
        }
        if (fields.empty()) return;
        CVLRecordSet& records = *table.source->CVLRecordSet();
        for (const auto& record : records.NewEnum()) {
            const std::string values = Values(*record, fields);
            if (values.size() > kLongestKey) {
                return Refuse(table, "no primary key: a value is too long for an index");
            }
            if (values.find_first_not_of('\0') == values.npos) {
                return Refuse(table, "no primary key: a record's key fields are empty");
            }
        }
        if (const auto values = ValueIndex(records, fields, look_).Twice()) {
            return Refuse(table, "no primary key: two records have " + Shown(*values));
        }
        table.key = key;
    }

    static void Refuse(SqlTable& table, const std::string& why) { table.remarks.push_back(why); }

    void FindLinks(SqlTable& table) {
        for (SqlColumn& column : table.columns) {
            const std::string& name = table.source->LinkedTable(column.field);
            if (name.empty()) continue;
            const auto target = std::find_if(
                schema_.tables.begin(), schema_.tables.end(),
                [&](const SqlTable& each) { return EqualFold(each.source->Key(), name); });
            if (const std::string why = target == schema_.tables.end()
                                            ? "there is no such table"
                                            : WhyNoLink(table, column, *target);
                !why.empty()) {
                Refuse(table, "no foreign key from " + Shown(column.name) + " to " + Shown(name) +
                                  ": " + why);
            } else {
                column.target = static_cast<std::size_t>(target - schema_.tables.begin());
            }
        }
    }

    // The index of a target is kept for the next link.
    const ValueIndex& KeysOf(const SqlTable& target) {
        if (indexed_ != &target) {
            index_.emplace(*target.source->CVLRecordSet(),
                           std::vector<int>{target.columns[target.key[0]].field}, look_);
            indexed_ = &target;
        }
        return *index_;
    }

    std::string WhyNoLink(const SqlTable& table, const SqlColumn& column, const SqlTable& target) {
        if (target.key.size() != 1) {
            return target.key.empty() ? "that has no primary key"
                                      : "the key of that is made of several columns";
        }
        const ValueIndex& keys = KeysOf(target);
        const bool in_key = IsInKey(table, column);
        for (const auto& record : table.source->CVLRecordSet()->NewEnum()) {
            const std::string value(SqlText(record->prop(column.field)).view());
            if (value.empty() && in_key) return "an empty value is part of a key";
            if (!value.empty() && !keys.Holds(value)) return Shown(value) + " is no key there";
            look_();
        }
        return {};
    }

    static bool IsInKey(const SqlTable& table, const SqlColumn& column) {
        return std::any_of(table.key.begin(), table.key.end(),
                           [&](std::size_t i) { return &table.columns[i] == &column; });
    }

    // A table is made when those that it refers to have been. Where that cannot be, columns outside
    // of the key are added later, and a foreign key that is inside goes.
    void FindOrder() {
        std::vector<bool> made(schema_.tables.size());
        while (schema_.order.size() < schema_.tables.size()) {
            const std::size_t next = NextTable(made);
            SqlTable& table = schema_.tables[next];
            for (SqlColumn& column : table.columns) {
                if (!column.target || *column.target == next || made[*column.target]) continue;
                if (IsInKey(table, column)) {
                    Refuse(table, "no foreign key from " + Shown(column.name) +
                                      ": keys refer to each other in a circle");
                    column.target.reset();
                } else {
                    column.added_later = true;
                }
            }
            made[next] = true;
            schema_.order.push_back(next);
        }
    }

    // With the fewest columns that wait, key columns counting most.
    std::size_t NextTable(const std::vector<bool>& made) const {
        std::size_t best = made.size();
        std::size_t least = SIZE_MAX;
        for (std::size_t i = 0; i < made.size(); ++i) {
            if (made[i]) continue;
            std::size_t waiting = 0;
            for (const SqlColumn& column : schema_.tables[i].columns) {
                if (!column.target || *column.target == i || made[*column.target]) continue;
                waiting += IsInKey(schema_.tables[i], column) ? 100 : 1;
            }
            if (waiting < least) {
                best = i;
                least = waiting;
            }
        }
        return best;
    }

    CVLDBEngine& engine_;
    const std::function<void()>& look_;
    SqlSchema schema_;
    const SqlTable* indexed_ = nullptr;
    std::optional<ValueIndex> index_;
};

}  // namespace

const SqlColumn* SqlTable::ColumnOf(int field) const {
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const SqlColumn& column) { return column.field == field; });
    return found == columns.end() ? nullptr : &*found;
}

SqlSchema MakeSqlSchema(CVLDBEngine& engine, const std::function<void()>& look) {
    return SchemaMaker(engine, look).Make();
}

}  // namespace tavolin::cli
