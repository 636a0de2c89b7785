// The commands: one table that dispatch, help and completion all read.
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
    std::string_view example;  // without the program's name
    Need need;
    Where where;
    void (*run)(Host& host, const Arguments& words);
};

std::span<const Command> Commands();

// The command that the words begin with, which are cut off from them; nothing if there is none.
// "log on" goes before "log".
const Command* TakeCommand(std::span<const std::string>& words);

// What may stand at the end of a line: names of commands, options, values and the given tables.
std::vector<std::string> Completions(std::span<const std::string> before, std::string_view word,
                                     const std::vector<std::string>& tables);

}  // namespace tavolin::cli
