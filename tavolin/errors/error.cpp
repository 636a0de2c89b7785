#include "tavolin/errors/error.h"

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

void Message::Add(std::string_view name) {
    text_.append(name);
    for (std::size_t end = name.find_first_of(kLineBreak); end != std::string_view::npos;
         end = name.find_first_of(kLineBreak)) {
        one_line_.append(name.substr(0, end)).append(" ");
        name.remove_prefix(end + (name.substr(end, 2) == kLineBreak ? 2 : 1));
    }
    one_line_.append(name);
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
