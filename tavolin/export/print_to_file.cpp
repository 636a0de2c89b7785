// The PrintToFile members of the sets, which do one thing.
#include "tavolin/errors/trap.h"
#include "tavolin/export/protection.h"
#include "tavolin/model/session.h"
#include "tavolin/model/table_set.h"
#include "tavolin/persist/paths.h"
#include "tavolin/persist/text_file.h"

namespace tavolin {
namespace {

void PrintQuoted(std::string_view text, std::string_view path, const Session& session) {
    AskToExportTo(path, session);
    TextFileWriter file(path, EncodingFor(text));
    file.Put("\"", text, "\"", kLineBreak);
    file.Close();
}

}  // namespace

std::string ExportPath(std::string_view folder, std::string_view name) {
    if (!StaysInFolder(name)) RaiseRunTime(kBadFileName);
    return JoinPath(folder, name);
}

void AskToExportTo(std::string_view path, const Session& session) {
    if (session.IsOwnFile(path)) RaiseRunTime(kFileExists);
}

void CVLRecordSet::PrintToFile(std::string_view Text, std::string_view FilePathName) const {
    Trap("CVLRecordSet:printToFile Method", [&] { PrintQuoted(Text, FilePathName, session()); });
}

void CVLTable::PrintToFile(std::string_view Text, std::string_view FilePathName) const {
    Trap("CVLTable:printToFile Method", [&] { PrintQuoted(Text, FilePathName, *session_); });
}

void CVLTableSet::PrintToFile(std::string_view Text, std::string_view FilePathName) const {
    Trap("CVLTableSet:printToFile Method", [&] { PrintQuoted(Text, FilePathName, *session_); });
}

}  // namespace tavolin
