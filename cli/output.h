// How answers are shown: options of the program, of every command, and settings of a session.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavolin::cli {

class Arguments;

enum class Format {
    kTable,  // aligned columns, the number of rows behind them
    kCsv,    // RFC 4180 with LF, values as they are
    kJson,   // an object a row on a line of its own
    kLines,  // a "Name: value" line a field, an empty line between rows
};

struct Output {
    Format format = Format::kTable;
    bool header = true;
    bool quiet = false;   // nothing but results and errors
    bool pager = true;    // where there is a terminal
    bool timing = false;  // how long each command took, on the error stream
};

// The part of a pattern that every command takes.
inline constexpr std::string_view kOutputPattern =
    "[--format table|csv|json|lines] [--no-header] [--no-pager] [--timing] [--quiet]";

// The output as the words of one command change it.
Output OutputOf(Output output, const Arguments& words);

// A session's settings by their names, with their values; "format" and those that are on or off.
std::vector<std::pair<std::string, std::string>> Settings(const Output& output);
// Changes one; an unknown one or a wrong value raises UsageError.
void ChangeSetting(Output& output, std::string_view name, std::string_view value);
// The values that a setting takes; none for an unknown one.
std::vector<std::string> SettingValues(std::string_view name);

}  // namespace tavolin::cli
