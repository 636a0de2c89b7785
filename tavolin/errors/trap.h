// Every public member's body stands in one trap, which turns whatever goes wrong inside into an
// Error with the member's name as its source:
//
//     return Trap("CVLDBUserSet:Add Method", [&] { ... });
#pragma once

#include <cstdint>
#include <new>
#include <string_view>

#include "tavolin/base/export.h"
#include "tavolin/errors/error.h"

namespace tavolin {

// The English text for a run-time error number, or "ERROR" when it has none.
TAVOLIN_API std::string_view GetErrorMessage(std::int32_t number);

// Turns the exception being handled into an Error: an Error as it is, but with the text of
// GetErrorMessage if its number has one; anything else as the run-time error that stands for it
// (std::bad_alloc is 7, a missing file 53, and so on).
TAVOLIN_API Error CurrentError() noexcept;

// Raises again: a member's own refusal as it is, any other with the context as its source.
[[noreturn]] TAVOLIN_API void RaiseError(Error error, std::string_view context);

// A member's own refusal. It keeps `source` through that member's trap; the traps of the members
// around it put their own names in its place.
[[noreturn]] TAVOLIN_API void Raise(std::int32_t number, std::string_view source,
                                    const Message& message);
[[noreturn]] inline void RaiseRunTime(RunTimeError number) { throw Error(number); }

template <class Body>
decltype(auto) Trap(std::string_view context, Body&& body) {
    try {
        return body();
    } catch (...) {
        RaiseError(CurrentError(), context);
    }
}

// Runs body() and, when memory runs out in it or it is stopped, take_back() before that is passed
// on. Other errors of handlers are another matter: they come after the change that the handler was
// told of, which stays. One that runs out of memory itself cannot be told from the library.
template <class Body, class TakeBack>
void OrTakeBack(Body&& body, TakeBack&& take_back) {
    try {
        body();
    } catch (const std::bad_alloc&) {
        take_back();
        throw;
    } catch (const Error& error) {
        if (error.number() == kOutOfMemory || error.number() == kCancelled) take_back();
        throw;
    }
}

// Runs body() and, when it raises this number, then(), which may raise another in its place.
template <class Body, class Then>
decltype(auto) WhenRaised(std::int32_t number, Body&& body, Then&& then) {
    try {
        return body();
    } catch (const Error& error) {
        if (error.number() == number) then();
        throw;
    }
}

}  // namespace tavolin
