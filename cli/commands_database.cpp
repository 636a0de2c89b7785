// The database as a whole: making, showing, saving, handing over, deleting; the transaction.
#include <iostream>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/paths.h"
#include "cli/terminal.h"
#include "tavolin/base/clock.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

std::string SecretFor(const Arguments& words, std::string_view option, const std::string& prompt) {
    if (const auto file = words.Find(option)) return FirstLine(*file);
    if (!InputIsTerminal()) {
        throw UsageError(prompt + " is missing: use " + std::string(option));
    }
    return ReadSecret(prompt + ": ");
}

std::string RightsOf(CVLDBEngine& engine) {
    const auto user = engine.LogedOnUser();
    if (engine.LogedOnIsOwner(user)) return "owner";
    const auto users = engine.CVLDBUserSet();
    const bool known = !users->CanAdd(user->UserName());
    if (!known || !users->Item(user->UserName())->Equals(user)) return "read";
    const auto stored = users->Item(user->UserName());
    std::string rights;
    if (stored->CanRead()) rights += "read ";
    if (stored->CanReadWrite()) rights += "write ";
    if (stored->CanDelete()) rights += "delete ";
    if (!rights.empty()) rights.pop_back();
    return rights;
}

}  // namespace

void CreateCommand(Host& host, const Arguments& words) {
    std::string password;
    if (words.Has("--ask-password") || words.Has("--database-password-file")) {
        password = SecretFor(words, "--database-password-file", "Password for the database");
    }
    host.Create(password, words.Get("--full-name"));
    host.Note("created " + host.Path());
    if (host.engine().PasswordCorrect("")) {
        host.Note("its password is empty: anybody may read it");
    }
}

void InfoCommand(Host& host, const Arguments&) {
    CVLDBEngine& engine = host.engine();
    std::int64_t records = 0;
    for (const auto& table : engine.CVLTableSet()->NewEnum()) records += table->Count();
    host.AnswerOne({{"file", host.Path()},
                    {"owner", engine.DBOwner()},
                    {"created", GeneralDate(engine.DBCreationDate())},
                    {"tables", std::to_string(engine.CVLTableSet()->Count())},
                    {"records", std::to_string(records)},
                    {"users", std::to_string(engine.CVLDBUserSet()->Count())},
                    {"you", engine.LogedOnUser()->UserName()},
                    {"your rights", RightsOf(engine)},
                    {"transaction", engine.TransactionStarted() ? "open" : "none"},
                    {"unsaved changes", host.unsaved() ? "yes" : "no"}});
}

void SaveCommand(Host& host, const Arguments& words) {
    std::string name = words.Get("--as");
    if (name.find_first_of("/\\") != name.npos) {
        throw UsageError("--as takes a name; the folder goes with --to");
    }
    if (!name.empty() && name.find('.') == name.npos) name += ".cdb";
    const auto folder = words.Find("--to");
    host.Save(folder ? FolderPath(*folder) : std::string(), name, words.Has("--compact"),
              words.Has("--replace"));
    host.Note("saved " + host.Path());
}

void PasswordCommand(Host& host, const Arguments& words) {
    CVLDBEngine& engine = host.engine();
    std::string old_password;
    if (!engine.LogedOnIsOwner(engine.LogedOnUser())) {
        old_password = SecretFor(words, "--old-password-file", "Old password of the database");
    }
    engine.ChangePassword(old_password, host.NewPassword(words, "of the database"));
    host.Changed();
    host.Note("password changed");
}

void OwnerCommand(Host& host, const Arguments& words) {
    CVLDBEngine& engine = host.engine();
    const std::string& name = words["USER"];
    const auto known = engine.UserExists(name) ? engine.CVLDBUserSet()->Item(name) : nullptr;
    const bool asked = !known || words.Has("--password-file") || words.Has("--no-password");
    host.Confirm(words, "Hand the database to " + name + "?");
    const std::string password = asked ? host.NewPassword(words, "of " + name) : std::string();
    engine.ChangeOwner(name, password, words.Get("--full-name", known ? known->UserFullName() : ""),
                       words.Get("--description", known ? known->UserDescription() : ""));
    host.Changed();
    // The engine takes an empty password for none that is to be set.
    if (known && asked && password.empty()) SetPassword(*known, password);
    if (asked && EqualFold(name, host.user())) host.ActAs(name, password);
    host.Note("the owner is " + engine.DBOwner());
}

void DeleteDatabaseCommand(Host& host, const Arguments& words) {
    const auto file = words.Find("FILE");
    const std::string path = file ? DatabasePath(*file) : host.Path();
    const bool open_one = path == host.Path();
    host.Confirm(words, "Delete " + path + "?", false);
    host.engine().DeleteDB(LibraryPath(path));
    if (open_one) host.Saved();
    host.Note("deleted " + path);
}

void BeginCommand(Host& host, const Arguments&) {
    host.Begin();
    host.Note("transaction begun");
}

void CommitCommand(Host& host, const Arguments& words) {
    host.Commit(words.Has("--replace"));
    host.Note("committed and saved");
}

void AbortCommand(Host& host, const Arguments&) {
    host.Abort();
    host.Note("everything since `begin` is taken back");
    if (host.unsaved()) host.Note("there are unsaved changes: the file is not what it was");
}

}  // namespace tavolin::cli
