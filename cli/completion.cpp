#include "cli/completion.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "cli/command.h"
#include "cli/commands.h"
#include "cli/fields.h"
#include "cli/file_names.h"
#include "cli/output.h"
#include "cli/tools.h"
#include "cli/words.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

using Words = std::vector<std::string>;

bool BeginsWith(std::string_view candidate, std::string_view word) {
    return EqualFold(candidate.substr(0, word.size()), word);
}

// The words that a command's name may go on with behind `before`; subjects are help's own.
Words NamesOfCommands(const Words& before, bool subjects) {
    std::set<std::string> names;
    for (const Subject& subject : Subjects()) {
        if (subjects) names.emplace(subject.name);
        for (const Command& command : subject.commands) {
            const Words words = SplitWords(command.name).words;
            if (words.size() <= before.size()) continue;
            if (!std::equal(before.begin(), before.end(), words.begin())) continue;
            names.insert(words[before.size()]);
        }
    }
    if (!subjects) return {names.begin(), names.end()};
    names.insert("all");
    for (const Command& tool : Tools()) names.emplace(tool.name);
    return {names.begin(), names.end()};
}

// What has been typed of a command, and what comes next.
class CommandLine {
  public:
    CommandLine(const Command& command, std::span<const std::string> words)
        : command_(command), parts_(PartsOf(command)) {
        while (!words.empty()) {
            Take(words[0]);
            words = words.subspan(1);
        }
    }

    // The option whose value comes next, or the place of the next word.
    std::optional<PatternPart> Next() const {
        if (waiting_) return waiting_;
        std::size_t at = 0;
        for (const PatternPart& part : parts_) {
            if (part.IsOption()) continue;
            if (part.many || at++ == positionals_.size()) return part;
        }
        return std::nullopt;
    }
    bool takes_options() const { return !waiting_ && !ended_; }
    Words OptionsLeft() const {
        Words options;
        for (const PatternPart& part : parts_) {
            if (part.IsOption() && !given_.contains(part.name)) options.push_back(part.name);
        }
        return options;
    }
    const Command& command() const { return command_; }
    const Words& positionals() const { return positionals_; }
    std::string table() const {
        const auto found = values_.find("--in");
        if (found != values_.end()) return found->second;
        return positionals_.empty() ? std::string() : positionals_[0];
    }

  private:
    void Take(const std::string& word) {
        if (waiting_) {
            values_[waiting_->name] = word;
            waiting_.reset();
        } else if (word == "--" && !ended_) {
            ended_ = true;
        } else if (word.starts_with("--") && !ended_) {
            const std::string name = word.substr(0, word.find('='));
            given_.insert(name);
            for (const PatternPart& part : parts_) {
                if (part.name == name && !part.value.empty() && name == word) waiting_ = part;
            }
        } else {
            positionals_.push_back(word);
        }
    }

    const Command& command_;
    std::vector<PatternPart> parts_;
    Words positionals_;
    std::set<std::string> given_;
    std::map<std::string, std::string> values_;
    std::optional<PatternPart> waiting_;
    bool ended_ = false;
};

Words FieldsNamed(const std::string& table, const Names& names, const char* behind) {
    Words fields;
    for (const Names::Table& each : names.tables) {
        if (!EqualFold(each.name, table)) continue;
        for (const std::string& field : each.fields) fields.push_back(field + behind);
    }
    return fields;
}

Words TableNames(const Names& names) {
    Words tables;
    for (const Names::Table& each : names.tables) tables.push_back(each.name);
    return tables;
}

Words SettingWords(const Words& before) {
    if (!before.empty()) return SettingValues(before[0]);
    Words names;
    for (const auto& setting : Settings({})) names.push_back(setting.first);
    return names;
}

// What the place of a pattern stands for.
Words ValuesOf(const PatternPart& part, const CommandLine& line, const std::string& word,
               const Names& names) {
    const std::string& kind = part.IsOption() ? part.value : part.name;
    if (const Words choices = part.Choices(); !choices.empty()) return choices;
    if (line.command().name == "set") return SettingWords(line.positionals());
    if (line.command().name == "help") {
        return NamesOfCommands(line.positionals(), line.positionals().empty());
    }
    if (kind == "TABLE" || kind == "TARGET") return TableNames(names);
    if (kind == "FIELD") return FieldsNamed(line.table(), names, "");
    if (kind == "FIELD=VALUE" || kind == "VALUE") return FieldsNamed(line.table(), names, "=");
    if (kind == "USER") return names.users;
    if (kind == "KIND") return ActivityNames();
    if (IsTool(line.command().name)) return FileNames(word, FilesOf::kAnyKind, ".cdb");
    if (kind == "FOLDER") return FileNames(word, FilesOf::kFoldersAlone);
    if (kind == "F" || kind == "PATH" || kind == "IN" || kind == "OUT") return FileNames(word);
    if (kind.starts_with("FILE")) {
        const std::size_t dot = kind.find('.');
        return FileNames(word, FilesOf::kAnyKind, dot == kind.npos ? "" : kind.substr(dot));
    }
    return {};
}

bool IsSafe(std::string_view word) {
    constexpr std::string_view kSigns = "_-./:@%+,=\\";
    return !word.empty() && word[0] != '=' && std::all_of(word.begin(), word.end(), [&](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               static_cast<unsigned char>(c) >= 0x80 ||
               (c != '\\' && kSigns.find(c) != kSigns.npos);
    });
}

bool IsOpen(std::string_view word) { return word.ends_with('=') || EndsWithSeparator(word); }

}  // namespace

// One that goes on keeps them open.
std::string TypedWord(const std::string& word, std::string_view raw) {
    char quote = raw.empty() ? '\0' : raw[0];
    if (quote != '\'' && quote != '"') quote = IsSafe(word) ? '\0' : '\'';
    if (quote == '\0') return word;
    std::string typed(1, quote);
    for (const char c : word) {
        if (quote == '\'' && c == '\'') {
            typed += "'\\''";
        } else {
            if (quote == '"' && (c == '"' || c == '\\')) typed += '\\';
            typed += c;
        }
    }
    return IsOpen(word) ? typed : typed + quote;
}

Names LoadedNames(Host& host) {
    Names names;
    if (!host.loaded()) return names;
    for (const auto& table : host.engine().CVLTableSet()->NewEnum()) {
        names.tables.push_back({table->Key(), FieldTitles(*table)});
    }
    for (const auto& user : host.engine().CVLDBUserSet()->NewEnum()) {
        names.users.push_back(user->UserName());
    }
    return names;
}

// "log" is a command, and "log on" is another.
std::vector<std::string> Completions(const Words& before, const std::string& word,
                                     const Names& names) {
    std::span<const std::string> words = before;
    Words candidates = NamesOfCommands(before, false);
    std::erase_if(candidates, [&](const auto& each) { return !BeginsWith(each, word); });
    const Command* const command = TakeCommand(words);
    if (command == nullptr || !candidates.empty()) return candidates;
    return CompletionsOf(*command, words, word, names);
}

std::vector<std::string> CompletionsOf(const Command& command, std::span<const std::string> words,
                                       const std::string& word, const Names& names) {
    const CommandLine line(command, words);
    const auto place = line.Next();
    const bool options = line.takes_options() && (word.starts_with('-') || !place);
    Words candidates = options ? line.OptionsLeft()
                       : place ? ValuesOf(*place, line, word, names)
                               : Words();
    std::erase_if(candidates, [&](const auto& each) { return !BeginsWith(each, word); });
    return candidates;
}

LineCompletion CompleteLine(std::string_view line, const Names& names) {
    WordSplit split = SplitWords(line);
    std::string word;
    LineCompletion completion{line.size(), {}};
    if (!split.ended && !split.words.empty()) {
        word = split.words.back();
        completion.begin = split.begins.back();
        split.words.pop_back();
    }
    const std::string_view raw = line.substr(completion.begin);
    for (const std::string& each : Completions(split.words, word, names)) {
        completion.words.push_back(TypedWord(each, raw));
    }
    return completion;
}

}  // namespace tavolin::cli
