#include "cli/run_command.h"

#include <cstdio>
#include <iostream>

#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/help.h"
#include "cli/terminal.h"

namespace tavolin::cli {
namespace {

const Command& CommandOf(Host& host, std::span<const std::string>& words) {
    const std::string name = words[0];
    const Command* const command = TakeCommand(words);
    if (command == nullptr) RaiseNoCommand(name);
    if (command->where == Where::kSessionOnly && !host.in_session()) {
        throw UsageError(name + " has a meaning in a session only");
    }
    return *command;
}

// While one lives, answers are shown as the command's own options say.
class AnswerScope {
  public:
    AnswerScope(Host& host, const Arguments& words) : host_(host) {
        host_.output() = OutputOf(host_.settings(), words);
    }
    ~AnswerScope() {
        host_.EndAnswers();
        host_.output() = host_.settings();
    }
    AnswerScope(const AnswerScope&) = delete;
    AnswerScope& operator=(const AnswerScope&) = delete;

  private:
    Host& host_;
};

}  // namespace

Arguments ArgumentsOf(const Command& command, std::span<const std::string> words) {
    try {
        return Arguments(PartsOf(command), words);
    } catch (const UsageError& error) {
        throw UsageError(std::string(error.what()) + "\nusage: " + Usage(command));
    }
}

Stopwatch::~Stopwatch() {
    if (!wanted_) return;
    const std::chrono::duration<double> time = Clock::now() - start_;
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s\n", time.count());
    std::cout.flush();
    std::cerr << text;
}

// With the commands of two words that begin with the first, if there are any.
void RaiseNoCommand(const std::string& name) {
    constexpr std::size_t kWidth = 40;
    std::string known;
    for (const Subject& subject : Subjects()) {
        for (const Command& command : subject.commands) {
            if (!command.name.starts_with(name + " ")) continue;
            known += (known.empty() ? "; there is " : ", ") + std::string(command.name);
        }
    }
    throw UsageError("there is no command " + Shortened(Printable(name), kWidth) +
                     (known.empty() ? "; `help` lists the commands" : known));
}

void RunWords(Host& host, std::span<const std::string> words) {
    const Command& command = CommandOf(host, words);
    const Arguments arguments = ArgumentsOf(command, words);
    const BusyScope busy;
    const Stopwatch stopwatch(OutputOf(host.settings(), arguments).timing);
    const AnswerScope answers(host, arguments);
    host.Prepare(command.need);
    command.run(host, arguments);
    if (!host.in_session() && host.unsaved()) host.Save();
    if (!Interrupted()) return;
    if (command.need <= Need::kRead) throw Cancelled("the rest is not shown");
    std::cerr << command.name << " could not be stopped any more: it is done\n";
}

int RunOneCommand(Host& host) {
    const InterruptCatcher catcher(InterruptCatcher::At::kOnce);
    return ReportFailures([&] { RunWords(host, host.options().words); });
}

}  // namespace tavolin::cli
