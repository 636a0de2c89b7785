#include "cli/host.h"

#include <filesystem>
#include <iostream>
#include <utility>

#include "cli/counted_files.h"
#include "cli/display_text.h"
#include "cli/environment.h"
#include "cli/failure.h"
#include "cli/paths.h"
#include "cli/registry_warning.h"
#include "cli/terminal.h"
#include "cli/waiting.h"
#include "tavolin/base/text.h"
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
        const std::string first = ReadSecret(prompt + ": ");
        if (first == ReadSecret("Again: ")) return first;
        std::cerr << "The two differ.\n";
    }
}

}  // namespace

Host::Host(HostOptions options) : options_(std::move(options)), output_(options_.output) {
    engine_.KeepChangesOfOthers(true);
}

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
    {
        const Waiting waiting("loading " + Printable(SplitPath(LibraryPath(Path())).name));
        engine_.LoadDB(LibraryPath(Path()));
    }
    loaded_ = true;
    if (!options_.password && InputIsTerminal() && PasswordNeeded()) {
        AskPassword("Password of " + options_.user + ": ");
    }
}

bool Host::LoadWithoutAsking() {
    if (!std::filesystem::exists(PathOf(Path()))) return false;
    if (!options_.password) options_.password = "";
    LogOn();
    engine_.LoadDB(LibraryPath(Path()));
    loaded_ = !PasswordNeeded();
    return loaded_;
}

// Without a record of a refusal in the database's log, which trying would leave.
bool Host::PasswordNeeded() {
    const auto users = engine_.CVLDBUserSet();
    const std::string known = options_.password.value_or("");
    if (users->CanAdd(options_.user)) return !engine_.PasswordCorrect(known);
    return !users->Item(options_.user)->PasswordCorrect(known);
}

void Host::AskPassword(const std::string& prompt) {
    options_.password = ReadSecret(prompt);
    engine_.LogOn(options_.user, *options_.password);
}

void Host::ActAs(const std::string& user, const std::string& password) {
    options_.user = user;
    options_.password = password;
    engine_.LogOn(user, password);
    engine_.DBLegalUser(engine_.LogedOnUser(), Undefined);
}

void Host::Create(const std::string& database_password, const std::string& full_name) {
    if (loaded_) throw CommandFailure("a database is open: `tavolin NEW create` makes a new one");
    const std::string path = Path();
    const auto [dir, name] = SplitPath(LibraryPath(path));
    RequireFolder(PathOf(path).parent_path());
    if (std::filesystem::exists(PathOf(path))) {
        engine_.CreateNewDB(name, dir);  // refuses, before anybody has typed a password
    }
    if (!options_.password && InputIsTerminal()) {
        options_.password = TypedTwice("Password for the owner, " + options_.user);
        engine_.LogOn(options_.user, *options_.password);
    }
    engine_.CreateNewDB(name, dir, database_password, full_name);
    loaded_ = true;
    Save();
}

std::string Host::Path() const {
    if (!loaded_) return DatabasePath(options_.file);
    return MachinePath(JoinPath(engine_.DBPath(), engine_.DBName()));
}

// Asked before a transaction is ended for nothing; saving itself looks again.
void Host::AskToReplace(const std::string& path, bool replace) {
    if (replace || !engine_.FileChangedByOthers() || !IsOneFile(path, Path())) return;
    throw CommandFailure(
        in_session() ? "the file was changed by somebody else since it was loaded; save --as saves "
                       "elsewhere, --replace takes their changes away"
                     : "the file was changed by somebody else meanwhile; try again");
}

template <class Write>
void Host::WriteFile(const std::string& path, bool replace, Write&& write) {
    AskToReplace(path, replace);
    struct Insisting {
        Insisting(CVLDBEngine& on, bool insist) : engine(on) {
            engine.KeepChangesOfOthers(!insist);
        }
        ~Insisting() { engine.KeepChangesOfOthers(true); }
        CVLDBEngine& engine;
    } const insisting(engine_, replace);
    WritingFiles("the file is as it was", [&] { WarnOfRegistry(engine_, write); });
    Saved();
    NoteStream() << std::exchange(held_notes_, {});
}

void Host::Save(const std::string& folder, const std::string& name, bool compact, bool replace) {
    const bool renamed = !name.empty() && !EqualFold(name, engine_.DBName());
    const std::string path = MachinePath(
        JoinPath(folder.empty() ? engine_.DBPath() : folder, renamed ? name : engine_.DBName()));
    WriteFile(path, replace, [&] { engine_.SaveDB(folder, name, {}, compact); });
    if (engine_.TransactionStarted()) before_.unsaved = true;
}

void Host::Begin() {
    engine_.TransactionBegin();
    before_ = {unsaved_, user(), password()};
}

void Host::Commit(bool replace) {
    WriteFile(Path(), replace, [&] { engine_.TransactionCommit(); });
}

void Host::Abort() {
    engine_.TansactionAbort();
    unsaved_ = before_.unsaved;
    if (before_.user != user() || before_.password != password()) {
        ActAs(before_.user, before_.password);
    }
}

std::shared_ptr<CVLTable> Host::Table(const std::string& name) { return engine_.GetTable(name); }

ResultStyle Host::Style(TextTable::Fit fit) const {
    return {output_.format, output_.header, !output_.quiet, TerminalWidth(), fit};
}

Results Host::Answer(std::vector<std::string> headers, TextTable::Fit fit) {
    BeginAnswers();
    return Results(std::cout, Style(fit), std::move(headers));
}

void Host::AnswerOne(const Properties& properties, std::string_view title) {
    BeginAnswers();
    PrintProperties(std::cout, Style(TextTable::Fit::kWrap), properties, title);
}

void Host::BeginAnswers() {
    if (!pager_ && output_.pager) pager_ = std::make_unique<PagedOutput>();
}

std::ostream& Host::NoteStream() const { return in_table() ? std::cout : std::cerr; }

void Host::Note(std::string_view text) {
    if (output_.quiet) return;
    const std::string line = Printable(text) + '\n';
    if (!in_session() && unsaved_) {
        held_notes_ += line;
    } else {
        NoteStream() << line;
    }
}

void Host::Confirm(const Arguments& arguments, const std::string& question, bool abortable) {
    if (arguments.Has("--yes") || (abortable && engine_.TransactionStarted())) return;
    if (!InputIsTerminal()) throw CommandFailure("refused without --yes: " + question);
    const auto answer = Ask(question);
    if (answer == cli::Answer::kInterrupted) throw Cancelled();
    if (answer != cli::Answer::kYes) throw CommandFailure("left as it is");
}

std::string Host::NewPassword(const Arguments& arguments, const std::string& whose) const {
    if (arguments.Has("--no-password")) return {};
    if (const auto file = arguments.Find("--password-file")) return FirstLine(*file);
    if (auto given = Environment("TAVOLIN_NEW_PASSWORD"); !given.empty()) return given;
    if (InputIsTerminal()) return TypedTwice("New password " + whose);
    throw UsageError("the new password " + whose +
                     " is missing: use --password-file, TAVOLIN_NEW_PASSWORD or --no-password");
}

}  // namespace tavolin::cli
