// Paths as the user writes them and as the library and the machine take them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavolin::cli {

// The machine's path of UTF-8 text, and back.
std::filesystem::path PathOf(std::string_view text);
std::string TextOf(const std::filesystem::path& path);

// The whole path of a database file: absolute, with ".cdb" behind a name that holds no ".".
std::string DatabasePath(std::string_view file);

// A file's name without its extension.
std::string WithoutExtension(std::string_view name);

// A path of the library's as the machine writes it.
std::string MachinePath(std::string path);

// A database's path as the library puts it together from folder and name, with its own separator
// between them: under this form the registry knows it, and another form is another database there.
std::string LibraryPath(std::string_view path);

// The absolute path of a folder, without a separator at its end unless it is the root.
std::string FolderPath(std::string_view folder);

// CommandFailure unless the folder is there.
void RequireFolder(const std::filesystem::path& folder);

// The file that a user names to be written, absolute; "-", the standard output, stays as it is.
std::string OutputPath(const std::string& given);

// The first line of a file, without its line break; raises CommandFailure if it cannot be read.
std::string FirstLine(const std::string& path);

}  // namespace tavolin::cli
