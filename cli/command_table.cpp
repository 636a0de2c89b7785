// All commands, with everything that is said about them.
#include "cli/command.h"
#include "cli/commands.h"

namespace tavolin::cli {
namespace {

constexpr Where kAnywhere = Where::kAnywhere;
constexpr Where kSessionOnly = Where::kSessionOnly;

constexpr Command kDatabase[] = {
    {"create", "[--full-name NAME] [--ask-password] [--database-password-file F]",
     "Make a new, empty database of yours, save it and enter it in the registry of owners.",
     "create\ncreate --full-name 'Ann Lee'", Need::kNewDatabase, kAnywhere, CreateCommand,
     "You become its owner, with the password that you gave the program; on a terminal without one "
     "it is asked for. A file that is there is refused.\n"
     "--full-name: your name as it is shown to others\n"
     "--ask-password: ask for a password of the database, which is not yours but lets anybody who "
     "knows it read\n"
     "--database-password-file: a file whose first line is that password"},
    {"info", "", "Show what the database is, who owns it and what you may do.", "info", Need::kRead,
     kAnywhere, InfoCommand},
    {"stats", "[TABLE]", "Count what the tables hold, or what the fields of one table hold.",
     "stats\nstats Customers", Need::kRead, kAnywhere, StatsCommand,
     "Without TABLE: of each table the records, the bytes of their texts, the links to other "
     "tables and the attachments; then the size of the file and the memory that this program "
     "takes.\n"
     "With TABLE: of each field how many records have a value in it, how many different values "
     "there are, and how long the longest is."},
    {"check", "", "Say whether the database's file, as it was last saved, is damaged.", "check",
     Need::kRead, kAnywhere, CheckCommand,
     "The file is read as `tavolin check FILE` reads it, which works on files that cannot be "
     "loaded as well."},
    {"save", "[--as NAME] [--to FOLDER] [--compact] [--replace]",
     "Write the database to its file, or to another one that becomes its own.",
     "save\nsave --as copy --to backup", Need::kWrite, kAnywhere, SaveCommand,
     "The file is replaced in one step: at every moment it is the old one or the new one. A single "
     "command saves by itself; a session saves when it is told to.\n"
     "--as: another name\n"
     "--to: another folder\n"
     "--compact: leave nothing of a longer old file behind the new one's end\n"
     "--replace: write over what somebody else saved since it was loaded"},
    {"password", "[--password-file F] [--no-password] [--old-password-file F]",
     "Change the database password, which lets anybody who knows it read.",
     "password --password-file new.txt\npassword --no-password", Need::kWrite, kAnywhere,
     PasswordCommand,
     "--old-password-file: a file whose first line is the one until now, for those who are not the "
     "owner"},
    {"owner",
     "USER [--full-name NAME] [--description TEXT] [--password-file F] [--no-password] [--yes]",
     "Hand the database to another user, who is added if he is not there.",
     "owner bob --yes\nowner eve --password-file new.txt --yes", Need::kOwner, kAnywhere,
     OwnerCommand, "A user who is there keeps his password unless an option sets another."},
    {"delete-database", "[FILE] [--yes]",
     "Delete a database file of yours and its log; this one without FILE.", "delete-database --yes",
     Need::kOwner, kAnywhere, DeleteDatabaseCommand},
};

constexpr Command kTables[] = {
    {"tables", "", "List the tables.", "tables\ntables --format json", Need::kRead, kAnywhere,
     TablesCommand},
    {"table", "TABLE", "Show a table's fields, key and links.", "table Customers", Need::kRead,
     kAnywhere, TableCommand},
    {"make-table", "TABLE --fields NAMES [--key FIELDS]", "Make a table of up to ten fields.",
     "make-table Cars --fields Plate,Model,Built\nmake-table Stays --fields Guest,Day,Room --key "
     "Guest,Day",
     Need::kWrite, kAnywhere, MakeTableCommand,
     "The texts in a record's key fields, one behind the other, are its key, which no other "
     "record of the table has.\n"
     "--fields: names between commas; one that holds a comma stands in double quotes\n"
     "--key: up to four of them; the first field if not given"},
    {"make-linked", "TABLE FIELD --fields NAMES",
     "Make a table for what stands in a field, and link the field to it.",
     "make-linked Customers City --fields City,Country", Need::kWrite, kAnywhere, MakeLinkedCommand,
     "The new table is named after FIELD and TABLE, and gets a record for each value of the "
     "field.\n"
     "--fields: names of the new table's fields, between commas; the first holds the value"},
    {"link", "TABLE FIELD TARGET", "Make a field refer to the records of another table.",
     "link Orders Customer Customers", Need::kWrite, kAnywhere, LinkCommand,
     "What stands in the field is a key in TARGET from then on: values that TARGET has no record "
     "for get one, now and whenever a record is added or changed."},
    {"unlink", "TABLE TARGET", "Take the links from one table to another away.",
     "unlink Visits Places", Need::kOwner, kAnywhere, UnlinkCommand},
    {"drop-table", "TABLE [--no-cascade] [--yes]", "Delete a table with all its records.",
     "drop-table Visits --yes", Need::kOwner, kAnywhere, DropTableCommand,
     "Tables that only its links lead to go with it.\n"
     "--no-cascade: keep those tables"},
    {"rename-table", "TABLE NAME", "Give a table another name.", "rename-table Orders Sales",
     Need::kWrite, kAnywhere, RenameTableCommand},
    {"label", "TABLE FIELD LABEL", "Set the label that a field is shown under.",
     "label Customers Name 'Full name'", Need::kWrite, kAnywhere, LabelCommand,
     "The field keeps its name, and is found by both."},
    {"sort", "TABLE FIELD [--yes]", "Put the records of a table in the order of a field.",
     "sort Customers City --yes", Need::kWrite, kAnywhere, SortCommand,
     "All fields are compared as one text, that one first, without regard to letter case. The "
     "order that the records have is lost."},
};

constexpr Command kRecords[] = {
    {"list", "TABLE [--from N] [--count N]", "Show the records of a table in their order.",
     "list Customers\nlist Customers --from 2 --count 20", Need::kRead, kAnywhere, ListCommand,
     "--from: begin with the Nth\n"
     "--count: show that many"},
    {"find", "TEXT [--in TABLE] [--field FIELD] [--key]",
     "Show the records that contain a text, in any letter case.",
     "find paris\nfind paris --in Customers --field City\nfind 7 --in Customers --key", Need::kRead,
     kAnywhere, FindCommand,
     "--in: look in this table alone\n"
     "--field: look in this field of it alone\n"
     "--key: TEXT is a whole key"},
    {"get", "TABLE KEY", "Show a record, a field a line, and its attachments.",
     "get Customers 7\nget Customers '#1'", Need::kRead, kAnywhere, GetCommand},
    {"count", "TABLE", "Show how many records a table has.", "count Customers", Need::kRead,
     kAnywhere, CountCommand},
    {"add", "TABLE VALUE... [--values]", "Add a record.",
     "add Customers 9 'Eve Fox' Paris\nadd Customers ID=10 City=Rome", Need::kWrite, kAnywhere,
     AddCommand,
     "VALUEs stand in the order of the fields, or name theirs: FIELD=value. Fields without one are "
     "empty.\n"
     "--values: words that look like FIELD=value are values all the same"},
    {"update", "TABLE KEY FIELD=VALUE...", "Change the fields named and keep the others.",
     "update Customers 7 City=Rome 'Name=Ann Lee-Fox'", Need::kWrite, kAnywhere, UpdateCommand},
    {"delete", "TABLE KEY [--no-cascade]", "Delete a record and what only it refers to.",
     "delete Orders 1", Need::kDelete, kAnywhere, DeleteCommand,
     "Records that refer to it stay, with its key in their field.\n"
     "--no-cascade: keep what it refers to"},
    {"attach", "TABLE KEY PATH [--kind picture|sound|movie|other]",
     "Attach a file to a record; its path is kept, not the file.",
     "attach Customers 7 ann.png --kind picture", Need::kWrite, kAnywhere, AttachCommand,
     "--kind: what is in the file; other if not given"},
};

constexpr Command kFiles[] = {
    {"import", "TABLE FILE.csv [--key FIELDS] [--skip-duplicates]",
     "Add the rows of a CSV file with a header; a missing table is made.",
     "import Customers more.csv\nimport Cities cities.csv --key ID", Need::kWrite, kAnywhere,
     ImportCommand,
     "Every field is taken as it stands: blanks, leading zeros, line breaks. The header's names "
     "are the table's fields, in any order; fields that it does not name stay empty. When a row "
     "cannot be added, its place in the file is told and nothing is imported at all.\n"
     "--key: the key fields of a table that is made; the first if not given\n"
     "--skip-duplicates: pass over rows whose key is there already"},
    {"export csv", "TABLE [FILE.csv] [--yes]",
     "Write the records of a table to a CSV file, which `import` reads back.",
     "export csv Customers customers.csv", Need::kRead, kAnywhere, ExportCsvCommand,
     "The file is in UTF-8, with a header and lines that end in LF; it is named as the table and "
     "in "
     "the current folder if not given. `-` writes to the standard output. A table made by "
     "`import` from it, with --key if the key is not its first field, has the same fields and "
     "records."},
    {"export text", "[FILE.txt] [--yes]", "Write all tables to a text file.",
     "export text customers.txt", Need::kRead, kAnywhere, ExportTextCommand,
     "It is named as the database and in the current folder if not given."},
    {"export html", "[FOLDER] [--yes]", "Publish all tables as a web site in a folder.",
     "export html site", Need::kRead, kAnywhere, ExportHtmlCommand,
     "The folder is made if it is missing, and named as the database and in the current folder if "
     "not given."},
    {"export mdb", "[FILE.mdb] [--replace]",
     "Write all tables to an Access database, or add them to an earlier export.",
     "export mdb customers.mdb", Need::kRead, kAnywhere, ExportMdbCommand,
     "It is named as the database and in the current folder if not given.\n"
     "--replace: put the new one in the place of an earlier export"},
    {"export sql", "[OUT] [--yes]", "Write everything as SQL that SQLite and PostgreSQL load.",
     "export sql customers.sql", Need::kRead, kAnywhere, ExportSqlCommand,
     "Passwords are left out. It is named as the database and in the current folder if not given; "
     "- is the standard output."},
    {"dump", "[OUT] [--yes]", "Write the whole database as text that `restore` reads.",
     "dump customers.dump", Need::kOwner, kAnywhere, DumpCommand,
     "Passwords are left out. It goes to the standard output without OUT."},
    {"restore", "IN [--password-file F] [--no-password] [--database-password-file F]",
     "Make this database, which must not be there yet, of a dump.", "restore shop.dump",
     Need::kNothing, kAnywhere, RestoreCommand,
     "The owner gets the password that you give; the other users get passwords that nobody knows, "
     "until the owner sets them. - is the standard input.\n"
     "--database-password-file: a file whose first line is the new password of the database"},
};

constexpr Command kTransaction[] = {
    {"begin", "", "Begin a transaction.", "begin", Need::kWrite, kSessionOnly, BeginCommand,
     "Everything done from then on is kept by `commit` or taken back by `abort`."},
    {"commit", "[--replace]", "End the transaction and save.", "begin\ncommit", Need::kWrite,
     kSessionOnly, CommitCommand,
     "The transaction has ended even if saving fails; it goes on where somebody else has changed "
     "the file.\n"
     "--replace: write over what somebody else saved since it was loaded"},
    {"abort", "", "End the transaction and take everything done in it back.", "begin\nabort",
     Need::kRead, kSessionOnly, AbortCommand},
};

constexpr Command kUsers[] = {
    {"users", "", "List the users and their rights.", "users", Need::kRead, kAnywhere,
     UsersCommand},
    {"user", "USER", "Show a user.", "user ann", Need::kRead, kAnywhere, UserCommand},
    {"add-user",
     "NAME [--read] [--write] [--delete] [--full-name NAME] [--description TEXT] [--disabled] "
     "[--password-file F] [--no-password]",
     "Add a user with the rights named.",
     "add-user eve --read --write --password-file new.txt\nadd-user guest --read --no-password",
     Need::kOwner, kAnywhere, AddUserCommand,
     "--read: the right to read\n"
     "--write: the right to add and change\n"
     "--delete: the right to delete records\n"
     "--disabled: the user is not let in for now"},
    {"set-user",
     "USER [--read on|off] [--write on|off] [--delete on|off] [--disabled on|off] "
     "[--name NAME] [--full-name NAME] [--description TEXT] "
     "[--password-file F] [--ask-password] [--no-password]",
     "Change a user's rights, names, description or password.",
     "set-user bob --write off\nset-user bob --full-name 'Bob Hill'", Need::kOwner, kAnywhere,
     SetUserCommand,
     "--read: the right to read\n"
     "--write: the right to add and change\n"
     "--delete: the right to delete records\n"
     "--disabled: whether the user is let in; on keeps him out\n"
     "--name: another name to log on with\n"
     "--ask-password: ask for a new password"},
    {"remove-user", "USER [--yes]", "Remove a user.", "remove-user bob --yes", Need::kOwner,
     kAnywhere, RemoveUserCommand},
    {"owners", "[USER]", "List the owners in the registry, or the databases of one.",
     "owners\nowners ann", Need::kRead, kAnywhere, OwnersCommand},
};

constexpr Command kNotes[] = {
    {"notes", "[USER]", "List the notes about a user, yourself without USER.", "notes bob",
     Need::kOwner, kAnywhere, NotesCommand},
    {"note add", "TEXT... [--user USER] [--number N]", "Add a note about a user.",
     "note add --user bob 'Asked for the right to write'", Need::kOwner, kAnywhere, NoteAddCommand,
     "It is dated now, or the next second that has none.\n"
     "--user: the user it is about; yourself if not given\n"
     "--number: its number; the new count if not given"},
    {"note set", "NOTE TEXT... [--user USER]", "Give a note another text.",
     "note set '#1' 'Has it now' --user bob", Need::kOwner, kAnywhere, NoteSetCommand,
     "NOTE is its date as `notes` shows it, or #N for the Nth.\n"
     "--user: the user it is about; yourself if not given"},
    {"note remove", "NOTE [--user USER] [--yes]", "Remove a note.",
     "note remove '#1' --user bob --yes", Need::kOwner, kAnywhere, NoteRemoveCommand,
     "NOTE is its date as `notes` shows it, or #N for the Nth.\n"
     "--user: the user it is about; yourself if not given"},
};

constexpr Command kLog[] = {
    {"log", "", "Show which activities the log file receives.", "log", Need::kRead, kAnywhere,
     LogCommand},
    {"log on", "KIND...", "Log these activities as well.", "log on errors record-add\nlog on all",
     Need::kOwner, kAnywhere, LogOnCommand, "The kinds are those that `log` shows, or all."},
    {"log off", "KIND...", "Log these activities no longer.", "log off all", Need::kOwner,
     kAnywhere, LogOffCommand, "The kinds are those that `log` shows, or all."},
    {"log report", "", "Show what has been done since this program began.", "log report",
     Need::kRead, kAnywhere, LogReportCommand},
    {"log file", "", "Show the path of the log file.", "log file", Need::kRead, kAnywhere,
     LogFileCommand},
};

constexpr Command kShell[] = {
    {"help", "[COMMAND...]", "List the commands, or explain one or a subject's.",
     "help\nhelp import\nhelp records", Need::kNothing, kAnywhere, HelpCommand,
     "`help all` explains each in a line."},
    {"set", "[SETTING] [VALUE]", "Show or change how a session shows its answers.",
     "set\nset format json\nset timing on", Need::kNothing, kSessionOnly, SetCommand,
     "format is table, csv, json or lines; header, pager, timing and quiet are on or off. The "
     "options of the same names do it for one command."},
    {"quit", "[--discard]", "Leave the session.", "quit\nquit --discard", Need::kNothing,
     kSessionOnly, QuitCommand,
     "Unsaved changes are asked about on a terminal, and are a failure elsewhere. `quit!` is quit "
     "--discard.\n"
     "--discard: give unsaved changes up without a question",
     false},
    {"exit", "[--discard]", "The same as quit.", "exit", Need::kNothing, kSessionOnly, QuitCommand,
     "--discard: give unsaved changes up without a question", false},
};

constexpr Subject kSubjects[] = {
    {"database", "The database as a whole", kDatabase},
    {"schema", "Tables and links", kTables},
    {"records", "Records", kRecords},
    {"files", "Import and export", kFiles},
    {"transaction", "The transaction", kTransaction},
    {"rights", "Users and rights", kUsers},
    {"user-notes", "Notes about users", kNotes},
    {"activity", "The activity log", kLog},
    {"shell", "The shell itself", kShell},
};

struct CommonOption {
    std::string_view name;
    std::string_view text;
};
constexpr CommonOption kCommonOptions[] = {
    {"--yes", "do it without a question; needed where there is no terminal to ask on"},
    {"--password-file", "a file whose first line is the new password"},
    {"--no-password", "the new password is empty"},
    {"--full-name", "the user's full name"},
    {"--description", "a text about the user"},
    {"--format", "how the answer is shown: aligned columns, CSV, JSON lines, or a field a line"},
    {"--no-header", "the answer without its headers"},
    {"--no-pager", "an answer longer than the screen is not paged"},
    {"--timing", "show on the error stream how long it took"},
    {"--quiet", "nothing but results and errors"},
};

}  // namespace

std::span<const Subject> Subjects() { return kSubjects; }

std::string_view ExplanationOf(const Command& command, std::string_view option) {
    std::string_view text = command.details;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (!line.starts_with(option) || line.substr(option.size(), 2) != ": ") continue;
        return line.substr(option.size() + 2);
    }
    for (const CommonOption& common : kCommonOptions) {
        if (common.name == option) return common.text;
    }
    return {};
}

}  // namespace tavolin::cli
