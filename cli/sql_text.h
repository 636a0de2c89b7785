// Names and texts in SQL that SQLite and PostgreSQL read alike.
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace tavolin::cli {

// A text that both can hold: U+FFFD stands for the character 0, for surrogates and for each byte
// that is not UTF-8.
struct SqlText {
    explicit SqlText(std::string_view text);
    std::string_view view() const { return exact ? given : std::string_view(changed); }

    std::string_view given;
    std::string changed;
    bool exact = true;
};

// Appends it as a literal.
void AppendLiteral(const SqlText& text, std::string& out);

// `name` with the quotes of an identifier.
std::string QuotedName(std::string_view name);

// Gives names that differ, also where letter case does not count: no longer than PostgreSQL keeps
// them, without control characters, and none that either database keeps for itself.
class SqlNames {
  public:
    enum class Of { kTables, kColumns };
    explicit SqlNames(Of of) : of_(of) {}

    // A name as much like `wanted` as may be, or like `otherwise` if that is empty.
    std::string Take(std::string_view wanted, const std::string& otherwise);

  private:
    bool Reserved(const std::string& folded) const;

    Of of_;
    std::set<std::string> taken_;  // folded
};

}  // namespace tavolin::cli
