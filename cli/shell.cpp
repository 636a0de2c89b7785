#include "cli/shell.h"

#include <algorithm>
#include <iostream>
#include <optional>

#include "cli/command.h"
#include "cli/commands.h"
#include "cli/data_folder.h"
#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/line_editor.h"
#include "cli/terminal.h"
#include "cli/words.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

// With the commands of two words that begin with the first, if there are any.
[[noreturn]] void RaiseNoCommand(const std::string& name) {
    constexpr std::size_t kWidth = 40;
    std::string known;
    for (const Command& command : Commands()) {
        if (!command.name.starts_with(name + " ")) continue;
        known += (known.empty() ? "; there is " : ", ") + std::string(command.name);
    }
    throw UsageError("there is no command " + Shortened(Printable(name), kWidth) +
                     (known.empty() ? "; `help` lists the commands" : known));
}

const Command& CommandOf(Host& host, std::span<const std::string>& words) {
    const std::string name = words[0];
    const Command* const command = TakeCommand(words);
    if (command == nullptr) RaiseNoCommand(name);
    if (command->where == Where::kSessionOnly && !host.in_session()) {
        throw UsageError(name + " has a meaning in a session only");
    }
    return *command;
}

std::string Usage(const Command& command) {
    const std::string usage = "usage: " + std::string(command.name);
    return command.pattern.empty() ? usage : usage + " " + std::string(command.pattern);
}

void RunCommand(Host& host, const Command& command, std::span<const std::string> words) {
    const Arguments arguments = [&] {
        try {
            return Arguments(command.pattern, words);
        } catch (const UsageError& error) {
            throw UsageError(std::string(error.what()) + "\n" + Usage(command));
        }
    }();
    host.Prepare(command.need);
    command.run(host, arguments);
}

std::vector<std::string> CompleteLine(Host& host, std::string_view before, std::string_view word) {
    std::vector<std::string> tables;
    if (host.loaded()) {
        for (const auto& table : host.engine().CVLTableSet()->NewEnum()) {
            tables.push_back(table->Key());
        }
    }
    return Completions(SplitWords(before).words, word, tables);
}

class ShellSession {
  public:
    explicit ShellSession(Host& host)
        : host_(host),
          on_terminal_(InputIsTerminal()),
          editor_(on_terminal_, [&host](std::string_view before, std::string_view word) {
              return CompleteLine(host, before, word);
          }) {}

    int Run() {
        std::optional<InterruptCatcher> catcher;
        if (on_terminal_) catcher.emplace();
        Start();
        do {
            RunCommands();
        } while (!Leave());
        return status_;
    }

  private:
    void RunCommands() {
        while (status_ == kSuccess || GoesOn()) {
            const auto words = ReadCommand();
            if (!words || (!words->empty() && IsQuit(*words) && MayLeave(*words))) break;
            if (words->empty() || IsQuit(*words)) continue;
            Try([&] { RunWords(*words); });
            std::cout.flush();
        }
    }

    bool GoesOn() const { return on_terminal_ || host_.options().keep_going; }

    // On a terminal a failure has been dealt with when it is shown. Elsewhere its line is told.
    template <class Body>
    bool Try(Body&& body) {
        const std::string place = on_terminal_ ? "" : "line " + std::to_string(line_) + ": ";
        const int status = ReportFailures(body, place);
        if (!on_terminal_) status_ = std::max(status_, status);
        return status == kSuccess;
    }

    void Start() {
        const int status = ReportFailures([&] { host_.PrepareSession(); });
        refused_ = status != kSuccess;
        status_ = status;
        if (refused_ || !on_terminal_ || host_.options().quiet) return;
        host_.Note(host_.Path() + (host_.loaded() ? "; `help` lists the commands, `quit` leaves"
                                                  : " is not there yet; `create` makes it"));
    }

    std::string Prompt() {
        const bool open = host_.loaded() && host_.engine().TransactionStarted();
        return Printable(SplitPath(host_.Path()).name) + (open ? " (transaction)> " : "> ");
    }

    // The words of the next line; of several when quotations hold line breaks.
    std::optional<std::vector<std::string>> ReadCommand() {
        if (refused_) return std::nullopt;
        line_ += lines_read_;
        lines_read_ = 1;
        auto line = editor_.Read(Prompt());
        if (!line) return std::nullopt;
        WordSplit split = SplitWords(*line);
        while (split.open_quote) {
            const auto more = editor_.Read("... ");
            ++lines_read_;
            if (!more || (more->empty() && Interrupted())) {
                Try([] { throw UsageError("a quote that is never closed"); });
                return more ? std::vector<std::string>()
                            : std::optional<std::vector<std::string>>();
            }
            line->append("\n").append(*more);
            split = SplitWords(*line);
        }
        return split.words;
    }

    void RunWords(std::span<const std::string> words) {
        const Command& command = CommandOf(host_, words);
        RunCommand(host_, command, words);
    }

    static bool IsQuit(const std::vector<std::string>& words) {
        return words[0] == "quit" || words[0] == "exit" || words[0] == "quit!";
    }

    // Sees to unsaved changes as the words of `quit` say.
    bool MayLeave(std::vector<std::string> words) {
        if (words[0] == "quit!") words = {"quit", "--discard"};
        return Try([&] {
            const Arguments arguments("[--discard]", std::span(words).subspan(1));
            if (arguments.Has("--discard")) discard_ = true;
        });
    }

    // Whether the session is over: Ctrl-C at its question goes on with it, and so does a failure to
    // save.
    bool Leave() {
        if (refused_ || discard_ || !host_.unsaved()) return true;
        const Answer answer = on_terminal_ ? Ask("Save the changes?") : Answer::kEndOfInput;
        switch (answer) {
            case Answer::kYes:
                return ReportFailures([&] { host_.Save(); }) == kSuccess;
            case Answer::kNo:
                break;
            case Answer::kInterrupted:
                return false;
            case Answer::kEndOfInput:
                std::cerr << "the changes were not saved; `save` saves them, `quit --discard` "
                             "gives them up\n";
                status_ = std::max(status_, kFailure);
        }
        return true;
    }

    Host& host_;
    bool on_terminal_;
    LineEditor editor_;
    int status_ = kSuccess;
    std::size_t line_ = 0;        // that the command begins on, from 1
    std::size_t lines_read_ = 1;  // of it
    bool refused_ = false;
    bool discard_ = false;
};

std::string_view NeedText(Need need) {
    switch (need) {
        case Need::kRead:
            return "a right to read";
        case Need::kWrite:
            return "a right to write";
        case Need::kDelete:
            return "a right to delete";
        case Need::kOwner:
            return "to be the owner";
        default:
            return "no right";
    }
}

void Explain(const Command& command) {
    std::cout << Usage(command) << "\n\n  " << command.help << "\n  It takes "
              << NeedText(command.need) << ".\n\nexample: " << command.example << '\n';
    if (command.need == Need::kNewDatabase) {
        std::cout
            << "\nThe registry is RDX.dat in the folder TAVOLIN_FOLDER, else beside the program,\n"
               "or in "
            << kUsersFolder << " when you may not write there.\n";
    }
    if (command.pattern.find("KEY") != std::string_view::npos &&
        command.pattern.find("--key") == std::string_view::npos) {
        std::cout << "\nKEY is a record's key, or #N for the Nth record; a key that begins with #\n"
                     "is written \\#, which a session needs in quotes: '\\#7'.\n";
    }
}

}  // namespace

int RunOneCommand(Host& host) {
    return ReportFailures([&] {
        std::span<const std::string> words = host.options().words;
        const Command& command = CommandOf(host, words);
        RunCommand(host, command, words);
        if (host.unsaved()) host.Save();
    });
}

int RunSession(Host& host) { return ShellSession(host).Run(); }

void HelpCommand(Host&, const Arguments& arguments) {
    const std::vector<std::string>& names = arguments.All("COMMAND");
    if (!names.empty()) {
        std::span<const std::string> words = names;
        const Command* const command = TakeCommand(words);
        if (command == nullptr || !words.empty()) RaiseNoCommand(names[0]);
        return Explain(*command);
    }
    TextTable table({"Command", ""});
    for (const Command& command : Commands()) {
        table.Add({std::string(command.name), std::string(command.help)});
    }
    table.Print(std::cout, false, TerminalWidth());
    std::cout << "\n`help COMMAND` shows a command's words and an example.\n"
                 "Words are split at blanks; quotes and \\ keep them together. A line that begins\n"
                 "with # is passed over; a word -- ends options.\n";
}

// A session looks at these words itself before it looks for commands.
void QuitCommand(Host&, const Arguments&) {}

}  // namespace tavolin::cli
