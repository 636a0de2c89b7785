// The log: its switches, its report, its file.
#include <iostream>

#include "cli/commands.h"
#include "cli/display_text.h"
#include "cli/failure.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

struct Activity {
    std::string_view name;
    bool LogType::*flag;
};

constexpr Activity kActivities[] = {
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

void Switch(LogType& log, std::string_view name, bool on) {
    bool known = false;
    for (const Activity& activity : kActivities) {
        if (name != "all" && name != activity.name) continue;
        log.*activity.flag = on;
        known = true;
    }
    if (!known) throw UsageError("there is no activity " + std::string(name) + " to log");
}

// The engine sets all the switches at once: the others are given as they are.
void SwitchAll(Host& host, const Arguments& words, bool on) {
    LogType log = host.engine().LoggedActivities();
    for (const std::string& name : words.All("KIND")) Switch(log, name, on);
    host.engine().LogDBActivities(log.logDBLogOn, log.logTransactions, log.logOwnerChange,
                                  log.logUserCreation, log.logTableCreation, log.logLkTableCreation,
                                  log.logTableDeletion, log.logLkTableDeletion,
                                  log.logTablesLinking, log.logTableUnlinking, log.logRecordAdd,
                                  log.logRecordUpDate, log.logRecordDelete, log.logErrors);
    host.Changed();
    host.Note("log switches set");
}

}  // namespace

std::vector<std::string> ActivityNames() {
    std::vector<std::string> names = {"all"};
    for (const Activity& activity : kActivities) names.emplace_back(activity.name);
    return names;
}

void LogCommand(Host& host, const Arguments&) {
    const LogType log = host.engine().LoggedActivities();
    Results results = host.Answer({"Activity", "Logged"});
    for (const Activity& activity : kActivities) {
        results.Add({std::string(activity.name), log.*activity.flag ? "on" : "off"});
    }
    results.Finish();
}

void LogOnCommand(Host& host, const Arguments& words) { SwitchAll(host, words, true); }

void LogOffCommand(Host& host, const Arguments& words) { SwitchAll(host, words, false); }

void LogReportCommand(Host& host, const Arguments&) {
    std::string_view report = host.engine().LogReport();
    while (!report.empty()) {
        const std::size_t end = report.find("\r\n");
        std::cout << Printable(report.substr(0, end)) << '\n';
        report.remove_prefix(end == report.npos ? report.size() : end + 2);
    }
}

void LogFileCommand(Host& host, const Arguments&) {
    const std::string path = host.Path();
    const std::size_t name = path.find_last_of("/\\") + 1;
    std::string log = ReplaceFold(path.substr(name), "cdb", "log");
    if (EqualFold(log, path.substr(name))) log += ".log";
    std::cout << path.substr(0, name) << log << '\n';
}

}  // namespace tavolin::cli
