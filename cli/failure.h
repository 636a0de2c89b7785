// What goes wrong in the host itself, and how every failure is shown.
#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tavolin/errors/error.h"

namespace tavolin::cli {

inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kUsage = 2;
inline constexpr int kInterruptedStatus = 130;

// The words cannot be understood: an unknown command or option, a word too many or too few.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The words are understood, and what they ask for cannot be done.
class CommandFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The user pressed Ctrl-C, and everything is as it was before.
class Cancelled : public std::runtime_error {
  public:
    explicit Cancelled(const std::string& what = "nothing was changed")
        : std::runtime_error("interrupted; " + what) {}
};

// Prints
//
//     error -2147160967 (0x8004EC79): The Table ...
//       source: CVLTableSet:Item Property Get
//       detail: what more is known, when it is
void PrintError(std::ostream& out, const Error& error);

// Calls `body`; a failure is printed to the error stream, behind `place`, and becomes the exit
// status that it means.
template <class Body>
int ReportFailures(Body&& body, std::string_view place = {});

// Prints the exception in flight and returns its exit status.
int ReportCurrentFailure(std::string_view place);

template <class Body>
int ReportFailures(Body&& body, std::string_view place) {
    try {
        body();
        return kSuccess;
    } catch (...) {
        return ReportCurrentFailure(place);
    }
}

}  // namespace tavolin::cli
