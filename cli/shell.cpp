#include "cli/shell.h"

#include <algorithm>
#include <iostream>
#include <optional>

#include "cli/completion.h"
#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/line_editor.h"
#include "cli/run_command.h"
#include "cli/terminal.h"
#include "cli/words.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

class ShellSession {
  public:
    explicit ShellSession(Host& host)
        : host_(host),
          on_terminal_(InputIsTerminal()),
          editor_(on_terminal_, [&host](std::string_view line) {
              return CompleteLine(line, LoadedNames(host));
          }) {}

    int Run() {
        const InterruptCatcher catcher;
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
            if (EndedByInterrupt()) break;
            if (!words || (!words->empty() && IsQuit(*words) && MayLeave(*words))) break;
            if (words->empty() || IsQuit(*words)) continue;
            Try([&] { RunWords(host_, *words); });
            std::cout.flush();
            if (EndedByInterrupt()) break;
        }
    }

    // Commands that do not come from somebody at a terminal end as a single one does.
    bool EndedByInterrupt() {
        if (on_terminal_ || !Interrupted()) return false;
        status_ = kInterruptedStatus;
        return true;
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
        const int status = ReportFailures([&] {
            const InterruptCatcher catcher(
                InterruptCatcher::At::kOnce);  // there is nothing to lose
            host_.PrepareSession();
        });
        refused_ = status != kSuccess;
        status_ = status;
        if (refused_ || !on_terminal_ || host_.output().quiet) return;
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

    static bool IsQuit(const std::vector<std::string>& words) {
        return words[0] == "quit" || words[0] == "exit" || words[0] == "quit!";
    }

    // Sees to unsaved changes as the words of `quit` say.
    bool MayLeave(std::vector<std::string> words) {
        if (words[0] == "quit!") words = {"quit", "--discard"};
        return Try([&] {
            std::span<const std::string> rest = words;
            const Command& quit = *TakeCommand(rest);
            if (ArgumentsOf(quit, rest).Has("--discard")) discard_ = true;
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

}  // namespace

int RunSession(Host& host) { return ShellSession(host).Run(); }

}  // namespace tavolin::cli
