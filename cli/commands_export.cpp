// The order of records, and publishing the database.
#include <filesystem>

#include "cli/commands.h"
#include "cli/counted_files.h"
#include "cli/failure.h"
#include "cli/fields.h"
#include "cli/paths.h"
#include "tavolin/base/text.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

namespace fs = std::filesystem;

// Where an export goes: a folder, and a name in it.
struct Target {
    fs::path folder;
    std::string name;
    std::string Path() const { return TextOf(folder / PathOf(name)); }
};

// What the user named, or else a name in the current folder.
Target TargetOf(const std::optional<std::string>& given, const std::string& otherwise) {
    const fs::path path = PathOf(FolderPath(given.value_or(otherwise)));
    return {path.parent_path(), TextOf(path.filename())};
}

// Runs the export with a progress bar. Ctrl-C ends it; what has been written stays.
template <class Export>
void WithProgress(const Target& target, Export&& run) {
    if (!fs::is_directory(target.folder)) {
        throw CommandFailure("the folder " + TextOf(target.folder) + " is not there");
    }
    CountedFiles files;
    try {
        const ScopedFileSystem scope(files);
        run();
    } catch (const Error&) {
        if (!files.interrupted()) throw;
        throw CommandFailure("interrupted; " + target.Path() + " is not complete");
    }
}

// A word as a shell takes it.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

}  // namespace

void SortCommand(Host& host, const Arguments& words) {
    const auto table = host.Table(words["TABLE"]);
    const int field = FieldNumber(*table, words["FIELD"]);
    const auto records = Counted(static_cast<std::size_t>(table->Count()), "record");
    host.Confirm(words, "Give up the order that the " + records + " of " + table->Key() + " have?");
    table->Sort(field);
    host.Changed();
    host.Note(records + " sorted by " + FieldTitle(*table, field));
}

void ExportTextCommand(Host& host, const Arguments& words) {
    static constexpr std::string_view kEnd = ".txt";
    const auto given = words.Find("FILE.txt");
    CVLDBEngine& engine = host.engine();
    const Target target =
        TargetOf(given, ReplaceFold(engine.DBName(), DefaultExtension(), "") + "txt");
    if (given && (!given->ends_with(kEnd) || target.name == kEnd)) {
        throw UsageError("the name of the text file must end in " + std::string(kEnd));
    }
    if (fs::exists(PathOf(target.Path()))) {
        host.Confirm(words, "Write over " + target.Path() + "?", false);
    }
    // The engine puts the extension behind the name, without the dot.
    std::string_view name = target.name;
    name.remove_suffix(kEnd.size() - 1);
    WithProgress(target, [&] {
        engine.MakeItText(TextOf(target.folder), given ? name : std::string_view());
    });
    host.Note("exported to " + target.Path());
}

void ExportHtmlCommand(Host& host, const Arguments& words) {
    CVLDBEngine& engine = host.engine();
    const Target target = TargetOf(words.Find("FOLDER"), ReplaceFold(engine.DBName(), ".cdb", ""));
    const fs::path folder = PathOf(target.Path());
    if (fs::exists(folder) && !(fs::is_directory(folder) && fs::is_empty(folder))) {
        host.Confirm(words, "Write over the site in " + target.Path() + "?", false);
    }
    WithProgress(target, [&] { engine.MakeItHTML(TextOf(target.folder), target.name); });
    host.Note("exported to " + target.Path());
    host.Note("to see it, run `python3 -m http.server --directory " + Quoted(target.Path()) +
              "` and open http://localhost:8000/" + target.name + ".htm");
}

}  // namespace tavolin::cli
