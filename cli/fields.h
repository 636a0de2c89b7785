// A table's fields by their names, and its records by the words that name them.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/engine/engine.h"

namespace tavolin::cli {

// The numbers of the fields that have a name or a label; all ten when none has.
std::vector<int> FieldsOf(const CVLTable& table);

// The name of a field: its label, or its name, or its number.
std::string FieldTitle(const CVLTable& table, int field);
std::vector<std::string> FieldTitles(const CVLTable& table);

// The field of that name or label, in any letter case.
std::optional<int> FieldCalled(const CVLTable& table, std::string_view text);

// The same, or the field of that number; else raises UsageError.
int FieldNumber(const CVLTable& table, const std::string& text);

// The number of a field among names that are not a table's yet; else raises UsageError.
int FieldNumber(const std::vector<std::string>& names, const std::string& text);

// A record's values in the fields given.
std::vector<std::string> Values(const CVLRecord& record, const std::vector<int>& fields);

// A record as the user names it: "#3" is the third; anything else is a key. Of one that begins with
// backslashes and `#` the first backslash is dropped. It is a view of `word`.
IndexKey RecordKey(std::string_view word);

// The values of "FIELD=value" words, by field. A word without a field of the table in front of its
// first "=" raises UsageError, and so does a field that is named twice.
using Assignments = std::array<std::optional<std::string>, kFieldCount>;
Assignments ParseAssignments(const CVLTable& table, const std::vector<std::string>& words);

// Whether the word begins with a field of the table and "=".
bool IsAssignment(const CVLTable& table, std::string_view word);

// Whether the word begins with what might be a field's name and "=", with no second one behind it.
bool LooksLikeAssignment(std::string_view word);

// Raises CommandFailure for a text that the database should not hold.
void RequireUtf8(std::string_view text);

// The key field numbers of a new table with those field names: up to four, named by a list; the
// first one when the list is empty.
std::array<int, 4> KeyFields(const std::vector<std::string>& names, const std::string& list);

}  // namespace tavolin::cli
