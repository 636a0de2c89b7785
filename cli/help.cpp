#include "cli/help.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "cli/display_text.h"

namespace tavolin::cli {
namespace {

constexpr std::size_t kColumns = 79;
constexpr std::size_t kNameWidth = 18;  // of what stands before an explanation

// The text behind a name, both indented; the text's later lines stand under its first.
void PrintEntry(std::ostream& out, std::string_view name, std::string_view text,
                std::size_t indent = 2, std::size_t name_width = kNameWidth) {
    const std::size_t column = indent + name_width;
    std::string before = std::string(indent, ' ').append(name);
    if (DisplayWidth(before) >= column && !text.empty()) {
        out << before << '\n';
        before.clear();
    }
    for (const std::string& line : Wrapped(text, kColumns - column)) {
        const std::size_t used = DisplayWidth(before);
        out << before << std::string(column - std::min(column, used), ' ') << line << '\n';
        before.clear();
    }
}

void PrintParagraph(std::ostream& out, std::string_view text, std::size_t indent = 2) {
    for (const std::string& line : Wrapped(text, kColumns - indent)) {
        out << std::string(indent, ' ') << line << '\n';
    }
}

std::string_view NeedText(Need need) {
    switch (need) {
        case Need::kRead:
            return "It takes a right to read.";
        case Need::kWrite:
            return "It takes a right to write.";
        case Need::kDelete:
            return "It takes a right to delete.";
        case Need::kOwner:
            return "It is for the owner alone.";
        default:
            return {};
    }
}

void PrintExamples(std::ostream& out, const Command& command) {
    const auto examples = Lines(command.example);
    out << (examples.size() == 1 ? "\nexample:\n" : "\nexamples:\n");
    for (const std::string_view example : examples) out << "  " << example << '\n';
}

}  // namespace

std::vector<std::string_view> Lines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        lines.push_back(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(text.size(), lines.back().size() + 1));
    }
    return lines;
}

std::string Usage(const Command& command) {
    const std::string usage(command.name);
    return command.pattern.empty() ? usage : usage + " " + std::string(command.pattern);
}

std::string PartText(const PatternPart& part) {
    return part.value.empty() ? part.name : part.name + " " + part.value;
}

std::vector<std::string> Paragraphs(const Command& command) {
    std::vector<std::string> paragraphs;
    for (const std::string_view line : Lines(command.details)) {
        if (!line.starts_with("--")) paragraphs.emplace_back(line);
    }
    if (command.pattern.find("KEY") != std::string_view::npos &&
        command.pattern.find("--key") == std::string_view::npos) {
        paragraphs.emplace_back(
            "KEY is a record's key, or #N for the Nth record, which a system's shell needs in "
            "quotes; a key that begins with # is written \\#, always in quotes: '\\#7'.");
    }
    if (command.where == Where::kSessionOnly) paragraphs.emplace_back("For sessions only.");
    if (const auto need = NeedText(command.need); !need.empty()) paragraphs.emplace_back(need);
    return paragraphs;
}

void PrintOverview(std::ostream& out) {
    for (const Subject& subject : Subjects()) {
        std::string names;
        for (const Command& command : subject.commands) {
            names.append(names.empty() ? "" : ", ").append(command.name);
        }
        PrintEntry(out, subject.name, names, 0, 13);
    }
    out << "\n`help COMMAND` explains a command, `help SUBJECT` those of a line above,\n"
           "`help all` every one. Words are split at blanks; quotes and \\ keep them together.\n"
           "A line that begins with # is passed over; a word -- ends options.\n"
           "For damaged files there are `tavolin check FILE` and `tavolin salvage FILE NEW`; see\n"
           "`help salvage`.\n";
}

void PrintSubject(std::ostream& out, const Subject& subject) {
    out << subject.title << '\n';
    for (const Command& command : subject.commands) PrintEntry(out, command.name, command.help);
}

void PrintCommand(std::ostream& out, const Command& command) {
    PrintEntry(out, "usage:", Usage(command), 0, 7);
    out << '\n';
    PrintParagraph(out, command.help);
    for (const std::string& paragraph : Paragraphs(command)) PrintParagraph(out, paragraph);
    bool any = false;
    for (const PatternPart& part : ParsePattern(command.pattern)) {
        if (!part.IsOption()) continue;
        if (!std::exchange(any, true)) out << "\noptions:\n";
        PrintEntry(out, PartText(part), ExplanationOf(command, part.name), 2, 24);
    }
    PrintExamples(out, command);
}

std::span<const ProgramOption> ProgramOptions() {
    static constexpr ProgramOption kOptions[] = {
        {"--user NAME", "who you are; else TAVOLIN_USER, else the system's name for you"},
        {"--password-file F", "a file whose first line is your password"},
        {"--format FORMAT",
         "how answers are shown: table, csv, json (an object a line) or lines "
         "(a field a line)"},
        {"--no-header", "answers without their headers"},
        {"--no-pager", "answers longer than the screen are not paged"},
        {"--timing", "show on the error stream how long each command took"},
        {"-q, --quiet", "nothing but results and errors"},
        {"--keep-going", "go on after a failed command when commands come from a pipe"},
        {"--version", "show the version"},
        {"-h, --help", "show the options"},
    };
    return kOptions;
}

}  // namespace tavolin::cli
