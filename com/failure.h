// How a failure crosses the boundary: as an HRESULT with the standard error information.
#pragma once

#include "com/platform.h"
#include "tavolin/errors/error.h"

namespace tavolin::com {

// A library number is the HRESULT itself, a run-time error n is 0x800A0000 + n.
HRESULT ResultOf(const Error& error);

// To be called while an exception is being handled. Sets this thread's error information, on
// behalf of the interface given, and gives the HRESULT. Throws nothing.
HRESULT ReportCurrent(REFIID iid) noexcept;

// The failure that a call to a host's object ended with, as the host stated it.
Error HostError(HRESULT result);

// Raises the run-time error "Type mismatch".
[[noreturn]] void RaiseMismatch();

}  // namespace tavolin::com
