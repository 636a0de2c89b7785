// No export writes onto the open database, or outside the folder that it is given.
#pragma once

#include <string>
#include <string_view>

namespace tavolin {

class Session;

// The path of a file of that name in the folder. A name that leads elsewhere raises 52.
std::string ExportPath(std::string_view folder, std::string_view name);

// Raises 58 when the path leads to the open database's file or its log.
void AskToExportTo(std::string_view path, const Session& session);

}  // namespace tavolin
