// Paths as the library keeps them: UTF-8, with `\` between the names.
#pragma once

#include <string>
#include <string_view>

#include "tavolin/base/export.h"

namespace tavolin {

// The extension of a database file, without the dot: "cdb".
TAVOLIN_API std::string_view DefaultExtension();

// The path with `\` behind it unless its last character is one. An empty path stays empty: it means
// the current folder, and must not turn into the root.
TAVOLIN_API std::string WithTrailingSeparator(std::string_view path);

// WithTrailingSeparator(dir) followed by the name.
TAVOLIN_API std::string JoinPath(std::string_view dir, std::string_view name);

struct PathParts {
    std::string dir;   // with its separator; empty when the path has none
    std::string name;  // empty when the path ends in a separator
};
// Splits behind the last `\` or `/`: dir + name is the path again.
TAVOLIN_API PathParts SplitPath(std::string_view path);

// Whether a name can be that of one folder on every system: well-formed UTF-8 of 1 to 255 bytes,
// not
// "." or "..", without separators, control characters and any of <>:"|?*, not ending in a dot or a
// blank, and none of the names of devices, which stand for themselves with any extension ("con",
// "LPT1.txt").
TAVOLIN_API bool IsFolderName(std::string_view name);

// Whether a name, put behind a folder, leads to a file in that folder on every system: no `\`, `/`,
// `:` or zero byte in it, not of dots and blanks alone, and no device.
TAVOLIN_API bool StaysInFolder(std::string_view name);

// The folder of the component's own file, with `\` behind it: the shared library's, or the
// executable's when the library is linked into it. The environment variable TAVOLIN_FOLDER, when it
// is not empty, names another one; it is asked at every call.
TAVOLIN_API std::string LibraryFolder();

// The file in which the owners of databases are registered: "RDX.dat" in LibraryFolder().
TAVOLIN_API std::string RegistryPath();

// The name of the log file beside a database of that name.
TAVOLIN_API std::string LogFileName(std::string_view database);

// The path from the root on, as the current folder is now; the path itself when that cannot be
// told.
TAVOLIN_API std::string AbsolutePath(std::string_view path);

// Whether both lead to one file. False when either is missing or is no path. Raises nothing.
TAVOLIN_API bool IsOneFile(std::string_view a, std::string_view b);

// False exactly for an empty path and for a name missing from an existing folder. A missing folder,
// or a file that may not be asked about, gives true. Raises nothing.
TAVOLIN_API bool FileExists(std::string_view path);

}  // namespace tavolin
