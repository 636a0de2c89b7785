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
    std::string file;  // as the user wrote it
    std::string user;
    std::optional<std::string> password;  // nothing: ask for it on a terminal when it is needed
    Format format = Format::kTable;
    bool header = true;
    bool quiet = false;
    bool keep_going = false;
    std::vector<std::string> words;  // of the one command; none for a session
};

class Host {
  public:
    explicit Host(HostOptions options);

    const HostOptions& options() const { return options_; }
    bool in_session() const { return options_.words.empty(); }
    CVLDBEngine& engine() { return engine_; }

    // Logs on and loads the database if that has not been done, and refuses, as the engine does, a
    // user who lacks what is needed.
    void Prepare(Need need);
    // Prepare with no right asked for, if the file is there; for the beginning of a session.
    void PrepareSession();
    bool loaded() const { return loaded_; }

    // Makes and saves the database. Without a password it is the user's own.
    void Create(const std::string& database_password, const std::string& full_name);

    // Where the open database is written to, or the path that the user's FILE means.
    std::string Path() const;

    // Whether there are changes that are not on the disk.
    bool unsaved() const { return unsaved_; }
    void Changed() { unsaved_ = true; }
    void Saved() { unsaved_ = false; }
    void Save();

    // The transaction, and what there was to save before it.
    void Begin();
    void Commit();
    void Abort();

    // Tables and answers.
    std::shared_ptr<CVLTable> Table(const std::string& name);
    enum class Fit { kTerminal, kWhole };  // whether long values are shortened on a terminal
    Results Answer(std::vector<std::string> headers, Fit fit = Fit::kTerminal);
    // A remark on success, on a line of its own; not shown when the user wants quiet.
    void Note(std::string_view text) const;

    // Asks before what cannot be taken back. Goes on with --yes, with a yes on a terminal, and in a
    // transaction when that can take it back; else raises CommandFailure.
    void Confirm(const Arguments& arguments, const std::string& question, bool abortable = true);

    // A password to be set: "" with --no-password, the first line of --password-file, the
    // environment's TAVOLIN_NEW_PASSWORD, or typed twice. None of them raises UsageError.
    std::string NewPassword(const Arguments& arguments, const std::string& whose) const;

  private:
    void LogOn();
    void Load();
    bool PasswordNeeded();
    void AskPassword(const std::string& prompt);

    HostOptions options_;
    CVLDBEngine engine_;
    bool logged_on_ = false;
    bool loaded_ = false;
    bool unsaved_ = false;
    bool unsaved_before_ = false;
};

}  // namespace tavolin::cli
