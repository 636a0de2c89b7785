#include "cli/host.h"

#include <filesystem>
#include <iostream>
#include <utility>

#include "cli/failure.h"
#include "cli/paths.h"
#include "cli/terminal.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

PermitStateEnum Permission(Need need) {
    switch (need) {
        case Need::kRead:
            return ToRead;
        case Need::kWrite:
            return ToReadWrite;
        case Need::kDelete:
            return ToDelete;
        case Need::kOwner:
            return Ownership;
        default:
            return Undefined;
    }
}

std::string TypedTwice(const std::string& prompt) {
    while (true) {
        const auto first = ReadSecret(prompt + ": ");
        const auto again = first ? ReadSecret("Again: ") : std::nullopt;
        if (!again) throw CommandFailure("no password was given");
        if (*first == *again) return *first;
        std::cerr << "The two differ.\n";
    }
}

}  // namespace

Host::Host(HostOptions options) : options_(std::move(options)) {}

void Host::Prepare(Need need) {
    if (need == Need::kNothing) return;
    LogOn();
    if (need == Need::kNewDatabase) return;
    Load();
    engine_.DBLegalUser(engine_.LogedOnUser(), Permission(need));
}

void Host::PrepareSession() {
    if (!std::filesystem::exists(PathOf(Path()))) return;
    LogOn();
    Load();
    engine_.DBLegalUser(engine_.LogedOnUser(), Undefined);
}

void Host::LogOn() {
    if (std::exchange(logged_on_, true)) return;
    engine_.LogOn(options_.user, options_.password.value_or(""));
}

void Host::Load() {
    if (loaded_) return;
    engine_.LoadDB(LibraryPath(Path()));
    loaded_ = true;
    if (!options_.password && InputIsTerminal() && PasswordNeeded()) {
        AskPassword("Password of " + options_.user + ": ");
    }
}

// Without a record of a refusal in the database's log, which trying would leave.
bool Host::PasswordNeeded() {
    const auto users = engine_.CVLDBUserSet();
    if (users->CanAdd(options_.user)) return !engine_.PasswordCorrect("");
    return !users->Item(options_.user)->PasswordCorrect("");
}

void Host::AskPassword(const std::string& prompt) {
    options_.password = ReadSecret(prompt);
    if (!options_.password) throw CommandFailure("no password was given");
    engine_.LogOn(options_.user, *options_.password);
}

void Host::Create(const std::string& database_password, const std::string& full_name) {
    const auto [dir, name] = SplitPath(LibraryPath(DatabasePath(options_.file)));
    if (std::filesystem::exists(PathOf(Path()))) {
        engine_.CreateNewDB(name, dir);  // refuses, before anybody has typed a password
    }
    if (!options_.password && InputIsTerminal()) {
        options_.password = TypedTwice("Password for the owner, " + options_.user);
        engine_.LogOn(options_.user, *options_.password);
    }
    engine_.CreateNewDB(name, dir, database_password, full_name);
    loaded_ = true;
    engine_.SaveDB();
    Saved();
}

std::string Host::Path() const {
    if (!loaded_) return DatabasePath(options_.file);
    return MachinePath(JoinPath(engine_.DBPath(), engine_.DBName()));
}

void Host::Save() {
    engine_.SaveDB();
    Saved();
}

void Host::Begin() {
    engine_.TransactionBegin();
    unsaved_before_ = unsaved_;
}

void Host::Commit() {
    engine_.TransactionCommit();
    Saved();
}

void Host::Abort() {
    engine_.TansactionAbort();
    unsaved_ = unsaved_before_;
}

std::shared_ptr<CVLTable> Host::Table(const std::string& name) { return engine_.GetTable(name); }

Results Host::Answer(std::vector<std::string> headers, Fit fit) {
    const std::size_t width = fit == Fit::kTerminal ? TerminalWidth() : 0;
    return Results(std::cout, {options_.format, options_.header, !options_.quiet, width},
                   std::move(headers));
}

void Host::Note(std::string_view text) const {
    if (!options_.quiet) std::cout << text << '\n';
}

void Host::Confirm(const Arguments& arguments, const std::string& question, bool abortable) {
    if (arguments.Has("--yes") || (abortable && engine_.TransactionStarted())) return;
    if (!InputIsTerminal()) throw CommandFailure("refused without --yes: " + question);
    if (!cli::Confirm(question)) throw CommandFailure("left as it is");
}

std::string Host::NewPassword(const Arguments& arguments, const std::string& whose) const {
    if (arguments.Has("--no-password")) return {};
    if (const auto file = arguments.Find("--password-file")) return FirstLine(*file);
    if (const auto given = Environment("TAVOLIN_NEW_PASSWORD"); !given.empty()) return given;
    if (InputIsTerminal()) return TypedTwice("New password " + whose);
    throw UsageError("the new password " + whose +
                     " is missing: use --password-file, TAVOLIN_NEW_PASSWORD or --no-password");
}

}  // namespace tavolin::cli
