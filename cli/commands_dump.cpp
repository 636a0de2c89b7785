// The whole database as readable text, and back.
#include <filesystem>
#include <iostream>
#include <optional>

#include "cli/commands.h"
#include "cli/dump_reader.h"
#include "cli/dump_writer.h"
#include "cli/failure.h"
#include "cli/paths.h"
#include "cli/progress.h"
#include "cli/terminal.h"
#include "cli/text_output.h"

namespace tavolin::cli {
namespace {

namespace fs = std::filesystem;

ByteSource InputSource(const Host& host, const std::string& path) {
    if (path != "-") return FileSource(path);
    if (host.in_session()) throw UsageError("in a session the input holds the commands");
    return [](char* into, std::size_t room) {
        std::cin.read(into, static_cast<std::streamsize>(room));
        return static_cast<std::size_t>(std::cin.gcount());
    };
}

// The password that the restored owner gets: one that was given for this, or else the user's own.
std::string OwnerPassword(const Host& host, const Arguments& words, const std::string& owner) {
    const bool given = words.Has("--password-file") || words.Has("--no-password");
    if (!given && host.options().password) return host.password();
    return host.NewPassword(words, "of " + owner + ", the owner,");
}

}  // namespace

void DumpCommand(Host& host, const Arguments& words) {
    const std::string path = OutputPath(words.Get("OUT", "-"));
    AskToWrite(host, words, path);
    TextOutput out(path);
    DumpWriter(host.engine(), out.text(), [&] { out.Flow(); }).Write();
    out.Finish();
    if (path != "-") host.Note("dumped to " + path);
}

void RestoreCommand(Host& host, const Arguments& words) {
    const std::string& path = words["IN"];
    if (host.loaded()) {
        throw CommandFailure("a database is open: `tavolin NEW restore IN` makes a new one");
    }
    if (fs::exists(PathOf(host.Path()))) {
        throw CommandFailure(host.Path() + " is there already; restore makes a new database");
    }
    RequireFolder(PathOf(host.Path()).parent_path());
    const ByteSource source = InputSource(host, path);
    std::optional<std::string> database_password;
    if (const auto file = words.Find("--database-password-file")) {
        database_password = FirstLine(*file);
    }
    const InterruptCatcher catcher;
    ForgetInterrupt();
    RestoredDatabase restored(host.Path(), database_password, [&](const std::string& owner) {
        return OwnerPassword(host, words, owner);
    });
    std::error_code unknown;
    const auto size = fs::file_size(PathOf(path), unknown);
    Progress progress(unknown ? 0 : size, "records");
    try {
        DumpReader(source, restored, [&](const LineReader& lines) {
            progress.Show(lines.bytes_read(), static_cast<std::uint64_t>(restored.records()));
            if (Interrupted()) throw Cancelled("nothing was restored");
        }).Read();
        progress.Clear();
        restored.Save();
    } catch (const DumpError& error) {
        throw CommandFailure(path + ":" + std::to_string(error.line()) + ": " + error.what());
    }
    CVLDBEngine& engine = restored.engine();
    host.Note("restored " + host.Path() + ": " +
              Counted(static_cast<std::size_t>(engine.CVLTableSet()->Count()), "table") + ", " +
              Counted(static_cast<std::size_t>(restored.records()), "record"));
    const bool owned = engine.UserExists(engine.DBOwner());
    host.Note("its owner is " + engine.DBOwner() +
              (owned ? ", with the password that was given"
                     : ", who is not among its users: nobody can act as the owner"));
    if (engine.CVLDBUserSet()->Count() > 1) {
        host.Note("the other users need new passwords: `set-user NAME --ask-password`");
    }
    if (engine.PasswordCorrect("")) host.Note("its password is empty: anybody may read it");
}

}  // namespace tavolin::cli
