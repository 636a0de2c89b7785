// What is true of every open database between two calls.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tavolin/base/text.h"
#include "tavolin/engine/engine.h"

namespace tavolin {

// Every record is found at its position and by its key; the counts are those of a walk.
inline void CheckRecords(const CVLTable& table, std::string& faults) {
    const auto fault = [&](const std::string& what) { faults += table.Key() + ": " + what + "\n"; };
    const auto set = table.CVLRecordSet();
    const auto& records = *set->Collection();
    const RecordArena& arena = records.arena();
    std::int32_t position = 0;
    std::map<std::string, int> values[kFieldCount];
    records.ForEach([&](RecordHandle record) {
        ++position;
        if (records.Find(position) != record) fault("not at " + std::to_string(position));
        const RecordHandle keyed = records.Find(arena.FilingKey(record));
        if (arena.Keyed(record) ? keyed != record : keyed == record) {
            fault("key " + arena.FilingKey(record) + " does not lead to its record");
        }
        for (int field = 0; field < kFieldCount; ++field) {
            ++values[field][Fold(arena.Field(record, field))];
        }
    });
    if (position != set->Count()) fault("count");
    for (int field = 0; field < kFieldCount; ++field) {
        const ValueCounts* counts = arena.Counts(field);
        if (counts == nullptr) continue;
        for (const auto& [value, count] : values[field]) {
            if (counts->Of(value) != static_cast<std::uint32_t>(count)) fault("count of " + value);
        }
    }
}

// A link and its table's mention of who refers to it answer each other; the set's index knows both.
inline void CheckLinks(const CVLTableSet& tables, const CVLTable& table, std::string& faults) {
    const auto fault = [&](const std::string& what) { faults += table.Key() + ": " + what + "\n"; };
    const auto check = [&](const std::string& name,
                           const std::string& (CVLTable::*back)(int) const) {
        if (name.empty()) return;
        const auto other = tables.Lookup(name);
        bool answered = false;
        for (int i = 0; other && i < kFieldCount; ++i) {
            answered = answered || EqualFold(((*other).*back)(i), table.Key());
        }
        if (!answered) fault("a link with " + name + " that has one side");
        if (!tables.links().Any(name, [&](const CVLTable& each) { return &each == &table; })) {
            fault("a link with " + name + " that is not in the index");
        }
    };
    for (const std::uint8_t part : table.PrimaryKey().Parts()) {
        if (part >= kFieldCount && part != kNoField) fault("a key of no field");
    }
    for (int i = 0; i < kFieldCount; ++i) {
        if (table.FieldIsForeignKey(i) == table.LinkedTable(i).empty()) fault("half a link");
        check(table.LinkedTable(i), &CVLTable::ReferencedTable);
        check(table.ReferencedTable(i), &CVLTable::LinkedTable);
    }
}

// What is wrong with the open database, a line each; empty when all is well.
inline std::string FaultsOf(const CVLDBEngine& engine) {
    std::string faults;
    const auto tables = engine.CVLTableSet();
    if (!tables) return faults;
    std::int32_t position = 0;
    for (const auto& table : tables->NewEnum()) {
        if (tables->Lookup(++position) != table || tables->Lookup(table->Key()) != table) {
            faults += table->Key() + ": not at its place\n";
        }
        CheckRecords(*table, faults);
        CheckLinks(*tables, *table, faults);
    }
    if (position != tables->Count()) faults += "count of tables\n";
    return faults;
}

}  // namespace tavolin
