#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "cli/completion.h"
#include "cli/data_folder.h"
#include "cli/environment.h"
#include "cli/failure.h"
#include "cli/help.h"
#include "cli/host.h"
#include "cli/options.h"
#include "cli/run_command.h"
#include "cli/shell.h"
#include "cli/terminal.h"
#include "cli/tools.h"

int main(int argc, char** argv) {
    using namespace tavolin::cli;
    const Utf8Streams streams;
    int status = kSuccess;
    const int failure = ReportFailures([&] {
        const std::vector<std::string> words = ProgramWords(argc, argv);
        if (words.size() == 3 && words[0] == "complete" && words[1] == "--") {
            ChooseDataFolder();
            return PrintCompletions(words[2]);
        }
        if (words == std::vector<std::string>{"help", "--man"}) return PrintManual(std::cout);
        std::optional<HostOptions> options = ParseOptions(words);
        if (!options) return;
        if (!options->tool.empty()) {
            status = RunTool(*options);
            return;
        }
        if (!options->file.empty()) ChooseDataFolder();
        Host host(*options);
        status = host.in_session() ? RunSession(host) : RunOneCommand(host);
        if (!std::cout.flush()) throw CommandFailure("the output cannot be written");
    });
    return failure != kSuccess ? failure : status;
}
