#include "cli/tools.h"

#include <iostream>
#include <optional>
#include <string>

#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/counted_files.h"
#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/pager.h"
#include "cli/paths.h"
#include "cli/results.h"
#include "cli/run_command.h"
#include "cli/terminal.h"
#include "cli/waiting.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/persist/paths.h"
#include "tavolin/salvage/salvage.h"

namespace tavolin::cli {
namespace {

enum ToolStatus { kWhole = 0, kDamaged = 1, kNotRead = 2 };

constexpr Command kTools[] = {
    {"check", "FILE", "Say whether a database's file is damaged, and where.",
     "tavolin check shop.cdb", Need::kNothing, Where::kAnywhere, nullptr,
     "A registry of owners can be checked as well. Nothing in the file is believed, so it may be "
     "one that cannot be loaded.\n"
     "The exit status is 0 for a whole file, 1 for a damaged one, 2 when it cannot be read."},
    {"salvage", "FILE NEW [--replace] [--take-ownership]",
     "Make a new database of what can still be read of a damaged one.",
     "tavolin salvage shop.cdb saved.cdb", Need::kNothing, Where::kAnywhere, nullptr,
     "What is lost is listed. FILE stays as it is.\n"
     "The exit status is 0 when nothing is lost, 1 when something is lost or in doubt, 2 when "
     "no new file was written.\n"
     "--replace: write over a file NEW that is there\n"
     "--take-ownership: become the owner of NEW when it is lost who owns FILE, or with which "
     "password"},
};

const char* Word(Finding::Kind kind) {
    switch (kind) {
        case Finding::Kind::kLoss:
            return "lost";
        case Finding::Kind::kDamage:
            return "damaged";
        case Finding::Kind::kRemark:
            break;
    }
    return "odd";
}

void Show(const HostOptions& options, const Findings& findings) {
    if (findings.empty()) return;
    std::optional<PagedOutput> pager;
    if (options.output.pager) pager.emplace();
    Results results(std::cout, {options.output.format, options.output.header, false, 0},
                    {"", "Byte", "Where", "What"});
    for (const Finding& finding : findings) {
        results.Add(
            {Word(finding.kind), std::to_string(finding.offset), finding.where, finding.what});
    }
    results.Finish();
}

std::string Contents(const SalvagedFile& file) {
    return Counted(file.tables(), "table") + ", " + Counted(file.records(), "record") + ", " +
           Counted(file.users(), "user");
}

// A password that was not given is asked for only when it is needed.
SalvagedFile::Access AccessOf(const SalvagedFile& file, HostOptions& options) {
    const auto access = file.AccessOf(options.user, options.password.value_or(""));
    if (access != SalvagedFile::Access::kRefused || options.password || !InputIsTerminal()) {
        return access;
    }
    options.password = ReadSecret("Password of " + options.user + ": ");
    return file.AccessOf(options.user, *options.password);
}

[[noreturn]] void RaiseRefused(const HostOptions& options) {
    throw CommandFailure(options.user + " may not read this database, or the password is not " +
                         options.user + "'s");
}

void AskReadable(const SalvagedFile& file, const std::string& path) {
    if (file.kind() == SalvagedFile::Kind::kForeign) {
        throw CommandFailure(path + " holds nothing that a database or a registry of owners holds");
    }
    if (file.kind() == SalvagedFile::Kind::kNewer) {
        throw CommandFailure(path + " was written in a newer version of the format");
    }
}

SalvagedFile ReadFile(const std::string& path) {
    const Waiting waiting("reading " + Printable(path));
    return SalvagedFile(LibraryPath(path));
}

int CheckFile(HostOptions& options, const std::string& path) {
    const SalvagedFile file = ReadFile(path);
    AskReadable(file, path);
    const bool database = file.kind() == SalvagedFile::Kind::kDatabase;
    if (database && AccessOf(file, options) == SalvagedFile::Access::kRefused) {
        RaiseRefused(options);
    }
    Show(options, file.findings());
    if (!options.output.quiet) {
        std::cout << Printable(path) << ": " << (file.whole() ? "whole" : "damaged")
                  << (database ? "; " + Contents(file) : std::string(", a registry of owners"))
                  << '\n';
    }
    return file.whole() ? kWhole : kDamaged;
}

int Salvage(HostOptions& options, const Arguments& words) {
    const std::string path = DatabasePath(words["FILE"]);
    const std::string target = DatabasePath(words["NEW"]);
    if (IsOneFile(LibraryPath(path), LibraryPath(target))) {
        throw UsageError("NEW is the damaged file itself");
    }
    const auto ask_free = [&] {
        if (words.Has("--replace") || !FileExists(LibraryPath(target))) return;
        throw CommandFailure(target + " is there already; --replace writes over it");
    };
    ask_free();
    SalvagedFile file = ReadFile(path);
    AskReadable(file, path);
    if (file.kind() == SalvagedFile::Kind::kRegistry) {
        throw CommandFailure(path +
                             " is a registry of owners, not a database; without it a new "
                             "one is made as databases are saved");
    }
    const auto access = AccessOf(file, options);
    if (access == SalvagedFile::Access::kRefused) RaiseRefused(options);
    std::optional<SalvagedFile::NewOwner> owner;
    if (access == SalvagedFile::Access::kOwnerLost) {
        if (!words.Has("--take-ownership")) {
            throw CommandFailure(
                "who owns the database, or his password, is lost; "
                "--take-ownership makes " +
                options.user + " the owner of the new one");
        }
        owner = {options.user, options.password.value_or("")};
    }
    const ByteBuffer state = file.State(owner);
    WritingFiles("nothing was written",
                 [&] { WriteDatabaseFile(LibraryPath(target), state.bytes(), true, ask_free); });
    Show(options, file.findings());
    if (!options.output.quiet) {
        std::cout << "written to " << Printable(target) << ": " << Contents(file) << '\n';
    }
    return file.whole() ? kWhole : kDamaged;
}

}  // namespace

std::span<const Command> Tools() { return kTools; }

const Command* ToolNamed(std::string_view word) {
    for (const Command& tool : kTools) {
        if (tool.name == word) return &tool;
    }
    return nullptr;
}

int RunTool(const HostOptions& given) {
    const InterruptCatcher catcher(InterruptCatcher::At::kOnce);
    int status = kNotRead;
    const int failure = ReportFailures([&] {
        HostOptions options = given;
        const Arguments words = ArgumentsOf(*ToolNamed(options.tool), options.words);
        options.output = OutputOf(options.output, words);
        const Stopwatch stopwatch(options.output.timing);
        status = options.tool == "check" ? CheckFile(options, DatabasePath(words["FILE"]))
                                         : Salvage(options, words);
    });
    if (failure == kInterruptedStatus) return failure;
    return failure != kSuccess ? kNotRead : status;
}

// The file may have been replaced since: its users and passwords decide anew.
void CheckCommand(Host& host, const Arguments&) {
    HostOptions options = host.options();
    options.output = host.output();
    if (CheckFile(options, host.Path()) != kWhole) throw CommandFailure("the file is damaged");
}

}  // namespace tavolin::cli
