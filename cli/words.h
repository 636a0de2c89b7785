// A line of a session cut into words, as a shell does it.
//
//     SplitWords("add People 7 'Ann Lee'").words    // {"add", "People", "7", "Ann Lee"}
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavolin::cli {

struct WordSplit {
    std::vector<std::string> words;
    std::vector<std::size_t> begins;  // where they stand in the line
    bool open_quote = false;          // the line ends inside a quotation
    bool ended = true;                // the last one cannot go on: a blank stands behind it
};

// Words stand between blanks. Single quotes keep everything as it is; double quotes keep everything
// but `\"` and `\\`; outside of quotes a backslash takes the next character as it is. A line whose
// first character other than blanks is `#` has no words.
WordSplit SplitWords(std::string_view line);

// A list such as "ID,Name,City", with the quoting of CSV for names that hold a comma. Blanks around
// the names are dropped. A list that cannot be read raises UsageError.
std::vector<std::string> SplitList(std::string_view list);

}  // namespace tavolin::cli
