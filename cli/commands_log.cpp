// The log: its switches, its report, its file.
#include <iostream>

#include "cli/commands.h"
#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/log_activities.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

void Switch(LogType& log, std::string_view name, bool on) {
    bool known = false;
    for (const LogActivity& activity : LogActivities()) {
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
    SetLog(host.engine(), log);
    host.Changed();
    host.Note("log switches set");
}

}  // namespace

std::vector<std::string> ActivityNames() {
    std::vector<std::string> names = {"all"};
    for (const LogActivity& activity : LogActivities()) names.emplace_back(activity.name);
    return names;
}

void LogCommand(Host& host, const Arguments&) {
    const LogType log = host.engine().LoggedActivities();
    Results results = host.Answer({"Activity", "Logged"});
    for (const LogActivity& activity : LogActivities()) {
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

void LogFileCommand(Host& host, const Arguments&) { std::cout << LogFileOf(host.Path()) << '\n'; }

}  // namespace tavolin::cli
