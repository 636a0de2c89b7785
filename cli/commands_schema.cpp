// Tables: showing, making, linking, deleting.
#include <algorithm>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/fields.h"
#include "cli/stoppable.h"
#include "cli/waiting.h"
#include "cli/words.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

std::string KeyText(const CVLTable& table) {
    std::string text;
    for (const std::uint8_t part : table.PrimaryKey().Parts()) {
        if (part == kNoField) continue;
        if (!text.empty()) text += ", ";
        text += part < kFieldCount ? FieldTitle(table, part) : std::to_string(part);
    }
    return text;
}

std::string ReferrersText(const CVLTable& table) {
    std::string text;
    for (int slot = 0; slot < kFieldCount; ++slot) {
        if (table.ReferencedTable(slot).empty()) continue;
        if (!text.empty()) text += ", ";
        text += table.ReferencedTable(slot);
    }
    return text;
}

std::vector<std::string> FieldNames(const Arguments& words) {
    std::vector<std::string> names = SplitList(words["--fields"]);
    if (names.size() > kFieldCount) throw UsageError("a table has ten fields at most");
    if (names.empty()) throw UsageError("--fields names no field");
    for (auto name = names.begin(); name != names.end(); ++name) {
        const bool twice = !name->empty() && std::any_of(names.begin(), name, [&](const auto& one) {
            return EqualFold(one, *name);
        });
        if (twice) throw UsageError("--fields names " + *name + " twice");
    }
    return names;
}

}  // namespace

void TablesCommand(Host& host, const Arguments&) {
    Results results = host.Answer({"Table", "Records", "Key", "Linked from"});
    results.Numbers({1});
    for (const auto& table : host.engine().CVLTableSet()->NewEnum()) {
        results.Add(
            {table->Key(), std::to_string(table->Count()), KeyText(*table), ReferrersText(*table)});
    }
    results.Finish("table");
}

void TableCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    Results results = host.Answer({"Number", "Field", "Label", "Key", "Links to"});
    results.Numbers({0});
    for (const int field : FieldsOf(*table)) {
        results.Add({std::to_string(field), table->FieldName(field), table->FieldLabel(field),
                     table->PrimaryKey().Holds(field) ? "yes" : "", table->LinkedTable(field)});
    }
    results.Finish("field");
    if (!host.in_table()) return;
    host.Note(Counted(static_cast<std::size_t>(table->Count()), "record"));
    if (table->IsReferenced()) host.Note("linked from " + ReferrersText(*table));
}

void MakeTableCommand(Host& host, const Arguments& words) {
    RequireUtf8(words["TABLE"]);
    const auto names = FieldNames(words);
    const auto key = KeyFields(names, words.Get("--key"));
    const auto table =
        host.engine().CreateNewPrimaryTable(words["TABLE"], names, key[0], key[1], key[2], key[3]);
    host.Changed();
    host.Note("table " + table->Key() + " made, its key is " + KeyText(*table));
}

void MakeLinkedCommand(Host& host, const Arguments& words) {
    const auto names = FieldNames(words);
    const auto table = host.Table(words["TABLE"]);
    const int field = FieldNumber(*table, words["FIELD"]);
    std::shared_ptr<CVLTable> made;
    ChangeStoppably(host, "linking", [&] {
        made = host.engine().CreateNewLinkedTable(words["TABLE"], field, names);
    });
    host.Note("table " + made->Key() + " made and linked");
}

void LinkCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const auto target = host.Table(words["TARGET"]);
    const int field = FieldNumber(*table, words["FIELD"]);
    const auto before = target->Count();
    ChangeStoppably(host, "linking", [&] { host.engine().LinkTables(table, field, target); });
    host.Note("linked; " + Counted(static_cast<std::size_t>(target->Count() - before), "record") +
              " added to " + target->Key());
}

void UnlinkCommand(Host& host, const Arguments& words) {
    host.engine().UnlinkTables(words["TABLE"], words["TARGET"]);
    host.Changed();
    host.Note("unlinked");
}

void DropTableCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const std::string name = table->Key();
    const auto records = Counted(static_cast<std::size_t>(table->Count()), "record");
    const auto before = host.engine().CVLTableSet()->Count();
    host.Confirm(words, "Delete the table " + name + " with " + records + "?");
    host.Changed();
    {
        const Waiting waiting("deleting", "and cannot be stopped");
        host.engine().DeleteTable(name, !words.Has("--no-cascade"));
    }
    const auto gone = before - host.engine().CVLTableSet()->Count();
    host.Note(Counted(static_cast<std::size_t>(gone), "table") + " deleted");
}

void RenameTableCommand(Host& host, const Arguments& words) {
    RequireUtf8(words["NAME"]);
    host.Table(words["TABLE"])->Key(words["NAME"]);
    host.Changed();
    host.Note("renamed");
}

void LabelCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const int field = FieldNumber(*table, words["FIELD"]);
    const std::string& label = words["LABEL"];
    RequireUtf8(label);
    for (int other = 0; other < kFieldCount; ++other) {
        const bool same =
            EqualFold(table->FieldName(other), label) || EqualFold(table->FieldLabel(other), label);
        if (other != field && !label.empty() && same) {
            throw CommandFailure("another field is called " + label);
        }
    }
    table->FieldLabel(field, label);
    host.Changed();
    host.Note("label set");
}

}  // namespace tavolin::cli
