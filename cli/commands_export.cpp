// The order of records, and publishing the database.
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>

#include "cli/commands.h"
#include "cli/counted_files.h"
#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/fields.h"
#include "cli/paths.h"
#include "cli/progress.h"
#include "cli/terminal.h"
#include "cli/text_output.h"
#include "cli/waiting.h"
#include "tavolin/base/text.h"
#include "tavolin/export/mdb/replacing.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

namespace fs = std::filesystem;

// Where an export goes: a folder that is there, and a name in it.
struct Target {
    fs::path folder;
    std::string name;
    std::string Path() const { return TextOf(folder / PathOf(name)); }
};

// What the user named, or else a name in the current folder. `end` is that of the name.
Target TargetOf(const std::optional<std::string>& given, const std::string& otherwise,
                std::string_view end = {}) {
    const fs::path path = PathOf(FolderPath(MachinePath(given.value_or(otherwise))));
    Target target{path.parent_path(), TextOf(path.filename())};
    if (!target.name.ends_with(end) || target.name == end) {
        throw UsageError(target.Path() + " is no name for it" +
                         (end.empty() ? "" : ": it must end in " + std::string(end)));
    }
    if (!fs::is_directory(target.folder)) {
        throw CommandFailure("the folder " + TextOf(target.folder) + " is not there");
    }
    return target;
}

std::string NotComplete(const Target& target) { return target.Path() + " is not complete"; }

// The engine puts the extension behind a name, without the dot.
std::string_view NameWithDot(const Target& target, std::string_view end) {
    return std::string_view(target.name).substr(0, target.name.size() - end.size() + 1);
}

// Makes the new export beside the old one and puts it in its place in one step. An old file that is
// no export, or was changed since, is an error.
template <class Export>
void ReplaceExport(const Target& target, std::string_view end, Export&& run) {
    const fs::path old = fs::canonical(PathOf(target.Path()));
    mdb::AskToReplace(LibraryPath(TextOf(old)));
    // What an export that was killed has left there is in nobody's way.
    Target beside{old.parent_path(), {}};
    for (int i = 1; beside.name.empty() || fs::exists(PathOf(beside.Path())); ++i) {
        beside.name =
            TextOf(old.filename()) + ".tavolin-new" + std::to_string(i) + std::string(end);
    }
    run(beside);
    try {
        FileSystem& files = FileSystem::Current();
        files.Rename(LibraryPath(beside.Path()), LibraryPath(TextOf(old)));
        files.FlushFolder(LibraryPath(TextOf(beside.folder)));
    } catch (const fs::filesystem_error& error) {
        std::error_code ignored;
        fs::remove(PathOf(beside.Path()), ignored);
        throw CommandFailure(target.Path() + " cannot be replaced: " + error.code().message());
    }
}

// A word as a shell takes it.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

// A table's name without what no file's name can hold.
std::string FileNameOf(std::string name) {
    for (char& c : name) {
        if (static_cast<unsigned char>(c) < 0x20 || std::strchr("/\\:*?\"<>|", c)) c = '_';
    }
    return name;
}

// Everything of the file is there before any of an old one is gone.
void WriteWhole(const Target& target, const CVLTable& table) {
    const auto rows = static_cast<std::uint64_t>(table.Count());
    Progress progress(rows, "records");
    std::string text = CsvLine(FieldTitles(table));
    const std::vector<int> fields = FieldsOf(table);
    std::uint64_t done = 0;
    for (const auto& record : table.CVLRecordSet()->NewEnum()) {
        if (Interrupted()) throw Cancelled("nothing was written");
        text += CsvLine(Values(*record, fields));
        ++done;
        progress.Show(done, done);
    }
    if (target.name.empty()) {
        std::cout << text;
    } else {
        const ByteView bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        OrCannotWrite(target.Path(), [&] {
            FileSystem::Current().Replace(LibraryPath(target.Path()), std::span(&bytes, 1));
        });
    }
}

// A session goes on after Ctrl-C with the order that the records had; one command on its own is
// ended by it.
void SortOrNot(Host& host, CVLTable& table, int field) {
    const Waiting waiting("sorting " + Printable(table.Key()));
    const auto records = table.CVLRecordSet();
    const auto before = host.in_session() ? records->ObjectState() : std::vector<std::uint8_t>();
    if (!Interrupted()) table.Sort(field);
    if (!host.in_session() || !Interrupted()) return;
    records->ObjectState(before);
    throw Cancelled("the order is what it was");
}

}  // namespace

void ExportCsvCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const auto given = words.Find("FILE.csv");
    const InterruptCatcher catcher;
    if (given == "-") {
        host.BeginAnswers();
        return WriteWhole({}, *table);
    }
    const Target target = TargetOf(given, FileNameOf(table->Key()) + ".csv");
    AskToWrite(host, words, target.Path());
    WriteWhole(target, *table);
    host.Note(Counted(static_cast<std::size_t>(table->Count()), "record") + " exported to " +
              target.Path());
}

void SortCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const int field = FieldNumber(*table, words["FIELD"]);
    const auto records = Counted(static_cast<std::size_t>(table->Count()), "record");
    host.Confirm(words, "Give up the order that the " + records + " of " + table->Key() + " have?");
    SortOrNot(host, *table, field);
    host.Changed();
    host.Note(records + " sorted by " + FieldTitle(*table, field));
}

void ExportTextCommand(Host& host, const Arguments& words) {
    static constexpr std::string_view kEnd = ".txt";
    const auto given = words.Find("FILE.txt");
    CVLDBEngine& engine = host.engine();
    const Target target = TargetOf(given, WithoutExtension(engine.DBName()) + ".txt", kEnd);
    if (fs::exists(PathOf(target.Path()))) {
        host.Confirm(words, "Write over " + target.Path() + "?", false);
    }
    WritingFiles(NotComplete(target),
                 [&] { engine.MakeItText(TextOf(target.folder), NameWithDot(target, kEnd)); });
    host.Note("exported to " + target.Path());
}

void ExportHtmlCommand(Host& host, const Arguments& words) {
    CVLDBEngine& engine = host.engine();
    const Target target = TargetOf(words.Find("FOLDER"), WithoutExtension(engine.DBName()));
    const fs::path folder = PathOf(target.Path());
    if (fs::exists(folder) && !fs::is_directory(folder)) {
        throw CommandFailure(target.Path() + " is not a folder");
    }
    if (fs::exists(folder) && !fs::is_empty(folder)) {
        host.Confirm(words, "Write over the site in " + target.Path() + "?", false);
    }
    WritingFiles(NotComplete(target),
                 [&] { engine.MakeItHTML(TextOf(target.folder), target.name); });
    host.Note("exported to " + target.Path());
    host.Note("to see it, run `python3 -m http.server --bind 127.0.0.1 --directory " +
              Quoted(target.Path()) + "` and open http://localhost:8000/, then " + target.name +
              ".htm");
}

void ExportMdbCommand(Host& host, const Arguments& words) {
    static constexpr std::string_view kEnd = ".mdb";
    CVLDBEngine& engine = host.engine();
    const auto given = words.Find("FILE.mdb");
    const std::string name = WithoutExtension(engine.DBName());
    const Target target = TargetOf(given, ReplaceFold(name, DefaultExtension(), "") + ".mdb", kEnd);
    if (ReplaceFold(target.name, DefaultExtension(), "") != target.name) {
        throw UsageError("the file's name must not hold \"" + std::string(DefaultExtension()) +
                         "\", which an export leaves out of names");
    }
    if (engine.CVLTableSet()->Count() == 0) throw CommandFailure("there are no tables to export");
    const auto export_to = [&](const Target& file) {
        WritingFiles("nothing was written",
                     [&] { engine.MakeItMDB(TextOf(file.folder), NameWithDot(file, kEnd)); });
    };
    if (words.Has("--replace") && fs::exists(PathOf(target.Path()))) {
        ReplaceExport(target, kEnd, export_to);
    } else {
        export_to(target);
    }
    host.Note("exported to " + target.Path());
}

}  // namespace tavolin::cli
