// The functions behind the commands, by subject.
#pragma once

#include <string>
#include <vector>

#include "cli/arguments.h"
#include "cli/host.h"

namespace tavolin::cli {

// The database as a whole.
void CreateCommand(Host& host, const Arguments& words);
void InfoCommand(Host& host, const Arguments& words);
void StatsCommand(Host& host, const Arguments& words);
void CheckCommand(Host& host, const Arguments& words);
void SaveCommand(Host& host, const Arguments& words);
void DeleteDatabaseCommand(Host& host, const Arguments& words);
void PasswordCommand(Host& host, const Arguments& words);
void OwnerCommand(Host& host, const Arguments& words);
void BeginCommand(Host& host, const Arguments& words);
void CommitCommand(Host& host, const Arguments& words);
void AbortCommand(Host& host, const Arguments& words);

// Tables.
void TablesCommand(Host& host, const Arguments& words);
void TableCommand(Host& host, const Arguments& words);
void MakeTableCommand(Host& host, const Arguments& words);
void MakeLinkedCommand(Host& host, const Arguments& words);
void LinkCommand(Host& host, const Arguments& words);
void UnlinkCommand(Host& host, const Arguments& words);
void DropTableCommand(Host& host, const Arguments& words);
void RenameTableCommand(Host& host, const Arguments& words);
void LabelCommand(Host& host, const Arguments& words);

// Records.
void AddCommand(Host& host, const Arguments& words);
void UpdateCommand(Host& host, const Arguments& words);
void DeleteCommand(Host& host, const Arguments& words);
void GetCommand(Host& host, const Arguments& words);
void FindCommand(Host& host, const Arguments& words);
void ListCommand(Host& host, const Arguments& words);
void CountCommand(Host& host, const Arguments& words);
void AttachCommand(Host& host, const Arguments& words);
void ImportCommand(Host& host, const Arguments& words);

// Order and publishing.
void SortCommand(Host& host, const Arguments& words);
void ExportCsvCommand(Host& host, const Arguments& words);
void ExportTextCommand(Host& host, const Arguments& words);
void ExportHtmlCommand(Host& host, const Arguments& words);
void ExportMdbCommand(Host& host, const Arguments& words);
void ExportSqlCommand(Host& host, const Arguments& words);

// The whole database as text, and back.
void DumpCommand(Host& host, const Arguments& words);
void RestoreCommand(Host& host, const Arguments& words);

// Users.
void OwnersCommand(Host& host, const Arguments& words);
void UsersCommand(Host& host, const Arguments& words);
void UserCommand(Host& host, const Arguments& words);
void AddUserCommand(Host& host, const Arguments& words);
void SetUserCommand(Host& host, const Arguments& words);
void RemoveUserCommand(Host& host, const Arguments& words);
// Without asking for the old one: for commands that are the owner's alone.
void SetPassword(CVLDBUser& user, const std::string& password);

// Notes.
void NotesCommand(Host& host, const Arguments& words);
void NoteAddCommand(Host& host, const Arguments& words);
void NoteSetCommand(Host& host, const Arguments& words);
void NoteRemoveCommand(Host& host, const Arguments& words);

// The log.
std::vector<std::string> ActivityNames();  // and "all"
void LogCommand(Host& host, const Arguments& words);
void LogOnCommand(Host& host, const Arguments& words);
void LogOffCommand(Host& host, const Arguments& words);
void LogReportCommand(Host& host, const Arguments& words);
void LogFileCommand(Host& host, const Arguments& words);

// The host itself. QuitCommand is the shell's to obey.
void HelpCommand(Host& host, const Arguments& words);
void SetCommand(Host& host, const Arguments& words);
void QuitCommand(Host& host, const Arguments& words);

}  // namespace tavolin::cli
