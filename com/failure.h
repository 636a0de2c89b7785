// How a failure crosses the boundary: as an HRESULT with the standard error information.
#pragma once

#include <utility>

#include "com/platform.h"
#include "tavolin/errors/error.h"

namespace tavolin::com {

// A library number is the HRESULT itself, a run-time error n is 0x800A0000 + n.
HRESULT ResultOf(const Error& error);

// Sets this thread's error information, on behalf of the interface given; the source of an error
// without one is the library. Gives the HRESULT and throws nothing.
HRESULT Report(const Error& error, REFIID iid) noexcept;

// To be called while an exception is being handled: the same for it.
HRESULT ReportCurrent(REFIID iid) noexcept;

// A result that says everything. Error information of an earlier call must not stand for it.
inline HRESULT Refused(HRESULT result) noexcept {
    ::SetErrorInfo(0, nullptr);
    return result;
}

// Runs a call of the platform's own interfaces, which have no error information: on the thread
// given alone, and without an exception getting out.
template <class Body>
HRESULT Guarded(DWORD thread, Body&& body) noexcept {
    if (::GetCurrentThreadId() != thread) return Refused(RPC_E_WRONG_THREAD);
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return Refused(E_OUTOFMEMORY);
    }
}

// The failure that a call to a host's object ended with, as the host stated it.
Error HostError(HRESULT result);

// Raises the run-time error "Type mismatch".
[[noreturn]] void RaiseMismatch();

}  // namespace tavolin::com
