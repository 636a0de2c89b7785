// The order of records, and publishing the database.
#include <filesystem>
#include <optional>
#include <utility>

#include "cli/commands.h"
#include "cli/counted_files.h"
#include "cli/failure.h"
#include "cli/fields.h"
#include "cli/paths.h"
#include "cli/terminal.h"
#include "tavolin/base/text.h"
#include "tavolin/export/mdb/writer.h"
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

// Runs the export with a progress bar. Ctrl-C ends it.
template <class Export>
void WithProgress(const std::string& left_behind, Export&& run) {
    const InterruptCatcher catcher;
    ForgetInterrupt();
    CountedFiles files;
    try {
        const ScopedFileSystem scope(files);
        run();
    } catch (const Error&) {
        if (!files.interrupted()) throw;
        throw CommandFailure("interrupted; " + left_behind);
    }
}

std::string NotComplete(const Target& target) { return target.Path() + " is not complete"; }

// The engine puts the extension behind a name, without the dot.
std::string_view WithoutExtension(const Target& target, std::string_view end) {
    return std::string_view(target.name).substr(0, target.name.size() - end.size() + 1);
}

// An old export, out of the way until the new one stands. It is an error to do so with a file that
// is no export.
class PutAside {
  public:
    explicit PutAside(const Target& target) : path_(target.Path()) {
        if (!fs::exists(PathOf(path_))) return;
        const mdb::Writer is_an_export(LibraryPath(path_));
        aside_ = path_ + ".old";
        if (fs::exists(PathOf(aside_))) throw CommandFailure(aside_ + " is in the way");
        fs::rename(PathOf(path_), PathOf(aside_));
    }
    ~PutAside() {
        std::error_code ignored;
        if (!aside_.empty()) fs::rename(PathOf(aside_), PathOf(path_), ignored);
    }
    PutAside(const PutAside&) = delete;
    PutAside& operator=(const PutAside&) = delete;

    void Delete() {
        if (!aside_.empty()) fs::remove(PathOf(std::exchange(aside_, {})));
    }

  private:
    std::string path_;
    std::string aside_;
};

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
        TargetOf(given, ReplaceFold(engine.DBName(), DefaultExtension(), "") + "txt", kEnd);
    if (fs::exists(PathOf(target.Path()))) {
        host.Confirm(words, "Write over " + target.Path() + "?", false);
    }
    WithProgress(NotComplete(target),
                 [&] { engine.MakeItText(TextOf(target.folder), WithoutExtension(target, kEnd)); });
    host.Note("exported to " + target.Path());
}

void ExportHtmlCommand(Host& host, const Arguments& words) {
    CVLDBEngine& engine = host.engine();
    const Target target = TargetOf(words.Find("FOLDER"), ReplaceFold(engine.DBName(), ".cdb", ""));
    const fs::path folder = PathOf(target.Path());
    if (fs::exists(folder) && !fs::is_directory(folder)) {
        throw CommandFailure(target.Path() + " is not a folder");
    }
    if (fs::exists(folder) && !fs::is_empty(folder)) {
        host.Confirm(words, "Write over the site in " + target.Path() + "?", false);
    }
    WithProgress(NotComplete(target),
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
    const Target target =
        TargetOf(given, ReplaceFold(engine.DBName(), DefaultExtension(), "") + "mdb", kEnd);
    if (ReplaceFold(target.name, DefaultExtension(), "") != target.name) {
        throw UsageError("the file's name must not hold \"" + std::string(DefaultExtension()) +
                         "\", which an export leaves out of names");
    }
    std::optional<PutAside> old;
    if (words.Has("--replace")) old.emplace(target);
    WithProgress("nothing was written",
                 [&] { engine.MakeItMDB(TextOf(target.folder), WithoutExtension(target, kEnd)); });
    if (old) old->Delete();
    host.Note("exported to " + target.Path());
}

}  // namespace tavolin::cli
