#include "cli/command.h"

namespace tavolin::cli {

static const Command* CommandNamed(std::string_view name) {
    for (const Subject& subject : Subjects()) {
        for (const Command& command : subject.commands) {
            if (command.name == name) return &command;
        }
    }
    return nullptr;
}

const Command* TakeCommand(std::span<const std::string>& words) {
    for (const std::size_t count : {std::size_t{2}, std::size_t{1}}) {
        if (words.size() < count) continue;
        const std::string name = count == 2 ? words[0] + " " + words[1] : words[0];
        if (const Command* const command = CommandNamed(name)) {
            words = words.subspan(count);
            return command;
        }
    }
    return nullptr;
}

std::vector<PatternPart> PartsOf(const Command& command) {
    std::vector<PatternPart> parts = ParsePattern(command.pattern);
    if (!command.shows) return parts;
    const std::vector<PatternPart> common = ParsePattern(kOutputPattern);
    parts.insert(parts.end(), common.begin(), common.end());
    return parts;
}

}  // namespace tavolin::cli
