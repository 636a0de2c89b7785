#include <iostream>
#include <optional>

#include "cli/data_folder.h"
#include "cli/environment.h"
#include "cli/failure.h"
#include "cli/host.h"
#include "cli/options.h"
#include "cli/shell.h"
#include "cli/terminal.h"
#include "cli/tools.h"

int main(int argc, char** argv) {
    using namespace tavolin::cli;
    const Utf8Streams streams;
    int status = kSuccess;
    const int failure = ReportFailures([&] {
        const std::optional<HostOptions> options = ParseOptions(ProgramWords(argc, argv));
        if (!options) return;
        ChooseDataFolder();
        if (!options->tool.empty()) {
            status = RunTool(*options);
            return;
        }
        Host host(*options);
        status = host.in_session() ? RunSession(host) : RunOneCommand(host);
        if (!std::cout.flush()) throw CommandFailure("the output cannot be written");
    });
    return failure != kSuccess ? failure : status;
}
