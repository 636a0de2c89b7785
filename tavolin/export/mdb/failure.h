// The errors of the export that have numbers of their own. They carry no source: the member of the
// library that exports puts its own there.
#pragma once

#include <cstdint>

#include "tavolin/errors/error.h"

namespace tavolin::mdb {

enum FailureNumber : std::int32_t {
    kTableExists = 3010,
    kNoSpace = 3026,
    kRecordTooLarge = 3047,
    kInvalidName = 3125,
    kFieldTooSmall = 3163,
    kDuplicateField = 3191,
};

[[noreturn]] inline void Fail(std::int32_t number, const Message& message) {
    Error error(number, {}, message);
    error.Settle();
    throw error;
}

}  // namespace tavolin::mdb
