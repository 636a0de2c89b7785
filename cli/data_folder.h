// The folder of the owner registry, where the library's own is not for this user to write to.
#pragma once

namespace tavolin::cli {

// Unless TAVOLIN_FOLDER names a folder or the library's own can be written to, makes a folder of
// the user's - "tavolin" in $XDG_DATA_HOME or ~/.local/share, in %LOCALAPPDATA% on Windows - and
// sets the variable to it for this process. Changes nothing when that folder cannot be made. To be
// called before there is an engine.
void ChooseDataFolder();

}  // namespace tavolin::cli
