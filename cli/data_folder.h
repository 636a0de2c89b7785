// The folder of the owner registry, where the library's own is not for this user to write to.
#pragma once

namespace tavolin::cli {

// The folder of the user's own, as help texts name it.
#ifdef _WIN32
inline constexpr const char* kUsersFolder = "%LOCALAPPDATA%\\tavolin";
#else
inline constexpr const char* kUsersFolder = "$XDG_DATA_HOME/tavolin (~/.local/share/tavolin)";
#endif

// Unless TAVOLIN_FOLDER names a folder or the library's own can be written to, makes that folder
// and sets the variable to it for this process. Changes nothing when that folder cannot be made. To
// be called before there is an engine.
void ChooseDataFolder();

}  // namespace tavolin::cli
