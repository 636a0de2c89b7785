// Completion for the system's shell, which runs the program anew for it.
#include <filesystem>
#include <iostream>
#include <optional>
#include <span>

#include "cli/completion.h"
#include "cli/environment.h"
#include "cli/failure.h"
#include "cli/file_names.h"
#include "cli/help.h"
#include "cli/options.h"
#include "cli/paths.h"
#include "cli/tools.h"
#include "cli/words.h"

namespace tavolin::cli {
namespace {

using Words = std::vector<std::string>;

// Nobody waits longer at the Tab key than such a file takes to load.
constexpr std::uintmax_t kLargestFile = 32u << 20;

bool IsQuick(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(PathOf(DatabasePath(file)), error);
    return !error && size <= kLargestFile;
}

// What the user may see without being asked. Loading writes nothing anywhere.
Names NamesOf(const Words& options_and_file) {
    Names names;
    try {
        const auto options = ParseOptions(options_and_file);
        if (!options || !options->tool.empty() || !IsQuick(options->file)) return names;
        Host host(*options);
        if (host.LoadWithoutAsking()) names = LoadedNames(host);
    } catch (const std::exception&) {
        // Then there are just the commands.
    }
    return names;
}

// The words of one option's names, "-q, --quiet" or "--user NAME".
struct OptionWords {
    Words names;
    bool has_value = false;
};
OptionWords WordsOf(const ProgramOption& option) {
    OptionWords words;
    for (std::string word : SplitWords(option.names).words) {
        if (word.ends_with(',')) word.pop_back();
        if (word.starts_with('-')) {
            words.names.push_back(word);
        } else {
            words.has_value = true;
        }
    }
    return words;
}

bool TakesValue(const std::string& word) {
    for (const ProgramOption& option : ProgramOptions()) {
        const OptionWords words = WordsOf(option);
        for (const std::string& name : words.names) {
            if (name == word) return words.has_value;
        }
    }
    return false;
}

Words ProgramCompletions(const Words& before, const std::string& word) {
    Words candidates;
    if (!before.empty() && before.back() == "--format") return SettingValues("format");
    if (!before.empty() && before.back() == "--password-file") return FileNames(word);
    if (!before.empty() && TakesValue(before.back())) return {};
    if (word.starts_with('-')) {
        for (const ProgramOption& option : ProgramOptions()) {
            const Words names = WordsOf(option).names;
            candidates.insert(candidates.end(), names.begin(), names.end());
        }
        return candidates;
    }
    candidates = FileNames(word, FilesOf::kAnyKind, ".cdb");
    candidates.emplace_back("help");
    for (const Command& tool : Tools()) candidates.emplace_back(tool.name);
    return candidates;
}

// How many words there are until the database's file, itself included; 0 when it is not there yet.
std::size_t FileAmong(const Words& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!words[i].starts_with('-')) return i + 1;
        if (TakesValue(words[i])) ++i;
    }
    return 0;
}

}  // namespace

// The shell completes what stands behind a quote, "=" or ":" only, and quotes what is in quotes.
static std::string ForTheShell(const std::string& word, std::string_view raw) {
    const bool quoted = raw.starts_with('\'') || raw.starts_with('"');
    std::string text = word;
    if (quoted) {
        text.erase(0, 1);
        if (text.ends_with(raw[0])) text.pop_back();
        return text;
    }
    const std::size_t cut = raw.find_last_of("=:");
    if (cut == raw.npos || text.substr(0, cut + 1) != raw.substr(0, cut + 1)) return text;
    return text.substr(cut + 1);
}

void PrintCompletions(std::string_view line) {
    WordSplit split = SplitWords(line);
    if (split.words.empty() || (split.words.size() == 1 && !split.ended)) return;
    const std::string word = split.ended ? std::string() : split.words.back();
    const std::string_view raw =
        split.ended ? std::string_view() : line.substr(split.begins.back());
    if (!split.ended) split.words.pop_back();
    Words before(split.words.begin() + 1, split.words.end());
    const std::size_t file = FileAmong(before);
    const auto end = before.begin() + static_cast<std::ptrdiff_t>(file);
    Words candidates;
    if (file == 0) {
        candidates = ProgramCompletions(before, word);
        std::erase_if(candidates, [&](const auto& each) { return !each.starts_with(word); });
    } else if (before[file - 1] == "help") {
        candidates = Completions(Words(end - 1, before.end()), word, {});
    } else if (const Command* const tool = ToolNamed(before[file - 1])) {
        candidates = CompletionsOf(*tool, std::span(before).subspan(file), word, {});
    } else {
        candidates =
            Completions(Words(end, before.end()), word, NamesOf(Words(before.begin(), end)));
    }
    for (const std::string& each : candidates) {
        std::cout << ForTheShell(TypedWord(each, raw), raw) << '\n';
    }
}

}  // namespace tavolin::cli
