// No export writes onto the open database.
#pragma once

#include <string_view>

namespace tavolin {

class Session;

// Raises 58 when the path leads to the open database's file or its log.
void AskToExportTo(std::string_view path, const Session& session);

}  // namespace tavolin
