// The activities that the log file may receive, under the names that commands and dumps use, and
// where that file is.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "tavolin/engine/engine.h"

namespace tavolin::cli {

struct LogActivity {
    std::string_view name;  // dumps hold it: do not change
    bool LogType::*flag;
};

std::span<const LogActivity> LogActivities();

// Sets the engine's switches, all at once.
void SetLog(CVLDBEngine& engine, const LogType& log);

// The path of a database's log file.
std::string LogFileOf(const std::string& database_path);

}  // namespace tavolin::cli
