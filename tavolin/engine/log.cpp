// The account of what users do: the report in memory, the lines that wait for the next save, and
// the log file.
#include "tavolin/base/clock.h"
#include "tavolin/engine/report.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/persist/paths.h"
#include "tavolin/persist/text_file.h"

namespace tavolin {

void CVLDBEngine::LogDBActivities(bool DBLogOn, bool Transactions, bool OwnerChange,
                                  bool UserCreation, bool TableCreation, bool LinkedTableCreation,
                                  bool TableDeletion, bool LinkedTableDeletion, bool LinkingTables,
                                  bool UnlinkingTables, bool RecordAdd, bool RecordUpDate,
                                  bool RecordDelete, bool Errors) {
    static constexpr const char* kSource = "CVLDBEngine:LogDBActivities";
    Report(kSource, [&] {
        if (!session_->IsOwner()) {
            Raise(CVLErrorNum::GetUserIsNotDBOwnerError(), kSource,
                  Message("User: ", session_->UserName(),
                          " Is Not The DataBase Owner\r\nThus Does Not Permission To Set The "
                          "Log!"));
        }
        database_->switches = {.logErrors = Errors,
                               .logDBLogOn = DBLogOn,
                               .logOwnerChange = OwnerChange,
                               .logUserCreation = UserCreation,
                               .logTableCreation = TableCreation,
                               .logLkTableCreation = LinkedTableCreation,
                               .logTableDeletion = TableDeletion,
                               .logLkTableDeletion = LinkedTableDeletion,
                               .logTablesLinking = LinkingTables,
                               .logTableUnlinking = UnlinkingTables,
                               .logRecordAdd = RecordAdd,
                               .logRecordUpDate = RecordUpDate,
                               .logRecordDelete = RecordDelete,
                               .logTransactions = Transactions};
    });
}

LogType CVLDBEngine::LoggedActivities() const { return database_->switches; }

std::string CVLDBEngine::LogLine(const Message& message) const {
    const Message line(GeneralDate(Now()), "  [USER: ", session_->UserName(), "]");
    return line.one_line() + message.one_line();
}

void CVLDBEngine::LogMessage(const Message& message, bool switched_on) {
    log_report_.append(message.text()).append(kLineBreak);
    if (!switched_on) return;
    if (transaction_) {
        LogAtOnce(LogLine(message));
    } else {
        pending_.push_back({LogLine(message), false});
    }
}

void CVLDBEngine::LogPendingMessage(const Message& message, bool is_log_on) {
    log_report_.append(message.text()).append(kLineBreak);
    pending_.push_back({LogLine(message), is_log_on});
}

void CVLDBEngine::LogTransaction(const char* text) noexcept {
    AtTheSide([&] {
        const Message message{std::string_view(text)};
        if (database_->switches.logTransactions) LogAtOnce(LogLine(message));
        log_report_.append(message.text()).append(kLineBreak);
    });
}

void CVLDBEngine::LogFailure(const Error& error) noexcept {
    if (!database_->switches.logErrors) return;
    AtTheSide([&] {
        std::string line = " ";
        line.append(kLineBreak).append(LogLine(Message())).append("ERROR: ");
        line.append(error.log_text());
        LogAtOnce(std::move(line));
    });
}

// A line that cannot be written waits for the next save, like all others.
void CVLDBEngine::LogAtOnce(std::string line) {
    if (database_->tables && !WriteLog(line)) pending_.push_back({std::move(line), false});
}

std::string CVLDBEngine::LogPath() const {
    return JoinPath(database_->path, LogFileName(database_->name));
}

// False when the text could not be written. Nobody but the owner of the lines hears of it.
bool CVLDBEngine::WriteLog(std::string_view text) const {
    try {
        const std::string path = LogPath();
        // The name is made from the database's, and may be that of another database.
        if (IsDatabaseFile(path)) return false;
        AppendTextFile(path, std::string(text).append(kLineBreak));
        return true;
    } catch (...) {
        return false;
    }
}

void CVLDBEngine::FlushPending() noexcept {
    if (pending_.empty()) return;
    AtTheSide([&] {
        std::string text;
        for (const PendingLine& line : pending_) text.append(kLineBreak).append(line.text);
        if (WriteLog(text)) pending_.clear();
    });
}

}  // namespace tavolin
