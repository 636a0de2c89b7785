#include "cli/command.h"

#include <algorithm>

#include "cli/commands.h"

namespace tavolin::cli {
namespace {

constexpr Where kAnywhere = Where::kAnywhere;
constexpr Where kSessionOnly = Where::kSessionOnly;

constexpr Command kCommands[] = {
    {"create", "[--full-name NAME] [--ask-password] [--database-password-file F]",
     "Make a new, empty database of yours, save it and enter it in the registry of owners.",
     "create --full-name 'Ann Lee'", Need::kNewDatabase, kAnywhere, CreateCommand},
    {"info", "", "Show what the database is and who owns it.", "info", Need::kRead, kAnywhere,
     InfoCommand},
    {"save", "[--as NAME] [--to FOLDER] [--compact] [--replace]",
     "Write the database to its file, or to another one that becomes its own; --replace writes "
     "over what others saved since it was loaded.",
     "save --as copy --to /backup", Need::kWrite, kAnywhere, SaveCommand},
    {"password", "[--password-file F] [--no-password] [--old-password-file F]",
     "Change the database password; --no-password makes it empty.",
     "password --password-file new.txt", Need::kWrite, kAnywhere, PasswordCommand},
    {"owner",
     "NAME [--full-name NAME] [--description TEXT] [--password-file F] [--no-password] [--yes]",
     "Hand the database to another user, who is added if he is not there.", "owner bob",
     Need::kOwner, kAnywhere, OwnerCommand},
    {"delete-database", "[FILE] [--yes]",
     "Delete a database file of yours and its log; this one without FILE.",
     "delete-database old.cdb --yes", Need::kOwner, kAnywhere, DeleteDatabaseCommand},

    {"tables", "", "List the tables.", "tables", Need::kRead, kAnywhere, TablesCommand},
    {"table", "TABLE", "Show a table's fields, key and links.", "table Customers", Need::kRead,
     kAnywhere, TableCommand},
    {"make-table", "TABLE --fields NAMES [--key FIELDS]",
     "Make a table; up to ten fields, up to four in the key, which is the first if not given.",
     "make-table Customers --fields ID,Name,City --key ID", Need::kWrite, kAnywhere,
     MakeTableCommand},
    {"make-linked", "TABLE FIELD --fields NAMES",
     "Make a table named FIELD and TABLE together, and link the field to it.",
     "make-linked Customers City --fields City,Country", Need::kWrite, kAnywhere,
     MakeLinkedCommand},
    {"link", "TABLE FIELD TARGET", "Make a field refer to the records of another table.",
     "link Orders Customer Customers", Need::kWrite, kAnywhere, LinkCommand},
    {"unlink", "TABLE TARGET", "Take the links from one table to another away.",
     "unlink Orders Customers", Need::kOwner, kAnywhere, UnlinkCommand},
    {"drop-table", "TABLE [--no-cascade] [--yes]",
     "Delete a table and, unless --no-cascade, those that only its links refer to.",
     "drop-table Orders --yes", Need::kOwner, kAnywhere, DropTableCommand},
    {"rename-table", "TABLE NAME", "Give a table another name.", "rename-table Orders Sales",
     Need::kWrite, kAnywhere, RenameTableCommand},
    {"label", "TABLE FIELD LABEL", "Set the label that a field is shown under.",
     "label Customers Name 'Full name'", Need::kWrite, kAnywhere, LabelCommand},

    {"add", "TABLE VALUE... [--values]",
     "Add a record: values in order, or FIELD=value words; --values if values look like those.",
     "add Customers 7 'Ann Lee' Paris", Need::kWrite, kAnywhere, AddCommand},
    {"update", "TABLE KEY FIELD=VALUE...", "Change the fields named and keep the others.",
     "update Customers 7 City=Rome", Need::kWrite, kAnywhere, UpdateCommand},
    {"delete", "TABLE KEY [--no-cascade]",
     "Delete a record and, unless --no-cascade, what only it refers to.", "delete Customers 7",
     Need::kDelete, kAnywhere, DeleteCommand},
    {"get", "TABLE KEY", "Show a record, a field a line, and its attachments.",
     "get Customers '#1'", Need::kRead, kAnywhere, GetCommand},
    {"find", "TEXT [--in TABLE] [--field FIELD] [--key]",
     "Show the records that contain a text, in any letter case, or have that key; --field "
     "needs --in.",
     "find paris --in Customers --field City", Need::kRead, kAnywhere, FindCommand},
    {"list", "TABLE [--from N] [--count N]", "Show records in their order, from the Nth on.",
     "list Customers --from 101 --count 20", Need::kRead, kAnywhere, ListCommand},
    {"count", "TABLE", "Show how many records a table has.", "count Customers", Need::kRead,
     kAnywhere, CountCommand},
    {"attach", "TABLE KEY PATH [--kind picture|sound|movie|other]",
     "Attach a file to a record; its path is kept, not the file.",
     "attach Customers 7 ann.png --kind picture", Need::kWrite, kAnywhere, AttachCommand},
    {"import", "TABLE FILE.csv [--key FIELDS] [--skip-duplicates]",
     "Add the rows of a CSV file with a header; a missing table is made.",
     "import Cities cities.csv --key ID", Need::kWrite, kAnywhere, ImportCommand},

    {"sort", "TABLE FIELD [--yes]",
     "Put the records of a table in the order of a field; all fields are compared as one text, "
     "that "
     "one first.",
     "sort Customers City --yes", Need::kWrite, kAnywhere, SortCommand},
    {"export text", "[FILE.txt] [--yes]",
     "Write all tables to a text file, named as the database and in the current folder if not "
     "given.",
     "export text customers.txt", Need::kRead, kAnywhere, ExportTextCommand},
    {"export html", "[FOLDER] [--yes]",
     "Publish all tables as a web site in a folder, which is made if it is missing; named as "
     "the database and in the current folder if not given.",
     "export html site", Need::kRead, kAnywhere, ExportHtmlCommand},
    {"export mdb", "[FILE.mdb] [--replace]",
     "Write all tables to an Access database, or add them to an earlier export; --replace puts "
     "the new one in its place.",
     "export mdb customers.mdb", Need::kRead, kAnywhere, ExportMdbCommand},
    {"export sql", "[OUT] [--yes]",
     "Write everything, passwords excepted, as SQL that SQLite and PostgreSQL load as it is; named "
     "as the database and in the current folder if not given, - is the standard output.",
     "export sql shop.sql", Need::kRead, kAnywhere, ExportSqlCommand},
    {"dump", "[OUT] [--yes]",
     "Write the whole database as readable text, passwords excepted, to a file or to the standard "
     "output; `restore` reads it back.",
     "dump shop.txt", Need::kOwner, kAnywhere, DumpCommand},
    {"restore", "IN [--password-file F] [--no-password] [--database-password-file F]",
     "Make this database, which must not be there yet, of a text that `dump` wrote; - is the "
     "standard input. The owner gets the password that you give; the other users get passwords "
     "that nobody knows, until the owner sets them.",
     "restore shop.txt", Need::kNothing, kAnywhere, RestoreCommand},

    {"begin", "", "Begin a transaction.", "begin", Need::kWrite, kSessionOnly, BeginCommand},
    {"commit", "[--replace]",
     "End the transaction and save; it has ended even if saving fails. --replace is that of save.",
     "commit", Need::kWrite, kSessionOnly, CommitCommand},
    {"abort", "", "End the transaction and take everything done in it back.", "abort", Need::kRead,
     kSessionOnly, AbortCommand},

    {"owners", "[NAME]", "List the owners in the registry, or the databases of one.", "owners ann",
     Need::kRead, kAnywhere, OwnersCommand},
    {"users", "", "List the users and their rights.", "users", Need::kRead, kAnywhere,
     UsersCommand},
    {"user", "NAME", "Show a user.", "user ann", Need::kRead, kAnywhere, UserCommand},
    {"add-user",
     "NAME [--read] [--write] [--delete] [--full-name NAME] [--description TEXT] [--disabled] "
     "[--password-file F] [--no-password]",
     "Add a user with the rights named.", "add-user bob --read --write --password-file bob.txt",
     Need::kOwner, kAnywhere, AddUserCommand},
    {"set-user",
     "NAME [--read on|off] [--write on|off] [--delete on|off] [--disabled on|off] "
     "[--name NAME] [--full-name NAME] [--description TEXT] "
     "[--password-file F] [--ask-password] [--no-password]",
     "Change a user's rights, names, description or password.", "set-user bob --write off",
     Need::kOwner, kAnywhere, SetUserCommand},
    {"remove-user", "NAME [--yes]", "Remove a user.", "remove-user bob --yes", Need::kOwner,
     kAnywhere, RemoveUserCommand},

    {"notes", "[USER]", "List the notes about a user, yourself without USER.", "notes bob",
     Need::kOwner, kAnywhere, NotesCommand},
    {"note add", "TEXT... [--user NAME] [--number N]",
     "Add a note, dated now or the next second without one; N is the new count if not given.",
     "note add --user bob 'Asked for the right to write'", Need::kOwner, kAnywhere, NoteAddCommand},
    {"note set", "NOTE TEXT... [--user NAME]",
     "Give a note another text; NOTE is its date, or #N for the Nth.",
     "note set '11/15/2026 1:05:00 AM' 'Has it now' --user bob", Need::kOwner, kAnywhere,
     NoteSetCommand},
    {"note remove", "NOTE [--user NAME] [--yes]",
     "Remove a note; NOTE is its date, or #N for the Nth.", "note remove '#1' --user bob --yes",
     Need::kOwner, kAnywhere, NoteRemoveCommand},

    {"log", "", "Show which activities the log file receives.", "log", Need::kRead, kAnywhere,
     LogCommand},
    {"log on", "KIND...", "Log these activities as well; the kinds are those that `log` shows.",
     "log on errors record-add", Need::kOwner, kAnywhere, LogOnCommand},
    {"log off", "KIND...", "Log these activities no longer.", "log off all", Need::kOwner,
     kAnywhere, LogOffCommand},
    {"log report", "", "Show what has been done since this program began.", "log report",
     Need::kRead, kAnywhere, LogReportCommand},
    {"log file", "", "Show the path of the log file.", "log file", Need::kRead, kAnywhere,
     LogFileCommand},

    {"help", "[COMMAND...]", "List the commands, or explain one.", "help import", Need::kNothing,
     kAnywhere, HelpCommand},
    {"quit", "[--discard]", "Leave; --discard gives unsaved changes up without a question.",
     "quit --discard", Need::kNothing, kSessionOnly, QuitCommand},
    {"exit", "[--discard]", "The same as quit.", "exit", Need::kNothing, kSessionOnly, QuitCommand},
};

const Command* CommandNamed(std::string_view name) {
    const auto found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                    [&](const Command& command) { return command.name == name; });
    return found == std::end(kCommands) ? nullptr : found;
}

std::vector<std::string> OptionsOf(const Command& command, std::string_view last) {
    std::vector<std::string> options;
    for (const PatternPart& part : ParsePattern(command.pattern)) {
        if (!part.IsOption()) continue;
        if (part.name == last && !part.value.empty()) return part.Choices();
        options.push_back(part.name);
    }
    return options;
}

}  // namespace

std::span<const Command> Commands() { return kCommands; }

const Command* TakeCommand(std::span<const std::string>& words) {
    for (const std::size_t count : {std::size_t{2}, std::size_t{1}}) {
        if (words.size() < count) continue;
        const std::string name = count == 2 ? words[0] + " " + words[1] : words[0];
        if (const Command* const command = CommandNamed(name)) {
            words = words.subspan(count);
            return command;
        }
    }
    return nullptr;
}

std::vector<std::string> Completions(std::span<const std::string> before, std::string_view word,
                                     const std::vector<std::string>& tables) {
    std::vector<std::string> candidates;
    if (before.empty() || before[0] == "help") {
        for (const Command& command : kCommands) candidates.emplace_back(command.name);
    } else {
        const std::string last = before.back();
        if (const Command* const command = TakeCommand(before)) {
            candidates = OptionsOf(*command, last);
            candidates.insert(candidates.end(), tables.begin(), tables.end());
        }
    }
    std::erase_if(candidates,
                  [&](const std::string& candidate) { return !candidate.starts_with(word); });
    return candidates;
}

}  // namespace tavolin::cli
