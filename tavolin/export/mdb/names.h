// What the format allows as the name of a table or a column.
#pragma once

#include <string>
#include <string_view>

namespace tavolin::mdb {

// Why the name cannot be one, or the empty text: 1 to 64 units of UTF-16; no `.` `!` `[` `]`, grave
// accent, control character or lone surrogate; no blank at either end.
std::string NameFault(std::string_view name);
// The same for a table, whose name must have a place in the order of names as well, and must not
// look like a table of the format's own.
std::string TableNameFault(std::string_view name);

// Whether the two are one name for the programs of the format.
bool IsOneName(std::string_view a, std::string_view b);

}  // namespace tavolin::mdb
