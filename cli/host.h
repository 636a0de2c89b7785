// The opened database, who works on it, and where the answers go: what every command works with.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
#include "cli/output.h"
#include "cli/pager.h"
#include "cli/results.h"
#include "tavolin/engine/engine.h"

namespace tavolin::cli {

// The least that a command asks of its user.
enum class Need {
    kNothing,  // not even a database
    kNewDatabase,
    kRead,
    kWrite,
    kDelete,
    kOwner,
};

struct HostOptions {
    std::string file;  // as the user wrote it; empty for `help` and the tools
    std::string tool;  // "check" or "salvage", which work on a file that cannot be loaded
    std::string user;
    std::optional<std::string> password;  // nothing: ask for it on a terminal when it is needed
    Output output;
    bool keep_going = false;
    std::vector<std::string> words;  // of the one command or tool; none for a session
};

class Host {
  public:
    explicit Host(HostOptions options);

    const HostOptions& options() const { return options_; }
    // How answers are shown, and how the running command shows its own.
    Output& settings() { return options_.output; }
    Output& output() { return output_; }
    bool in_table() const { return output_.format == Format::kTable; }
    bool in_session() const { return options_.words.empty(); }
    CVLDBEngine& engine() { return engine_; }

    // Logs on and loads the database if that has not been done, and refuses, as the engine does, a
    // user who lacks what is needed.
    void Prepare(Need need);
    // Prepare with no right asked for, if the file is there; for the beginning of a session.
    void PrepareSession();
    bool loaded() const { return loaded_; }
    // Loads the database if nobody has to be asked for anything, and says whether it did.
    bool LoadWithoutAsking();

    // Goes on as the same user after his name or password was changed.
    void ActAs(const std::string& user, const std::string& password);
    const std::string& user() const { return options_.user; }
    std::string password() const { return options_.password.value_or(""); }

    // Makes and saves the database. Without a password it is the user's own. CommandFailure when a
    // database is open, and when the folder is not there.
    void Create(const std::string& database_password, const std::string& full_name);

    // Where the open database is written to, or the path that the user's FILE means.
    std::string Path() const;

    // Whether there are changes that are not on the disk.
    bool unsaved() const { return unsaved_; }
    void Changed() { unsaved_ = true; }
    void Saved() { unsaved_ = false; }
    // Writes the database to its file, or to another folder or name. A file that somebody else
    // changed since it was loaded or saved is not written over without `replace`: CommandFailure,
    // or the engine's own refusal when it happens in the last moment. When the owner
    // registry alone cannot be written, the database is saved and a warning says so.
    void Save(const std::string& folder = {}, const std::string& name = {}, bool compact = false,
              bool replace = false);

    // The transaction, and who acted and what there was to save before it. What was saved inside it
    // is to be saved again when it is aborted.
    void Begin();
    void Commit(bool replace);
    void Abort();

    std::shared_ptr<CVLTable> Table(const std::string& name);

    // Answers. On a terminal, values that are too long are cut or wrapped, and what is longer than
    // the screen goes to the pager until EndAnswers().
    Results Answer(std::vector<std::string> headers, TextTable::Fit fit = TextTable::Fit::kCut);
    void AnswerOne(const Properties& properties, std::string_view title = "Property");
    void BeginAnswers();
    void EndAnswers() { pager_.reset(); }
    // A remark on success, on a line of its own; not shown when the user wants quiet, and on the
    // error stream where answers are for programs. When a single command has changes to save, it
    // waits until they are saved.
    void Note(std::string_view text);

    // Asks before what cannot be taken back. Goes on with --yes, with a yes on a terminal, and in a
    // transaction when that can take it back; else raises CommandFailure, or Cancelled after
    // Ctrl-C.
    void Confirm(const Arguments& arguments, const std::string& question, bool abortable = true);

    // A password to be set: "" with --no-password, the first line of --password-file, the
    // environment's TAVOLIN_NEW_PASSWORD, or typed twice on a terminal, where what ReadSecret
    // raises comes through. UsageError when there is none of them; CommandFailure for a file that
    // cannot be read.
    std::string NewPassword(const Arguments& arguments, const std::string& whose) const;

  private:
    void LogOn();
    void Load();
    void AskToReplace(const std::string& path, bool replace);
    template <class Write>
    void WriteFile(const std::string& path, bool replace, Write&& write);
    bool PasswordNeeded();
    void AskPassword(const std::string& prompt);
    ResultStyle Style(TextTable::Fit fit) const;
    std::ostream& NoteStream() const;

    HostOptions options_;
    Output output_;
    CVLDBEngine engine_;
    bool logged_on_ = false;
    bool loaded_ = false;
    bool unsaved_ = false;
    std::string held_notes_;
    std::unique_ptr<PagedOutput> pager_;

    struct Before {
        bool unsaved = false;
        std::string user;
        std::string password;
    };
    Before before_;
};

}  // namespace tavolin::cli
