// stats: what the tables and fields hold.
#include <filesystem>
#include <string_view>
#include <unordered_set>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/fields.h"
#include "cli/memory_used.h"
#include "cli/paths.h"
#include "cli/terminal.h"

namespace tavolin::cli {
namespace {

struct TableFigures {
    std::size_t bytes = 0;
    std::size_t attachments = 0;
};

// Calls visit(record) for each record; Ctrl-C ends it.
template <class Visit>
void ForEachRecord(const CVLTable& table, Visit&& visit) {
    for (const auto& record : table.CVLRecordSet()->NewEnum()) {
        if (Interrupted()) throw Cancelled();
        visit(*record);
    }
}

TableFigures FiguresOf(const CVLTable& table) {
    TableFigures figures;
    ForEachRecord(table, [&](const CVLRecord& record) {
        for (int field = 0; field < kFieldCount; ++field)
            figures.bytes += record.prop(field).size();
        if (!record.HasAttachments()) return;
        figures.attachments += static_cast<std::size_t>(record.CVLAttachmentSet()->Count());
    });
    return figures;
}

std::size_t LinksOf(const CVLTable& table) {
    std::size_t links = 0;
    for (int field = 0; field < kFieldCount; ++field) links += !table.LinkedTable(field).empty();
    return links;
}

void StatsOfAll(Host& host) {
    Results results =
        host.Answer({"Table", "Records", "Fields", "Bytes of text", "Links", "Attachments"});
    results.Numbers({1, 2, 3, 4, 5});
    for (const auto& table : host.engine().CVLTableSet()->NewEnum()) {
        const TableFigures figures = FiguresOf(*table);
        results.Add({table->Key(), std::to_string(table->Count()),
                     std::to_string(FieldsOf(*table).size()), std::to_string(figures.bytes),
                     std::to_string(LinksOf(*table)), std::to_string(figures.attachments)});
    }
    results.Finish("table");
    if (!host.in_table()) return;
    std::error_code error;
    const auto size = std::filesystem::file_size(PathOf(host.Path()), error);
    if (!error) host.Note("the file as it was saved has " + std::to_string(size) + " bytes");
    if (const std::size_t memory = MemoryUsed(); memory > 0) {
        host.Note("this program takes " + std::to_string(memory >> 20) + " MiB of memory");
    }
}

struct FieldFigures {
    std::unordered_set<std::string> values;
    std::size_t filled = 0;
    std::size_t longest = 0;
    std::size_t bytes = 0;

    void Count(const std::string& value) {
        bytes += value.size();
        filled += !value.empty();
        longest = std::max(longest, value.size());
        values.insert(value);
    }
};

void StatsOfOne(Host& host, const CVLTable& table) {
    Results results = host.Answer({"Field", "Filled", "Different", "Bytes", "Longest", "Links to"});
    results.Numbers({1, 2, 3, 4});
    for (const int field : FieldsOf(table)) {
        FieldFigures figures;
        ForEachRecord(table, [&](const CVLRecord& record) { figures.Count(record.prop(field)); });
        results.Add({FieldTitle(table, field), std::to_string(figures.filled),
                     std::to_string(figures.values.size()), std::to_string(figures.bytes),
                     std::to_string(figures.longest), table.LinkedTable(field)});
    }
    results.Finish("field");
    if (host.in_table()) host.Note(Counted(static_cast<std::size_t>(table.Count()), "record"));
}

}  // namespace

void StatsCommand(Host& host, const Arguments& words) {
    if (const auto table = words.Find("TABLE")) return StatsOfOne(host, *host.Table(*table));
    StatsOfAll(host);
}

}  // namespace tavolin::cli
