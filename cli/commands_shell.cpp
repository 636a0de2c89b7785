// The shell itself: help and settings.
#include <iostream>

#include "cli/commands.h"
#include "cli/data_folder.h"
#include "cli/failure.h"
#include "cli/help.h"
#include "cli/run_command.h"
#include "cli/tools.h"

namespace tavolin::cli {
namespace {

// Of a subject; false for another word.
bool ExplainSubject(const std::string& name) {
    bool found = false;
    for (const Subject& subject : Subjects()) {
        if (name != subject.name && name != "all") continue;
        if (found) std::cout << '\n';
        PrintSubject(std::cout, subject);
        found = true;
    }
    return found;
}

}  // namespace

void HelpCommand(Host& host, const Arguments& arguments) {
    const std::vector<std::string>& names = arguments.All("COMMAND");
    host.BeginAnswers();
    if (names.empty()) return PrintOverview(std::cout);
    std::span<const std::string> words = names;
    const Command* const command = TakeCommand(words);
    const Command* const tool = names.size() == 1 ? ToolNamed(names[0]) : nullptr;
    const bool known = command != nullptr && words.empty();
    if (known) PrintCommand(std::cout, *command);
    if (known && tool != nullptr) std::cout << "\nAnd without loading a database:\n\n";
    if (tool != nullptr) return PrintCommand(std::cout, *tool);
    if (!known && (names.size() > 1 || !ExplainSubject(names[0]))) RaiseNoCommand(names[0]);
    if (!known || command->need != Need::kNewDatabase) return;
    std::cout << "\nThe registry of owners is RDX.dat in the folder TAVOLIN_FOLDER, else "
                 "beside the\nprogram, or in "
              << kUsersFolder << "\nwhen you may not write there.\n";
}

void SetCommand(Host& host, const Arguments& words) {
    const auto setting = words.Find("SETTING");
    const auto value = words.Find("VALUE");
    if (setting && value) return ChangeSetting(host.settings(), *setting, *value);
    if (setting && SettingValues(*setting).empty()) ChangeSetting(host.settings(), *setting, "");
    Properties settings = Settings(host.settings());
    if (setting) std::erase_if(settings, [&](const auto& each) { return each.first != *setting; });
    host.AnswerOne(settings, "Setting");
}

// A session looks at these words itself before it looks for commands.
void QuitCommand(Host&, const Arguments&) {}

}  // namespace tavolin::cli
