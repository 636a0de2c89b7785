// The words for the kinds of attachments.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavolin/model/types.h"

namespace tavolin::cli {

// "picture", "sound", "movie" or "other"; the number when it is none of the published ones.
std::string AttachmentKindText(attachmentEnum kind);
// The kind of one of these words.
std::optional<attachmentEnum> AttachmentKindNamed(std::string_view word);

}  // namespace tavolin::cli
