// The words for the kinds of attachments.
#pragma once

#include <string>

#include "tavolin/model/types.h"

namespace tavolin::cli {

// "picture", "sound", "movie" or "other"; the number when it is none of the published ones.
std::string AttachmentKindText(attachmentEnum kind);

}  // namespace tavolin::cli
