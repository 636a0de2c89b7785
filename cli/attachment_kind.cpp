#include "cli/attachment_kind.h"

#include <cstdint>

namespace tavolin::cli {

std::string AttachmentKindText(attachmentEnum kind) {
    switch (kind) {
        case aPicture:
            return "picture";
        case aSound:
            return "sound";
        case aMovie:
            return "movie";
        case Miscellenius:
            return "other";
    }
    return std::to_string(static_cast<std::int32_t>(kind));
}

}  // namespace tavolin::cli
