#include "tavolin/errors/error.h"

#include <span>

#include "tavolin/errors/trap.h"

namespace tavolin {
namespace {

std::string_view RunTimeText(std::int32_t number) {
    switch (number) {
        case kInvalidCall:
            return "Invalid procedure call or argument";
        case kSubscriptOutOfRange:
            return "Subscript out of range";
        case kTypeMismatch:
            return "Type mismatch";
        case kDuplicateKey:
            return "This key is already associated with an element of this collection";
        default:
            return GetErrorMessage(number);
    }
}

}  // namespace

std::string Message::one_line() const {
    std::string line;
    std::size_t done = 0;
    for (const Name& place : std::span(names_).first(name_count_)) {
        line.append(text_, done, place.at - done);
        done = place.at + place.size;
        std::string_view name = std::string_view(text_).substr(place.at, place.size);
        for (std::size_t end; (end = name.find_first_of(kLineBreak)) != name.npos;) {
            line.append(name.substr(0, end)).append(" ");
            name.remove_prefix(end + (name.substr(end, 2) == kLineBreak ? 2 : 1));
        }
        line.append(name);
    }
    return line.append(text_, done);
}

Error::Error(std::int32_t run_time_number, std::string detail)
    : number_(run_time_number),
      description_(RunTimeText(run_time_number)),
      log_text_(description_),
      detail_(std::move(detail)) {}

Error::Error(std::int32_t number, std::string source, const Message& message)
    : number_(number),
      source_(std::move(source)),
      description_(message.text()),
      log_text_(message.one_line()),
      fresh_(true) {}

Error Error::As(std::int32_t number, std::string_view source) const {
    Error error = *this;
    error.number_ = number;
    error.source_ = source;
    error.fresh_ = true;
    return error;
}

void Error::Resource(std::string_view source) {
    source_ = source;
    fresh_ = false;
}

}  // namespace tavolin
