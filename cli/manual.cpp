// The manual page, from the same texts as the help.
#include <ostream>
#include <string>

#include "cli/data_folder.h"
#include "cli/display_text.h"
#include "cli/help.h"
#include "cli/tools.h"
#include "tavolin/version.h"

namespace tavolin::cli {
namespace {

// As the language of manual pages wants it: "\" and "-" are characters to be printed, a quote or
// dot at a line's beginning is no request.
std::string Roff(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (result.empty() && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else if (c == '\'') {
            result += "\\(aq";
        } else if (c == '`') {
            result += "\\(ga";
        } else {
            result += c;
        }
    }
    return result;
}

// In short lines, as the language wants it.
void Text(std::ostream& out, std::string_view text) {
    constexpr std::size_t kPageColumns = 66;
    for (const std::string& line : Wrapped(text, kPageColumns)) out << Roff(line) << '\n';
}

void Entry(std::ostream& out, std::string_view name, std::string_view text) {
    out << ".TP\n.B " << Roff(name) << '\n';
    Text(out, text);
}

void PrintManualOf(std::ostream& out, const Command& command) {
    out << ".SS " << Roff(command.name) << '\n';
    Text(out, command.help);
    out << ".P\n.B " << Roff(Usage(command)) << '\n';
    for (const std::string& paragraph : Paragraphs(command)) {
        out << ".P\n";
        Text(out, paragraph);
    }
    for (const PatternPart& part : ParsePattern(command.pattern)) {
        if (part.IsOption()) Entry(out, PartText(part), ExplanationOf(command, part.name));
    }
    out << ".P\nFor example:\n.P\n.nf\n.RS 4\n";
    for (const std::string_view example : Lines(command.example)) out << Roff(example) << '\n';
    out << ".RE\n.fi\n";
}

void Head(std::ostream& out) {
    out << ".TH TAVOLIN 1 2026-11-23 \"tavolin " TAVOLIN_VERSION
           "\" \"User commands\"\n"
           ".SH NAME\ntavolin \\- work on a Tavolin database file\n"
           ".SH SYNOPSIS\n.B tavolin\n[\\fIOPTIONS\\fR] \\fIFILE\\fR [\\fICOMMAND WORDS\\fR...]\n"
           ".br\n.B tavolin help\n[\\fICOMMAND\\fR]\n";
    for (const Command& tool : Tools()) {
        out << ".br\n.B tavolin " << tool.name << '\n' << Roff(tool.pattern) << '\n';
    }
    out << ".SH DESCRIPTION\n"
           "Runs one command on a database file and saves what it changed.\n"
           "Without a command, commands are read from the input: on a terminal\n"
           "with a prompt, editing, history and completion, else a line after\n"
           "another until one fails.\n"
           ".SH OPTIONS\n";
    for (const ProgramOption& option : ProgramOptions()) Entry(out, option.names, option.text);
}

void Tail(std::ostream& out) {
    out << ".SH ENVIRONMENT\n";
    Entry(out, "TAVOLIN_USER", "who you are, unless --user says so");
    Entry(out, "TAVOLIN_PASSWORD", "your password, unless --password-file gives it");
    Entry(out, "TAVOLIN_NEW_PASSWORD", "the password that a command sets");
    Entry(out, "TAVOLIN_FOLDER",
          "the folder of the registry of owners; else that of the program, or " +
              std::string(kUsersFolder) + " when you may not write there");
    Entry(out, "TAVOLIN_HISTORY", "the file of a session's history; empty for none");
    Entry(out, "PAGER", "what shows answers that are longer than the screen");
    out << ".SH EXIT STATUS\n";
    Entry(out, "0", "success");
    Entry(out, "1", "a command was refused or failed; check and salvage tell theirs");
    Entry(out, "2", "the words make no sense; check and salvage tell theirs");
    Entry(out, "130", "interrupted; the file is as it was");
}

}  // namespace

void PrintManual(std::ostream& out) {
    Head(out);
    out << ".SH COMMANDS\nEach but those that leave the session takes these options as well:\n";
    for (const PatternPart& part : ParsePattern(kOutputPattern)) {
        Entry(out, PartText(part), ExplanationOf({}, part.name));
    }
    for (const Subject& subject : Subjects()) {
        out << ".SH " << Roff(subject.title) << '\n';
        for (const Command& command : subject.commands) PrintManualOf(out, command);
    }
    out << ".SH Damaged files\nThese stand in the place of FILE, and take the same options.\n";
    for (const Command& tool : Tools()) PrintManualOf(out, tool);
    Tail(out);
}

}  // namespace tavolin::cli
