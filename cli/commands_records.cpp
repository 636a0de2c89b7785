// Records: adding, changing, deleting, reading and searching.
#include <algorithm>
#include <iostream>

#include "cli/attachment_kind.h"
#include "cli/commands.h"
#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/fields.h"
#include "cli/stoppable.h"
#include "cli/terminal.h"
#include "cli/waiting.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

// The library does not say which key it did not find; what it says becomes the detail.
std::shared_ptr<CVLRecord> FindRecord(Host& host, const Arguments& words) {
    try {
        return host.engine().GetRecord(words["TABLE"], RecordKey(words["KEY"]));
    } catch (const Error& error) {
        const auto tables = host.engine().CVLTableSet();
        if (error.detail().empty() && !tables->CanAdd(words["TABLE"])) {
            Error unknown(error.number(), error.source(),
                          Message("no record ", words["KEY"], " in ", words["TABLE"]));
            unknown.AddDetail(error.description());
            throw unknown;
        }
        throw;
    }
}

Assignments InOrder(const CVLTable& table, const std::vector<std::string>& values) {
    const std::vector<int> fields = FieldsOf(table);
    if (values.size() > fields.size()) {
        throw UsageError(table.Key() + " has " + Counted(fields.size(), "field") + ", not " +
                         std::to_string(values.size()));
    }
    Assignments result;
    for (std::size_t i = 0; i < values.size(); ++i) {
        result[static_cast<std::size_t>(fields[i])] = values[i];
    }
    return result;
}

Assignments NewValues(const CVLTable& table, const Arguments& words) {
    const auto& values = words.All("VALUE");
    std::for_each(values.begin(), values.end(), RequireUtf8);
    const bool named = !words.Has("--values") &&
                       std::any_of(values.begin(), values.end(), [&](const std::string& word) {
                           return IsAssignment(table, word);
                       });
    if (named) return ParseAssignments(table, values);
    const auto unknown = std::find_if(values.begin(), values.end(), LooksLikeAssignment);
    if (!words.Has("--values") && unknown != values.end()) {
        throw UsageError(table.Key() + " has no field " + unknown->substr(0, unknown->find('=')) +
                         "; --values takes " + *unknown + " as a value");
    }
    return InOrder(table, values);
}

// Everything that the record holds, with the new values in their fields.
std::vector<std::string> Merged(const CVLTable& table, const CVLRecord& record,
                                const Assignments& changes) {
    std::vector<std::string> values;
    for (int field = 0; field < kFieldCount; ++field) {
        const auto& change = changes[static_cast<std::size_t>(field)];
        values.push_back(record.prop(field));
        if (!change) continue;
        const bool in_key = table.PrimaryKey().Holds(field);
        if (in_key && *change != values.back()) {
            throw CommandFailure("the field " + FieldTitle(table, field) +
                                 " is part of the key and cannot change");
        }
        if (!in_key) values.back() = *change;
    }
    return values;
}

void PrintMatches(Host& host, const CVLTable& table, const CVLTable& matches, bool with_name) {
    const std::vector<int> fields = FieldsOf(table);
    std::vector<std::string> titles = FieldTitles(table);
    host.BeginAnswers();
    if (with_name && host.in_table()) host.Note(table.Key());
    // A program must see which table a row is of; of CSV each table has its own header.
    const bool with_column = with_name && !host.in_table() && host.output().format != Format::kCsv;
    if (with_column) titles.insert(titles.begin(), "Table");
    Results results = host.Answer(titles);
    for (const auto& record : matches.CVLRecordSet()->NewEnum()) {
        std::vector<std::string> values = Values(*record, fields);
        if (with_column) values.insert(values.begin(), table.Key());
        results.Add(values);
        if (!results.wanted()) break;
    }
    results.Finish("record");
}

}  // namespace

void AddCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const Assignments given = NewValues(*table, words);
    std::array<std::string, kFieldCount> values;
    std::transform(given.begin(), given.end(), values.begin(),
                   [](const auto& value) { return value.value_or(""); });
    const auto record = host.engine().AddRecord(table, 1, values);
    host.Changed();
    host.Note("record " + record->Key() + " added");
}

void UpdateCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const auto& given = words.All("FIELD=VALUE");
    std::for_each(given.begin(), given.end(), RequireUtf8);
    const Assignments changes = ParseAssignments(*table, given);
    const auto record = FindRecord(host, words);
    const std::vector<std::string> values = Merged(*table, *record, changes);
    host.engine().UpDateRecord(table, record, record->nKey(), values);
    host.Changed();
    // The engine takes a value that differs in letter case alone for the same.
    for (int field = 0; field < kFieldCount; ++field) {
        const std::string& value = values[static_cast<std::size_t>(field)];
        if (record->prop(field) != value) record->prop(field, value);
    }
    host.Note("record " + record->Key() + " updated");
}

void DeleteCommand(Host& host, const Arguments& words) {
    const auto key = FindRecord(host, words)->Key();
    ChangeStoppably(host, "deleting", [&] {
        host.engine().DeleteRecord(words["TABLE"], RecordKey(words["KEY"]),
                                   !words.Has("--no-cascade"));
    });
    host.Note("record " + key + " deleted");
}

void GetCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const auto record = FindRecord(host, words);
    Properties properties;
    for (const int field : FieldsOf(*table)) {
        properties.emplace_back(FieldTitle(*table, field), record->prop(field));
    }
    for (const auto& attachment : record->CVLAttachmentSet()->NewEnum()) {
        properties.emplace_back("attached " + AttachmentKindText(attachment->SpecificType()),
                                attachment->attachmentPathName());
    }
    host.AnswerOne(properties, "Field");
}

void FindCommand(Host& host, const Arguments& words) {
    const auto only = words.Find("--in");
    const auto field_name = words.Find("--field");
    if (field_name && !only) throw UsageError("--field needs the table that it is of: --in TABLE");
    bool found = false;
    auto search = [&](const CVLTable& table) {
        const int field = field_name ? FieldNumber(table, *field_name) : kNoField;
        const auto matches = [&] {
            const Waiting waiting("searching " + Printable(table.Key()));
            return table.Find(words["TEXT"], words.Has("--key"), field);
        }();
        if (Interrupted()) throw Cancelled();
        if (!matches || matches->Count() == 0) return;
        found = true;
        PrintMatches(host, table, *matches, !only);
    };
    if (only) {
        search(*host.Table(*only));
    } else {
        for (const auto& table : host.engine().CVLTableSet()->NewEnum()) search(*table);
    }
    if (!found) throw CommandFailure("nothing found");
}

void ListCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const auto records = table->CVLRecordSet();
    const std::int32_t from = std::max(words.Number("--from", 1), 1);
    const std::int32_t left = std::max(records->Count() - from + 1, 0);
    const std::int32_t count = std::min(words.Number("--count", left), left);
    const std::vector<int> fields = FieldsOf(*table);
    Results results = host.Answer(FieldTitles(*table));
    for (std::int32_t i = 0; i < count; ++i) {
        if (Interrupted()) throw Cancelled("the rest is not shown");
        results.Add(Values(*records->Item(from + i), fields));
        if (!results.wanted()) break;
    }
    results.Finish("record");
}

void CountCommand(Host& host, const Arguments& words) {
    const auto count = static_cast<std::size_t>(host.Table(words["TABLE"])->Count());
    if (host.output().format == Format::kJson) {
        Results results = host.Answer({"Records"});
        results.Numbers({0}).Add({std::to_string(count)});
        return results.Finish();
    }
    const bool in_words = host.in_table() && !host.output().quiet;
    std::cout << (in_words ? Counted(count, "record") : std::to_string(count)) << '\n';
}

void AttachCommand(Host& host, const Arguments& words) {
    const auto record = FindRecord(host, words);
    const attachmentEnum kind = AttachmentKindNamed(words.Get("--kind")).value_or(Miscellenius);
    host.Table(words["TABLE"])->AttachToRecord(record, words["PATH"], kind);
    host.Changed();
    host.Note("attached to record " + record->Key());
}

}  // namespace tavolin::cli
