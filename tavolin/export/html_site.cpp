// The files and folders of a site: which there are, and that all of them can be written before the
// first one is.
#include <algorithm>
#include <functional>
#include <vector>

#include "tavolin/base/text.h"
#include "tavolin/errors/trap.h"
#include "tavolin/export/html_pages.h"
#include "tavolin/export/html_records.h"
#include "tavolin/export/protection.h"
#include "tavolin/model/session.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/paths.h"
#include "tavolin/persist/text_file.h"

namespace tavolin {
namespace {

constexpr std::string_view kStyleSheet = "TavolinStyleSheet.css";
constexpr std::string_view kTitle = "Title.htm";
constexpr std::string_view kTableFrames = "index.htm";
constexpr std::string_view kContents = "Contents.htm";
constexpr std::string_view kRecords = "Records.htm";
constexpr std::string_view kInlineFrame = "InlineFrameRecords.htm";
// The names by which links call them.
constexpr std::string_view kTitleLink = "title.htm";
constexpr std::string_view kContentsLink = "contents.htm";
constexpr std::string_view kRecordsLink = "records.htm";
constexpr std::string_view kInlineFrameLink = "inlineFrameRecords.htm";

struct SiteFile {
    std::string path;
    std::function<void(TextSink&)> write;
    std::vector<std::string> other_names;  // that links use
    std::vector<std::string> folders;      // to be there first
};

struct SiteNames {
    std::string folder;
    std::string page;
};

SiteNames NamesOf(std::string_view file_name, const std::string& database) {
    SiteNames names;
    if (file_name.empty()) {
        names.folder = ReplaceFold(database, ".cdb", "");
        names.page = ReplaceFold(database, ".cdb", ".htm");
        if (names.page.size() < 4 || !EqualFold(names.page.substr(names.page.size() - 4), ".htm"))
            names.page += ".htm";
    } else {
        names.folder = file_name;
        names.page = names.folder + ".htm";
    }
    return names;
}

// The names under which links lead to a table, besides its own: a link keeps the letter case in
// which it was made.
std::vector<std::string> OtherSpellings(const CVLTable& table, const CVLTableSet& tables) {
    std::vector<std::string> spellings;
    for (const auto& from : tables.NewEnum()) {
        for (int field = 0; field < kFieldCount; ++field) {
            const std::string& name = from->LinkedTable(field);
            const bool new_spelling =
                from->FieldIsForeignKey(field) && name != table.Key() &&
                EqualFold(name, table.Key()) &&
                std::find(spellings.begin(), spellings.end(), name) == spellings.end();
            if (new_spelling) spellings.push_back(name);
        }
    }
    return spellings;
}

class Site {
  public:
    Site(const CVLTableSet& tables, std::string_view dir_path, SiteNames names)
        : tables_(tables),
          names_(std::move(names)),
          folder_(JoinPath(dir_path, names_.folder)),
          contents_list_(ContentsList(tables)) {}

    void CheckNames() const {
        if (!IsFolderName(names_.folder) || !IsFolderName(names_.page) || IsOwnName(names_.page)) {
            RaiseRunTime(kBadFileName);
        }
        for (const auto& table : tables_.NewEnum()) {
            const std::string& name = table->Key();
            if (!IsFolderName(name) || IsOwnName(name) || EqualFold(name, names_.page)) {
                RaiseRunTime(kBadFileName);
            }
        }
    }

    // In the order in which they are written.
    std::vector<SiteFile> Files() const {
        std::vector<SiteFile> files;
        for (const auto& table : tables_.NewEnum()) AddTable(*table, files);
        if (tables_.Count() == 0) {
            files.push_back({Path(kContents), WriteEmptyPage, {Path(kContentsLink)}, {}});
            files.push_back({Path(kInlineFrame), WriteEmptyPage, {Path(kInlineFrameLink)}, {}});
        }
        files.push_back({Path(kStyleSheet), WriteStyleSheet, {}, {}});
        files.push_back({Path(kTitle), WriteTitlePage, {Path(kTitleLink)}, {}});
        files.push_back({Path(names_.page),
                         [to_folder = FirstFolder()](TextSink& sink) {
                             WriteFramesetPage(".", to_folder, sink);
                         },
                         {},
                         {}});
        files.front().folders.insert(files.front().folders.begin(), folder_);
        return files;
    }

  private:
    std::string Path(std::string_view name) const { return JoinPath(folder_, name); }
    std::string FirstFolder() const {
        return tables_.Count() == 0 ? "." : ".\\" + tables_.Lookup(1)->Key();
    }

    // The page of frames and the tables' folders stand among these files.
    static bool IsOwnName(std::string_view name) {
        for (const std::string_view own : {kStyleSheet, kTitle, kContents, kInlineFrame}) {
            if (EqualFold(name, own)) return true;
        }
        return false;
    }

    void AddTable(const CVLTable& table, std::vector<SiteFile>& files) const {
        const std::string folder = Path(table.Key());
        const auto path = [&](std::string_view name) { return JoinPath(folder, name); };
        files.push_back({path(kTableFrames),
                         [](TextSink& sink) { WriteFramesetPage("..", ".", sink); },
                         {},
                         {folder}});
        files.push_back({path(kContents),
                         [&](TextSink& sink) { WriteContentsPage(table, contents_list_, sink); },
                         {path(kContentsLink)},
                         {}});
        files.push_back({path(kRecords),
                         [&](TextSink& sink) { WriteRecordsPage(table, sink); },
                         {path(kRecordsLink)},
                         {}});
        for (const std::string& spelling : OtherSpellings(table, tables_)) {
            files.back().folders.push_back(Path(spelling));
            files.back().other_names.push_back(JoinPath(Path(spelling), kRecordsLink));
        }
        files.push_back({path(kInlineFrame), WriteInlineFramePage, {path(kInlineFrameLink)}, {}});
    }

    const CVLTableSet& tables_;
    SiteNames names_;
    std::string folder_;
    std::string contents_list_;
};

void CheckFiles(const std::vector<SiteFile>& files, const Session& session) {
    for (const SiteFile& file : files) {
        AskToExportTo(file.path, session);
        for (const std::string& name : file.other_names) AskToExportTo(name, session);
    }
}

// A name from an earlier export never stays with what it had then, whatever fails here.
void WriteSiteFile(const SiteFile& file) {
    FileSystem& files = FileSystem::Current();
    for (const std::string& folder : file.folders) files.CreateFolder(folder);
    for (const std::string& name : file.other_names) files.RemoveOtherFile(name, file.path);
    TextFileWriter writer(file.path, TextEncoding::kAnsi);
    file.write(writer);
    writer.Close();
    for (const std::string& name : file.other_names) files.AddName(file.path, name);
}

}  // namespace

void CVLTableSet::MakeItHTML(std::string_view DirPath, std::string_view FileName) const {
    Trap("CVLTableSet:MakeItHTML Method", [&] {
        for (const auto& table : NewEnum()) AskToWriteHtml(*table);
        const Site site(*this, DirPath, NamesOf(FileName, session_->DatabaseName()));
        site.CheckNames();
        const auto files = site.Files();
        CheckFiles(files, *session_);
        for (const SiteFile& file : files) WriteSiteFile(file);
    });
}

}  // namespace tavolin
