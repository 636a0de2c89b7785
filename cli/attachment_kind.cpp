#include "cli/attachment_kind.h"

#include <cstdint>

namespace tavolin::cli {
namespace {

constexpr struct {
    attachmentEnum kind;
    std::string_view word;  // dumps hold it: do not change
} kKinds[] = {{aPicture, "picture"}, {aSound, "sound"}, {aMovie, "movie"}, {Miscellenius, "other"}};

}  // namespace

std::string AttachmentKindText(attachmentEnum kind) {
    for (const auto& each : kKinds) {
        if (each.kind == kind) return std::string(each.word);
    }
    return std::to_string(static_cast<std::int32_t>(kind));
}

std::optional<attachmentEnum> AttachmentKindNamed(std::string_view word) {
    for (const auto& each : kKinds) {
        if (each.word == word) return each.kind;
    }
    return std::nullopt;
}

}  // namespace tavolin::cli
