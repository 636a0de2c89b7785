// The words of a command, sorted by the pattern that its help shows.
//
//     Arguments words("TABLE KEY [PATH...] [--kind picture|sound] [--yes]", {"T", "7", "--yes"});
//     words["TABLE"]       // "T"
//     words.Has("--yes")   // true
//
// In a pattern a bare word is one word of the user's, "WORD..." at least one, brackets make it
// optional; "--name" is a switch, "--name VALUE" an option with a value, and a value such as
// "on|off" allows these alone. An option without brackets must be given.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavolin::cli {

// One place in a pattern.
struct PatternPart {
    std::string name;   // "TABLE" or "--kind"
    std::string value;  // of an option: "picture|sound"; empty for a switch
    bool required = false;
    bool many = false;
    bool IsOption() const { return name.starts_with("--"); }
    // The values that an option allows; none when it allows all.
    std::vector<std::string> Choices() const;
};

std::vector<PatternPart> ParsePattern(std::string_view pattern);

class Arguments {
  public:
    // Words that begin with "--" are options until a word "--"; a single "-" begins a value like
    // any other. Words that do not fit the pattern raise UsageError.
    Arguments(std::string_view pattern, std::span<const std::string> words)
        : Arguments(ParsePattern(pattern), words) {}
    Arguments(const std::vector<PatternPart>& parts, std::span<const std::string> words);

    bool Has(std::string_view name) const { return values_.find(name) != values_.end(); }
    // A word or value that is there.
    const std::string& operator[](std::string_view name) const { return All(name).front(); }
    // The same, or nothing.
    std::optional<std::string> Find(std::string_view name) const;
    std::string Get(std::string_view name, std::string_view otherwise = {}) const;
    // "on" or "off", or nothing.
    std::optional<bool> Switch(std::string_view name) const;
    // A whole number of 0 or more, in range; anything else raises UsageError.
    std::int32_t Number(std::string_view name, std::int32_t otherwise) const;
    // All the words of a part that may have many; none if there are none.
    const std::vector<std::string>& All(std::string_view name) const;

  private:
    void TakeOption(const std::vector<PatternPart>& parts, std::span<const std::string>& words);
    void TakePositionals(const std::vector<PatternPart>& parts);
    void CheckRequired(const std::vector<PatternPart>& parts) const;

    std::map<std::string, std::vector<std::string>, std::less<>> values_;
    std::vector<std::string> positionals_;
};

}  // namespace tavolin::cli
