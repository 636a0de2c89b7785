// What the system hands to a program, all of it in UTF-8.
#pragma once

#include <string>
#include <vector>

namespace tavolin::cli {

// The words behind the program's name. Those that main() is given may be in another encoding.
std::vector<std::string> ProgramWords(int argc, const char* const* argv);

// An environment variable's value; empty when it is not set.
std::string Environment(const char* name);
void SetEnvironment(const char* name, const std::string& value);

// The name that the system knows the user by; empty when it knows none.
std::string SystemUserName();

}  // namespace tavolin::cli
