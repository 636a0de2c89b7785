#include "cli/fields.h"

#include <algorithm>
#include <charconv>
#include <numeric>

#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/words.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

// The number that a text is, if it is all digits and fits.
std::optional<std::int32_t> WholeNumber(std::string_view text) {
    std::int32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || text[0] == '-' || error != std::errc() || stop != end) return std::nullopt;
    return number;
}

std::optional<int> FieldOfNumber(const std::string& text) {
    const auto number = WholeNumber(text);
    return number && *number < kFieldCount ? number : std::nullopt;
}

}  // namespace

std::vector<int> FieldsOf(const CVLTable& table) {
    std::vector<int> fields;
    for (int field = 0; field < kFieldCount; ++field) {
        if (!table.FieldName(field).empty() || !table.FieldLabel(field).empty()) {
            fields.push_back(field);
        }
    }
    if (fields.empty()) {
        fields.resize(kFieldCount);
        std::iota(fields.begin(), fields.end(), 0);
    }
    return fields;
}

std::string FieldTitle(const CVLTable& table, int field) {
    if (!table.FieldLabel(field).empty()) return table.FieldLabel(field);
    if (!table.FieldName(field).empty()) return table.FieldName(field);
    return std::to_string(field);
}

std::vector<std::string> FieldTitles(const CVLTable& table) {
    std::vector<std::string> titles;
    for (const int field : FieldsOf(table)) titles.push_back(FieldTitle(table, field));
    return titles;
}

std::optional<int> FieldCalled(const CVLTable& table, std::string_view text) {
    if (text.empty()) return std::nullopt;
    for (int field = 0; field < kFieldCount; ++field) {
        if (EqualFold(table.FieldName(field), text)) return field;
    }
    for (int field = 0; field < kFieldCount; ++field) {
        if (EqualFold(table.FieldLabel(field), text)) return field;
    }
    return std::nullopt;
}

int FieldNumber(const CVLTable& table, const std::string& text) {
    if (const auto field = FieldCalled(table, text)) return *field;
    if (const auto field = FieldOfNumber(text)) return *field;
    throw UsageError("the table " + table.Key() + " has no field " + text);
}

int FieldNumber(const std::vector<std::string>& names, const std::string& text) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const std::string& name) { return EqualFold(name, text); });
    if (found != names.end()) return static_cast<int>(found - names.begin());
    const auto number = FieldOfNumber(text);
    if (number && *number < static_cast<int>(names.size())) return *number;
    throw UsageError("there is no field " + text);
}

std::vector<std::string> Values(const CVLRecord& record, const std::vector<int>& fields) {
    std::vector<std::string> values;
    values.reserve(fields.size());
    for (const int field : fields) values.push_back(record.prop(field));
    return values;
}

IndexKey RecordKey(std::string_view word) {
    if (word.starts_with('#')) {
        if (const auto position = WholeNumber(word.substr(1))) return *position;
    }
    const std::size_t other = word.find_first_not_of('\\');
    if (other != 0 && other != word.npos && word[other] == '#') word.remove_prefix(1);
    return word;
}

bool IsAssignment(const CVLTable& table, std::string_view word) {
    const std::size_t equals = word.find('=');
    return equals != word.npos && FieldCalled(table, word.substr(0, equals)).has_value();
}

bool LooksLikeAssignment(std::string_view word) {
    const std::string_view name = word.substr(0, word.find('='));
    const std::string_view value = word.substr(std::min(word.size(), name.size() + 1));
    const auto in_name = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || static_cast<unsigned char>(c) >= 0x80;
    };
    return name.size() < word.size() && !name.empty() && !(name[0] >= '0' && name[0] <= '9') &&
           std::all_of(name.begin(), name.end(), in_name) && !value.starts_with('=');
}

void RequireUtf8(std::string_view text) {
    std::size_t bad = 0;
    if (IsUtf8(text, bad)) return;
    throw CommandFailure("byte " + std::to_string(bad + 1) + " of " + std::string(text) +
                         " is not UTF-8");
}

Assignments ParseAssignments(const CVLTable& table, const std::vector<std::string>& words) {
    Assignments values;
    for (const std::string& word : words) {
        const std::size_t equals = word.find('=');
        if (equals == word.npos) throw UsageError("FIELD=value is expected instead of " + word);
        auto& value = values[static_cast<std::size_t>(FieldNumber(table, word.substr(0, equals)))];
        if (value) throw UsageError("the field of " + word + " is given twice");
        value = word.substr(equals + 1);
    }
    return values;
}

std::array<int, 4> KeyFields(const std::vector<std::string>& names, const std::string& list) {
    std::array<int, 4> key;
    key.fill(kNoField);
    if (list.empty()) {
        key[0] = 0;
        return key;
    }
    const std::vector<std::string> parts = SplitList(list);
    if (parts.size() > key.size()) throw UsageError("a key has four fields at most");
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const int field = FieldNumber(names, parts[i]);
        if (std::find(key.begin(), key.end(), field) != key.end()) {
            throw UsageError("the key names the field " + parts[i] + " twice");
        }
        key[i] = field;
    }
    return key;
}

}  // namespace tavolin::cli
