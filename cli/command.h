// The commands: one table that dispatch, help, completion and the manual page all read.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
#include "cli/host.h"

namespace tavolin::cli {

enum class Where { kAnywhere, kSessionOnly };

struct Command {
    std::string_view name;     // one word, or two: "log on"
    std::string_view pattern;  // of its words; see Arguments
    std::string_view help;     // one line
    std::string_view example;  // without the program's name; several stand on a line each
    Need need;
    Where where;
    void (*run)(Host& host, const Arguments& words);
    // More about it, a paragraph a line. A line such as "--kind: what the file is" explains an
    // option; those that mean the same everywhere are explained in one place, see ExplanationOf.
    std::string_view details = {};
    bool shows = true;  // answers or notes, and so takes kOutputPattern as well
};

// Commands of one subject, in the order in which they are shown.
struct Subject {
    std::string_view name;   // one word
    std::string_view title;  // "Tables and links"
    std::span<const Command> commands;
};
std::span<const Subject> Subjects();

// The command that the words begin with, which are cut off from them; nothing if there is none.
// "log on" goes before "log".
const Command* TakeCommand(std::span<const std::string>& words);

// What an option of the command does; an option of every command has the same for each.
std::string_view ExplanationOf(const Command& command, std::string_view option);

// The parts of its pattern, and behind them the options of every command that shows something.
std::vector<PatternPart> PartsOf(const Command& command);

}  // namespace tavolin::cli
