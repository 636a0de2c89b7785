#include "tavolin/errors/error.h"

#include <new>
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

// Made before anybody can run out of memory.
const Error::SharedTexts& Error::NoMemory() {
    static const SharedTexts kTexts = [] {
        const std::string text(GetErrorMessage(kOutOfMemory));
        return std::make_shared<const Texts>(Texts{text, text, {}});
    }();
    return kTexts;
}

namespace {

const bool kReady = (Error(kOutOfMemory), true);

}  // namespace

Error::SharedTexts Error::Share(std::string_view description, std::string_view log_text,
                                std::string_view detail) {
    try {
        return std::make_shared<const Texts>(
            Texts{std::string(description), std::string(log_text), std::string(detail)});
    } catch (const std::bad_alloc&) {
        return NoMemory();
    }
}

Error::SharedTexts Error::Share(const Message& message) {
    try {
        return Share(message.text(), message.one_line(), {});
    } catch (const std::bad_alloc&) {
        return NoMemory();
    }
}

Error::Error(std::int32_t run_time_number, std::string_view detail)
    : number_(run_time_number),
      texts_(run_time_number == kOutOfMemory && detail.empty()
                 ? NoMemory()
                 : Share(RunTimeText(run_time_number), RunTimeText(run_time_number), detail)) {}

Error::Error(std::int32_t number, std::string_view source, const Message& message)
    : number_(number), texts_(Share(message)), fresh_(true) {
    SetSource(source);
}

Error Error::As(std::int32_t number, std::string_view source) const {
    Error error = *this;
    error.number_ = number;
    error.SetSource(source);
    error.fresh_ = true;
    return error;
}

void Error::AddDetail(std::string_view detail) {
    auto texts = Share(description(), log_text(), detail);
    if (texts != NoMemory()) texts_ = std::move(texts);
}

void Error::Resource(std::string_view source) {
    SetSource(source);
    fresh_ = false;
}

void Error::SetSource(std::string_view source) {
    source_ = {};
    source.substr(0, source_.size() - 1).copy(source_.data(), source_.size() - 1);
}

}  // namespace tavolin
