// import: the rows of a CSV file become records, all of them or none.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "cli/commands.h"
#include "cli/csv_reader.h"
#include "cli/failure.h"
#include "cli/fields.h"
#include "cli/import_target.h"
#include "cli/paths.h"
#include "cli/progress.h"
#include "cli/terminal.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

std::uint64_t SizeOf(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(PathOf(path), error);
    return error ? 0 : size;
}

class Import {
  public:
    Import(Host& host, const Arguments& words)
        : host_(host),
          words_(words),
          path_(words["FILE.csv"]),
          reader_(FileSource(path_)),
          progress_(SizeOf(path_)) {}

    void Run() {
        try {
            ReadHeader();
            try {
                AddRows();
                target_->Finish();
            } catch (...) {
                target_->Undo();
                throw;
            }
        } catch (const CsvError& error) {
            throw CommandFailure(Place(error.line(), error.column()) + ": " + error.what());
        }
        progress_.Clear();
    }

    std::size_t added() const { return added_; }
    std::size_t skipped() const { return skipped_; }

  private:
    // "cities.csv:12:3 (City)"; a column behind the last one of the header has no name.
    std::string Place(std::uint64_t line, std::size_t column) const {
        std::string place = path_ + ":" + std::to_string(line) + ":" + std::to_string(column);
        if (column >= 1 && column <= names_.size()) place += " (" + names_[column - 1] + ")";
        return place;
    }

    [[noreturn]] void Fail(std::size_t column, const std::string& what) const {
        throw CommandFailure(Place(reader_.line(), column) + ": " + what);
    }

    void ReadHeader() {
        if (!reader_.Next()) throw CommandFailure(path_ + ": the file has no header");
        names_.assign(reader_.fields().begin(), reader_.fields().end());
        if (names_.size() > kFieldCount) {
            Fail(kFieldCount + 1,
                 "a table has ten fields at most, the header has " + std::to_string(names_.size()));
        }
        for (std::size_t i = 0; i < names_.size(); ++i) CheckName(i);
        const std::string& table = words_["TABLE"];
        if (host_.engine().CVLTableSet()->CanAdd(table)) {
            OpenNew(table);
        } else {
            OpenExisting(host_.Table(table));
        }
    }

    void CheckName(std::size_t column) const {
        if (names_[column].empty()) Fail(column + 1, "a field without a name");
        for (std::size_t i = 0; i < column; ++i) {
            if (EqualFold(names_[i], names_[column])) Fail(column + 1, "the name stands twice");
        }
    }

    void OpenNew(const std::string& table) {
        if (table.empty()) throw UsageError("a table needs a name");
        for (std::size_t i = 0; i < names_.size(); ++i) fields_.push_back(static_cast<int>(i));
        target_ = NewTable(host_, table, names_, KeyFields(names_, words_.Get("--key")));
    }

    void OpenExisting(std::shared_ptr<CVLTable> table) {
        if (words_.Has("--key")) {
            throw UsageError("--key is for a table that import makes; " + table->Key() +
                             " is there");
        }
        for (std::size_t i = 0; i < names_.size(); ++i) {
            const auto field = FieldCalled(*table, names_[i]);
            if (!field) Fail(i + 1, "the table " + table->Key() + " has no such field");
            if (ColumnOf(*field) != 0) Fail(i + 1, "the field stands twice");
            fields_.push_back(*field);
        }
        for (const std::uint8_t part : table->PrimaryKey().Parts()) {
            if (part == kNoField || ColumnOf(part) != 0) continue;
            Fail(1, "the key field " + FieldTitle(*table, part) + " is not in the header");
        }
        target_ = ExistingTable(host_, std::move(table));
    }

    // The column, from 1, that a field is read from; 0 for none.
    std::size_t ColumnOf(int field) const {
        const auto found = std::find(fields_.begin(), fields_.end(), field);
        return found == fields_.end() ? 0 : static_cast<std::size_t>(found - fields_.begin()) + 1;
    }

    void AddRows() {
        constexpr std::size_t kRowsBetweenLooks = 1024;
        const bool skip = words_.Has("--skip-duplicates");
        while (reader_.Next()) {
            TakeRow();
            if (skip && target_->Holds(KeyOfRow())) {
                ++skipped_;
            } else {
                AddRow();
            }
            if (Interrupted()) throw Cancelled("nothing was imported");
            if ((added_ + skipped_) % kRowsBetweenLooks == 0) {
                progress_.Show(reader_.bytes_read(), added_);
            }
        }
    }

    void TakeRow() {
        const auto& row = reader_.fields();
        if (row.size() < fields_.size()) Fail(row.size() + 1, "the field is missing");
        if (row.size() > fields_.size()) {
            Fail(fields_.size() + 1,
                 "a field too many; the header has " + std::to_string(fields_.size()));
        }
        for (std::size_t i = 0; i < row.size(); ++i) {
            values_[static_cast<std::size_t>(fields_[i])] = row[i];
        }
    }

    std::string KeyOfRow() const {
        std::string key;
        for (const std::uint8_t part : target_->key().Parts()) {
            if (part < kFieldCount) key += values_[part];
        }
        return key;
    }

    // What the engine refuses gets the place in the file as its detail.
    void AddRow() {
        try {
            target_->Add(values_);
            ++added_;
        } catch (Error& error) {
            std::string what = Place(reader_.line(), ColumnOf(target_->key().Part0));
            if (error.number() == CVLErrorNum::GetRecordAddError()) {
                what += ": the key \"" + KeyOfRow() + "\" is already there";
            }
            error.AddDetail(error.detail().empty() ? what : what + ": " + error.detail());
            throw;
        }
    }

    Host& host_;
    const Arguments& words_;
    std::string path_;
    CsvReader reader_;
    Progress progress_;
    std::vector<std::string> names_;  // of the header
    std::vector<int> fields_;         // the table's field for each column
    std::unique_ptr<ImportTarget> target_;
    std::array<std::string_view, kFieldCount> values_;
    std::size_t added_ = 0;
    std::size_t skipped_ = 0;
};

}  // namespace

void ImportCommand(Host& host, const Arguments& words) {
    const auto start = std::chrono::steady_clock::now();
    const InterruptCatcher catcher;
    ForgetInterrupt();
    Import import(host, words);
    import.Run();
    host.Changed();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, " in %.2f s", time.count());
    std::string note = Counted(import.added(), "record") + " added to " + words["TABLE"] + seconds;
    if (words.Has("--skip-duplicates")) {
        note += ", " + Counted(import.skipped(), "duplicate") + " skipped";
    }
    host.Note(note);
}

}  // namespace tavolin::cli
