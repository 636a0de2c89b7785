#include "cli/arguments.h"

#include <algorithm>
#include <charconv>
#include <sstream>

#include "cli/failure.h"

namespace tavolin::cli {
namespace {

// The part that begins with `token`; the value of an option is the token behind it.
PatternPart TakePart(std::istringstream& tokens, std::string token) {
    PatternPart part;
    part.required = !token.starts_with('[');
    if (!part.required) token.erase(0, 1);
    const bool has_value = token.starts_with("--") && !token.ends_with(']');
    if (has_value) tokens >> part.value;
    for (std::string* text : {&token, &part.value}) {
        if (text->ends_with(']')) text->pop_back();
    }
    part.many = token.ends_with("...");
    if (part.many) token.erase(token.size() - 3);
    part.name = token;
    return part;
}

}  // namespace

std::vector<std::string> PatternPart::Choices() const {
    std::vector<std::string> choices;
    if (value.find('|') == value.npos) return choices;
    std::istringstream text(value);
    for (std::string choice; std::getline(text, choice, '|');) choices.push_back(choice);
    return choices;
}

std::vector<PatternPart> ParsePattern(std::string_view pattern) {
    std::vector<PatternPart> parts;
    std::istringstream tokens{std::string(pattern)};
    for (std::string token; tokens >> token;) parts.push_back(TakePart(tokens, token));
    return parts;
}

Arguments::Arguments(const std::vector<PatternPart>& parts, std::span<const std::string> words) {
    while (!words.empty()) {
        if (words[0] == "--") {
            positionals_.insert(positionals_.end(), words.begin() + 1, words.end());
            break;
        }
        if (words[0].starts_with("--")) {
            TakeOption(parts, words);
        } else {
            positionals_.push_back(words[0]);
            words = words.subspan(1);
        }
    }
    TakePositionals(parts);
    CheckRequired(parts);
}

void Arguments::TakeOption(const std::vector<PatternPart>& parts,
                           std::span<const std::string>& words) {
    const std::size_t equals = words[0].find('=');
    const std::string name = words[0].substr(0, equals);
    const auto part = std::find_if(parts.begin(), parts.end(),
                                   [&](const PatternPart& each) { return each.name == name; });
    if (part == parts.end()) throw UsageError("there is no option " + name + " here");
    if (Has(name)) throw UsageError(name + " is given twice");
    std::string value;
    const bool inline_value = equals != std::string::npos;
    if (inline_value) value = words[0].substr(equals + 1);
    words = words.subspan(1);
    if (part->value.empty()) {
        if (inline_value) throw UsageError(name + " takes no value");
    } else if (!inline_value) {
        if (words.empty()) throw UsageError(name + " needs a value: " + part->value);
        value = words[0];
        words = words.subspan(1);
    }
    const auto choices = part->Choices();
    if (!choices.empty() && std::find(choices.begin(), choices.end(), value) == choices.end()) {
        throw UsageError(name + " is one of " + part->value);
    }
    values_[name] = {value};
}

// A part with many words is the last one.
void Arguments::TakePositionals(const std::vector<PatternPart>& parts) {
    std::size_t at = 0;
    for (const PatternPart& part : parts) {
        if (part.IsOption()) continue;
        if (at == positionals_.size()) {
            if (part.required) throw UsageError(part.name + " is missing");
            continue;
        }
        const std::size_t count = part.many ? positionals_.size() - at : 1;
        const auto begin = positionals_.begin() + static_cast<std::ptrdiff_t>(at);
        values_[part.name].assign(begin, begin + static_cast<std::ptrdiff_t>(count));
        at += count;
    }
    if (at < positionals_.size()) throw UsageError("a word too many: " + positionals_[at]);
}

void Arguments::CheckRequired(const std::vector<PatternPart>& parts) const {
    for (const PatternPart& part : parts) {
        if (part.required && !Has(part.name)) throw UsageError(part.name + " is missing");
    }
}

std::optional<std::string> Arguments::Find(std::string_view name) const {
    if (!Has(name)) return std::nullopt;
    return (*this)[name];
}

std::string Arguments::Get(std::string_view name, std::string_view otherwise) const {
    return Has(name) ? (*this)[name] : std::string(otherwise);
}

std::optional<bool> Arguments::Switch(std::string_view name) const {
    if (!Has(name)) return std::nullopt;
    return (*this)[name] == "on";
}

std::int32_t Arguments::Number(std::string_view name, std::int32_t otherwise) const {
    if (!Has(name)) return otherwise;
    const std::string& text = (*this)[name];
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0) {
        throw UsageError(std::string(name) + " takes a whole number, 0 or more: " + text);
    }
    return number;
}

const std::vector<std::string>& Arguments::All(std::string_view name) const {
    static const std::vector<std::string> kNone;
    const auto found = values_.find(name);
    return found == values_.end() ? kNone : found->second;
}

}  // namespace tavolin::cli
