// What may stand at the end of a line, for the Tab key in a session and in the system's shell.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/command.h"
#include "cli/host.h"

namespace tavolin::cli {

// The names that a database holds.
struct Names {
    struct Table {
        std::string name;
        std::vector<std::string> fields;
    };
    std::vector<Table> tables;
    std::vector<std::string> users;
};

// None as long as no database is loaded.
Names LoadedNames(Host& host);

// Words that may stand in the place of the line's last word, which begins at `begin`, in quotes
// where they need some. A word that ends with "=" or a folder's separator is not complete; behind
// any other one stands a blank.
struct LineCompletion {
    std::size_t begin = 0;
    std::vector<std::string> words;
};
LineCompletion CompleteLine(std::string_view line, const Names& names);

// The same, with the words that stand before the last one and the last one as it was typed.
std::vector<std::string> Completions(const std::vector<std::string>& before,
                                     const std::string& word, const Names& names);

// The same behind the words of a command that is known.
std::vector<std::string> CompletionsOf(const Command& command, std::span<const std::string> words,
                                       const std::string& word, const Names& names);

// A candidate as it is typed, in the quotes that its beginning was typed in, if in any.
std::string TypedWord(const std::string& word, std::string_view raw);

// For the system's shell: prints the candidates for the end of a command line of the program
// itself, from the program's name on, one a line. When the line names a database whose tables its
// user may see without being asked for a password, they are among them.
void PrintCompletions(std::string_view line);

}  // namespace tavolin::cli
