#include "cli/log_activities.h"

#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

constexpr LogActivity kActivities[] = {
    {"errors", &LogType::logErrors},
    {"log-on", &LogType::logDBLogOn},
    {"owner-change", &LogType::logOwnerChange},
    {"user-creation", &LogType::logUserCreation},
    {"table-creation", &LogType::logTableCreation},
    {"linked-table-creation", &LogType::logLkTableCreation},
    {"table-deletion", &LogType::logTableDeletion},
    {"linked-table-deletion", &LogType::logLkTableDeletion},
    {"linking", &LogType::logTablesLinking},
    {"unlinking", &LogType::logTableUnlinking},
    {"record-add", &LogType::logRecordAdd},
    {"record-update", &LogType::logRecordUpDate},
    {"record-delete", &LogType::logRecordDelete},
    {"transactions", &LogType::logTransactions},
};

}  // namespace

std::span<const LogActivity> LogActivities() { return kActivities; }

void SetLog(CVLDBEngine& engine, const LogType& log) {
    engine.LogDBActivities(log.logDBLogOn, log.logTransactions, log.logOwnerChange,
                           log.logUserCreation, log.logTableCreation, log.logLkTableCreation,
                           log.logTableDeletion, log.logLkTableDeletion, log.logTablesLinking,
                           log.logTableUnlinking, log.logRecordAdd, log.logRecordUpDate,
                           log.logRecordDelete, log.logErrors);
}

std::string LogFileOf(const std::string& database_path) {
    const auto [dir, name] = SplitPath(database_path);
    return dir + LogFileName(name);
}

}  // namespace tavolin::cli
