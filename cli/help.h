// What is said about the commands: in a session, and as a manual page.
#pragma once

#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/command.h"

namespace tavolin::cli {

// The parts of what is said about a command.
std::vector<std::string_view> Lines(std::string_view text);
std::vector<std::string> Paragraphs(const Command& command);
std::string PartText(const PatternPart& part);  // "--kind picture|sound"

// "table TABLE", as it stands in a refusal of wrong words.
std::string Usage(const Command& command);

// The commands by subject, on one page.
void PrintOverview(std::ostream& out);
// A line for each command of a subject.
void PrintSubject(std::ostream& out, const Subject& subject);
// All there is to say about a command.
void PrintCommand(std::ostream& out, const Command& command);

// The manual page, in the language of man.
void PrintManual(std::ostream& out);

// The program's options with what they mean, "--user NAME" and the like.
struct ProgramOption {
    std::string_view names;
    std::string_view text;
};
std::span<const ProgramOption> ProgramOptions();

}  // namespace tavolin::cli
